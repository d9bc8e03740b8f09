#include "support/bundle_string.h"

namespace brivanta {

QString bundleString(const BundleInfo &bundle, const QString &key, const QString &fallback)
{
    const QVariant value = bundle.objectForInfoDictionaryKey(key);
    if (value.typeId() != QMetaType::QString)
        return fallback;
    return value.toString();
}

} // namespace brivanta
