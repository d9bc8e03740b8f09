#pragma once

#include "dns/main_view_model.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace brivanta {

// The environment's scene phase, read from the application's state: active, inactive, or background
// (hidden or suspended).
class ApplicationScenePhase : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(brivanta::MainViewModel::ScenePhase phase READ phase NOTIFY phaseChanged)

public:
    explicit ApplicationScenePhase(QObject *parent = nullptr);

    MainViewModel::ScenePhase phase() const { return m_phase; }
    static MainViewModel::ScenePhase fromApplicationState(Qt::ApplicationState state);

signals:
    void phaseChanged();

private:
    void setApplicationState(Qt::ApplicationState state);

    MainViewModel::ScenePhase m_phase;
};

} // namespace brivanta
