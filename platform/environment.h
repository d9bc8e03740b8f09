#pragma once

#include <optional>
#include <string>

namespace brivanta {

// The process environment, read-only.
class Environment
{
public:
    virtual ~Environment() = default;
    // The variable's value, or nothing when the variable is not set (an empty value is a value).
    virtual std::optional<std::string> value(const std::string &name) const = 0;
};

} // namespace brivanta
