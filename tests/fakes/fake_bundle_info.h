#pragma once

#include "platform/bundle_info.h"

#include <QHash>

namespace brivanta::testing {

class FakeBundleInfo final : public BundleInfo
{
public:
    QHash<QString, QVariant> dictionary;

    QVariant objectForInfoDictionaryKey(const QString &key) const override { return dictionary.value(key); }
};

} // namespace brivanta::testing
