#pragma once

#include "platform/bundle_info.h"

namespace brivanta {

// The bundle's value for the key when it is a string, else the fallback.
QString bundleString(const BundleInfo &bundle, const QString &key, const QString &fallback);

} // namespace brivanta
