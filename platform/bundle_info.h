#pragma once

#include <QString>
#include <QVariant>

namespace brivanta {

// The app's information dictionary ("CFBundleName", "CFBundleShortVersionString", ...).
class BundleInfo
{
public:
    virtual ~BundleInfo() = default;
    // The value for the key: an invalid QVariant when the key is absent. The value need not be a
    // string; callers check the type themselves.
    virtual QVariant objectForInfoDictionaryKey(const QString &key) const = 0;
};

} // namespace brivanta
