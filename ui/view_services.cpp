#include "ui/view_services.h"

#include "model/fatal.h"

#include <QQmlEngine>

namespace brivanta {

ViewServices::ViewServices(const Objects &objects, QObject *parent)
    : QObject(parent)
    , m_objects(objects)
{ }

void ViewServices::attach(QQmlEngine &engine, const Objects &objects)
{
    delete engine.findChild<ViewServices *>(QString(), Qt::FindDirectChildrenOnly);
    new ViewServices(objects, &engine);
}

const ViewServices::Objects &ViewServices::of(const QQmlEngine *engine)
{
    const auto *services
        = engine ? engine->findChild<ViewServices *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
    if (!services)
        fatal("No view services attached to the QML engine");
    return services->m_objects;
}

} // namespace brivanta
