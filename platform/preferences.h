#pragma once

#include <QString>
#include <cstdint>

namespace brivanta {

// The user's standard preferences store: plain string keys, values that survive restarts.
// Main thread only.
class Preferences
{
public:
    virtual ~Preferences() = default;
    // The integer stored under the key; a missing key, or a value that is not an integer, reads as 0.
    virtual std::int64_t integerForKey(const QString &key) const = 0;
    virtual void setInteger(std::int64_t value, const QString &key) = 0;
};

} // namespace brivanta
