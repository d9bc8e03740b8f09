#pragma once

#include "platform/environment.h"

namespace brivanta {

// The real process environment.
class ProcessEnvironment final : public Environment
{
public:
    std::optional<std::string> value(const std::string &name) const override;
};

} // namespace brivanta
