#pragma once

#include "platform/device.h"

#include <QObject>

namespace brivanta {

// The desktop as a device. The window is the screen, so the idiom follows the window's width: at
// least tabletMinimumWidth points is the tablet idiom. The UI keeps windowWidth up to date.
class DesktopDevice final : public QObject, public Device
{
    Q_OBJECT
    Q_PROPERTY(double windowWidth READ windowWidth WRITE setWindowWidth NOTIFY windowWidthChanged)
    Q_PROPERTY(bool isTablet READ isTablet NOTIFY userInterfaceIdiomChanged)

public:
    static constexpr double tabletMinimumWidth = 744;

    // model: e.g. the machine's product name; systemName and systemVersion: the OS's, e.g.
    // "Debian GNU/Linux" and "12".
    DesktopDevice(QString model, QString systemName, QString systemVersion, QObject *parent = nullptr);

    [[nodiscard]] double windowWidth() const { return m_windowWidth; }
    void setWindowWidth(double width);
    [[nodiscard]] bool isTablet() const { return userInterfaceIdiom() == tabletIdiom; }

    int userInterfaceIdiom() const override;
    QString model() const override { return m_model; }
    QString systemName() const override { return m_systemName; }
    QString systemVersion() const override { return m_systemVersion; }

signals:
    void windowWidthChanged();
    void userInterfaceIdiomChanged();

private:
    QString m_model;
    QString m_systemName;
    QString m_systemVersion;
    double m_windowWidth = 0;
};

} // namespace brivanta
