#include "ui/brivanta_app.h"
#include "ui/single_instance.h"

#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>
#include <cstdlib>

Q_IMPORT_QML_PLUGIN(BrivantaPlugin)

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    brivanta::BrivantaApp::configure();
    // A second launch brings the running window forward and ends, showing nothing.
    brivanta::SingleInstance instance(QStringLiteral("brivanta.socket"));
    if (instance.askRunningToActivate())
        return 0;
    instance.listen();
    brivanta::BrivantaApp brivanta(application);
    // An empty window helps no one: stop with the QML errors Qt printed, so a broken install is seen.
    if (!brivanta.hasViews()) {
        qCritical("Brivanta's views could not be loaded.");
        return EXIT_FAILURE;
    }
    QObject::connect(&instance, &brivanta::SingleInstance::activationRequested, &application,
        [&brivanta] { brivanta.bringForward(); });
    brivanta.show();
    return application.exec();
}
