#pragma once

#include "platform/preferences.h"

#include <QHash>
#include <QVariant>

namespace brivanta::testing {

// An in-memory preferences store; values may be set to anything to play a damaged store.
class FakePreferences final : public Preferences
{
public:
    QHash<QString, QVariant> values;
    int writes = 0;

    std::int64_t integerForKey(const QString &key) const override
    {
        bool ok = false;
        const qlonglong value = values.value(key).toLongLong(&ok);
        return ok ? value : 0;
    }
    void setInteger(std::int64_t value, const QString &key) override
    {
        values.insert(key, static_cast<qlonglong>(value));
        ++writes;
    }
};

} // namespace brivanta::testing
