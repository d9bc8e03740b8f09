#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <optional>

namespace brivanta {

// The JSON form of the records (Resolver, Configuration, DoHConfiguration, DoTConfiguration,
// OnDemandRule, NEOnDemandRuleAction, NEOnDemandRuleInterfaceType and std::vector<Resolver>).
//
// Encoding writes compact UTF-8 JSON with the keys in field order and leaves absent optionals out.
// It fails (an empty array of bytes) only for a value no JSON can carry: a string that is not valid
// UTF-16 or a URL that is not valid.
template <typename T> QByteArray encodeJSON(const T &value);

// Decoding finds keys by name and ignores keys it does not know. Any fault (bad JSON or UTF-8, a
// wrong type, a missing required key, a bad UUID or URL text, nesting deeper than maxJSONDepth)
// gives no value; there is never a partial result and nothing is thrown.
template <typename T> std::optional<T> decodeJSON(QByteArrayView utf8);

// Deepest nesting of arrays and objects that decoding reads; the phone platform's own reader stops there too.
inline constexpr int maxJSONDepth = 512;

} // namespace brivanta
