#pragma once

#include "model/resolver.h"

#include <vector>

namespace brivanta {

// The one profile the app ships: DNS-over-HTTPS to the filtering resolver, no servers, no rules.
// Built on first access (safely from any thread) and never changed; its id is new in every run.
const std::vector<Resolver> &builtInResolvers();

} // namespace brivanta
