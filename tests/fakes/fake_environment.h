#pragma once

#include "platform/environment.h"

#include <map>

namespace brivanta::testing {

class FakeEnvironment final : public Environment
{
public:
    std::map<std::string, std::string> variables;

    std::optional<std::string> value(const std::string &name) const override
    {
        const auto it = variables.find(name);
        return it == variables.end() ? std::nullopt : std::optional(it->second);
    }
};

} // namespace brivanta::testing
