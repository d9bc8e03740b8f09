#include "platform/qt/desktop_device.h"

namespace brivanta {

DesktopDevice::DesktopDevice(QString model, QString systemName, QString systemVersion, QObject *parent)
    : QObject(parent)
    , m_model(std::move(model))
    , m_systemName(std::move(systemName))
    , m_systemVersion(std::move(systemVersion))
{ }

void DesktopDevice::setWindowWidth(double width)
{
    if (width == m_windowWidth)
        return;
    const int idiomBefore = userInterfaceIdiom();
    m_windowWidth = width;
    emit windowWidthChanged();
    if (userInterfaceIdiom() != idiomBefore)
        emit userInterfaceIdiomChanged();
}

int DesktopDevice::userInterfaceIdiom() const
{
    return m_windowWidth >= tabletMinimumWidth ? tabletIdiom : phoneIdiom;
}

} // namespace brivanta
