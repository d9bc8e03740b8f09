#pragma once

#include "platform/bundle_info.h"

namespace brivanta {

// The information dictionary on desktop: "CFBundleName" is the application's name and
// "CFBundleShortVersionString" its version, both set by the app from the build. An empty value and
// any other key read as absent.
class ApplicationBundleInfo final : public BundleInfo
{
public:
    QVariant objectForInfoDictionaryKey(const QString &key) const override;
};

} // namespace brivanta
