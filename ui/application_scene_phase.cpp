#include "ui/application_scene_phase.h"

#include <QGuiApplication>

namespace brivanta {

ApplicationScenePhase::ApplicationScenePhase(QObject *parent)
    : QObject(parent)
    , m_phase(fromApplicationState(QGuiApplication::applicationState()))
{
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
        &ApplicationScenePhase::setApplicationState);
}

MainViewModel::ScenePhase ApplicationScenePhase::fromApplicationState(Qt::ApplicationState state)
{
    switch (state) {
    case Qt::ApplicationActive:
        return MainViewModel::ScenePhase::Active;
    case Qt::ApplicationInactive:
        return MainViewModel::ScenePhase::Inactive;
    case Qt::ApplicationHidden:
    case Qt::ApplicationSuspended:
        break;
    }
    return MainViewModel::ScenePhase::Background;
}

void ApplicationScenePhase::setApplicationState(Qt::ApplicationState state)
{
    const MainViewModel::ScenePhase phase = fromApplicationState(state);
    if (phase == m_phase)
        return;
    m_phase = phase;
    emit phaseChanged();
}

} // namespace brivanta
