#include "platform/qt/application_bundle_info.h"

#include <QCoreApplication>

namespace brivanta {

QVariant ApplicationBundleInfo::objectForInfoDictionaryKey(const QString &key) const
{
    QString value;
    if (key == QLatin1String("CFBundleName"))
        value = QCoreApplication::applicationName();
    else if (key == QLatin1String("CFBundleShortVersionString"))
        value = QCoreApplication::applicationVersion();
    if (value.isEmpty())
        return QVariant();
    return value;
}

} // namespace brivanta
