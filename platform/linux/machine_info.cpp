#include "platform/linux/machine_info.h"

#include <QFile>
#include <QSysInfo>

namespace brivanta {

QString linuxMachineModel(const QString &productNamePath)
{
    QFile file(productNamePath);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        const QString name = QString::fromUtf8(file.readAll()).trimmed();
        if (!name.isEmpty())
            return name;
    }
    return QStringLiteral("Linux PC");
}

namespace {

// A value of os-release: optionally quoted, with backslash escapes inside quotes.
QString unquoted(QStringView value)
{
    if (value.size() < 2 || (value.front() != u'"' && value.front() != u'\'')
        || value.back() != value.front())
        return value.toString();
    QString result;
    const QStringView inner = value.mid(1, value.size() - 2);
    for (qsizetype i = 0; i < inner.size(); ++i) {
        if (inner[i] == u'\\' && i + 1 < inner.size())
            ++i;
        result.append(inner[i]);
    }
    return result;
}

} // namespace

OsRelease linuxOsRelease(const QString &osReleasePath)
{
    QFile file(osReleasePath);
    bool opened = file.open(QIODevice::ReadOnly | QIODevice::Text);
    if (!opened && osReleasePath == QLatin1String("/etc/os-release")) {
        // The standard's fallback location for the same file.
        file.setFileName(QStringLiteral("/usr/lib/os-release"));
        opened = file.open(QIODevice::ReadOnly | QIODevice::Text);
    }
    if (!opened)
        return { QStringLiteral("Linux"), QSysInfo::kernelVersion() };
    // os-release's own default when NAME is missing is "Linux".
    OsRelease release { QStringLiteral("Linux"), QString() };
    const QString content = QString::fromUtf8(file.readAll());
    for (const QString &line : content.split(u'\n')) {
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0 || line.startsWith(u'#'))
            continue;
        const QStringView key = QStringView(line).left(equals).trimmed();
        const QString value = unquoted(QStringView(line).mid(equals + 1).trimmed());
        if (key == u"NAME" && !value.isEmpty())
            release.name = value;
        else if (key == u"VERSION_ID")
            release.version = value;
    }
    if (release.version.isEmpty())
        release.version = QSysInfo::kernelVersion();
    return release;
}

} // namespace brivanta
