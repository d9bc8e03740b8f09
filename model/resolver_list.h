#pragma once

#include "model/resolver.h"

#include <QString>
#include <optional>
#include <vector>

namespace brivanta {

// The text form of a list of profiles: one JSON array in one string. Nothing in the app stores it;
// it is a capability of the list type.

// Never fails: a list that cannot be encoded gives "[]".
QString rawValue(const std::vector<Resolver> &resolvers);

// No list at all when any part of the text is bad; there is no partial result.
std::optional<std::vector<Resolver>> resolversFromRawValue(const QString &rawValue);

} // namespace brivanta
