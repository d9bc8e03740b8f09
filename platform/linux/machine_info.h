#pragma once

#include <QString>

namespace brivanta {

// The machine's model: the firmware's DMI product name, trimmed; "Linux PC" when unreadable or empty.
QString linuxMachineModel(const QString &productNamePath = QStringLiteral("/sys/class/dmi/id/product_name"));

// The distribution's name and version from os-release (NAME, VERSION_ID), e.g. "Debian GNU/Linux"
// and "12"; Qt's idea of the OS ("linux", the kernel version) when the file is missing.
struct OsRelease
{
    QString name;
    QString version;
};
OsRelease linuxOsRelease(const QString &osReleasePath = QStringLiteral("/etc/os-release"));

} // namespace brivanta
