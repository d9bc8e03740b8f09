#include "model/json_form.h"
#include "model/resolver.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brivanta {
namespace {

// A valid rule and a profile holding it; the tests below change one part of them.
const std::string ruleJSON = R"({"id":"A0000000-0000-4000-8000-00000000000B","name":"r","action":1,)"
                             R"("interfaceType":2,"ssidMatch":["Cafe"],"dnsSearchDomainMatch":[],)"
                             R"("dnsServerAddressMatch":[],"probeURL":"https://probe.example/ok"})";
const std::string profileStart
    = R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"Home",)"
      R"("configuration":{"base":"dnsOverHTTPS","dohConfiguration":{"servers":[]}},)"
      R"("onDemandRules":[)";
const std::string profileJSON = profileStart + ruleJSON + "]}";

std::string replaced(std::string text, const std::string &from, const std::string &to, bool last = false)
{
    const size_t at = last ? text.rfind(from) : text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// Ids come out in upper case; an absent server URL is left out, not written as null.
TEST(JSONEncoding, WritesKeysInFieldOrderWithUpperCaseIdsAndNoAbsentOptionals)
{
    const auto profile = decodeJSON<Resolver>(replaced(profileJSON, "0F2B6A1E", "0f2b6a1e"));
    ASSERT_TRUE(profile);
    EXPECT_EQ(encodeJSON(*profile).toStdString(), profileJSON);
}

// Only a profile's rules and a rule's probe URL may be missing or null: every other key is required, even
// those the constructor defaults. A rule's key is the last of its name in the text.
TEST(JSONDecoding, OnlyOptionalKeysMayBeMissingOrNull)
{
    const std::tuple<const char *, bool, bool> keys[] = { { "id", false, false }, { "name", false, false },
        { "configuration", false, false }, { "onDemandRules", false, true }, { "id", true, false },
        { "name", true, false }, { "action", true, false }, { "interfaceType", true, false },
        { "ssidMatch", true, false }, { "dnsSearchDomainMatch", true, false },
        { "dnsServerAddressMatch", true, false }, { "probeURL", true, true } };
    for (const auto &[key, inRule, optional] : keys) {
        const std::string pattern = "\"" + std::string(key) + "\":";
        // The key renamed to an unknown one, and its value replaced by null.
        for (const std::string &to : { std::string("\"unknown\":"), pattern + "null,\"unknown\":" }) {
            const std::string text = replaced(profileJSON, pattern, to, inRule);
            EXPECT_EQ(decodeJSON<Resolver>(text).has_value(), optional) << text;
        }
    }
}

// Unknown values are kept and described as such; anything but a 64-bit integer is refused.
TEST(Enumerations, AnyIntegerDecodesAndDescribesItsValue)
{
    // Raw value, the action's description, the interface type's.
    const std::tuple<qint64, const char *, const char *> described[]
        = { { 0, "Unknown", "Any" }, { 1, "Apply settings", "Unknown" },
              { 2, "Do not apply settings", "Wi-Fi" }, { 3, "Apply with excluded domains", "Cellular" },
              { 4, "As is", "Unknown" }, { 5, "Unknown", "Unknown" }, { INT64_MIN, "Unknown", "Unknown" } };
    for (const auto &[rawValue, action, interfaceType] : described) {
        EXPECT_EQ(NEOnDemandRuleAction(rawValue).description(), QString::fromUtf8(action)) << rawValue;
        EXPECT_EQ(NEOnDemandRuleInterfaceType(rawValue).description(), QString::fromUtf8(interfaceType))
            << rawValue;
    }
    EXPECT_EQ(Configuration::dnsOverTLS(DoTConfiguration()).description(), QStringLiteral("DNS-over-TLS"));
    const std::pair<const char *, std::optional<qint64>> decoded[] = { { "9", 9 }, { "-0", 0 },
        { "-9223372036854775808", INT64_MIN }, { "9223372036854775807", INT64_MAX }, { "1.5", std::nullopt },
        { "1.0", std::nullopt }, { "1e2", std::nullopt }, { R"("1")", std::nullopt },
        { "true", std::nullopt }, { "null", std::nullopt }, { "[1]", std::nullopt },
        { "9223372036854775808", std::nullopt }, { "99999999999999999999999", std::nullopt } };
    for (const auto &[value, expected] : decoded) {
        const auto action = decodeJSON<NEOnDemandRuleAction>(value);
        EXPECT_EQ(action ? std::optional(action->rawValue) : std::nullopt, expected) << value;
    }
}

TEST(JSONDecoding, BaseSelectsThePayloadAndServerListsAreRequired)
{
    const auto tls = decodeJSON<Configuration>(
        R"({"base":"dnsOverTLS","dotConfiguration":{"servers":[],"serverName":null},"dohConfiguration":"any"})");
    EXPECT_EQ(tls, Configuration::dnsOverTLS(DoTConfiguration()));
    for (const char *text : { R"({"base":"dnsOverHTTPS","dotConfiguration":{"servers":[]}})",
             R"({"dohConfiguration":{"servers":[]}})",
             R"({"base":"dnsoverhttps","dohConfiguration":{"servers":[]}})",
             R"({"base":"dnsOverHTTPS ","dohConfiguration":{"servers":[]}})",
             R"({"base":null,"dohConfiguration":{"servers":[]}})",
             R"({"base":"dnsOverHTTPS","dohConfiguration":{"serverURL":"https://a.example"}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":null}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":["a",null]}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":[],"serverName":5}})" })
        EXPECT_FALSE(decodeJSON<Configuration>(text)) << text;
}

// Ids take only the bare 36-character form; URLs only what the parser accepts.
TEST(JSONDecoding, RuleIdsAndURLsOutsideTheirFormsAreRefused)
{
    const std::tuple<bool, const char *, bool> cases[]
        = { { false, "a0B1c2D3-e4F5-4a6B-8c7D-9e0F1a2B3c4D", true },
              { false, "{a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d}", false },
              { false, "a0b1c2d3e4f54a6b8c7d9e0f1a2b3c4d", false },
              { false, "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d0", false },
              { false, "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4g", false },
              { false, "a0b1c2d3e-4f5-4a6b-8c7d-9e0f1a2b3c4d", false }, { false, "", false },
              { true, "https://[::1]:8443/q?a=b#c", true }, { true, "relative/path", true },
              { true, "", false }, { true, "https://bad host/", false },
              { true, " https://dns.example/", false }, { true, "https://dns.example/%zz", false } };
    for (const auto &[isURL, value, accepted] : cases) {
        const std::string from
            = isURL ? R"("https://probe.example/ok")" : R"("A0000000-0000-4000-8000-00000000000B")";
        const auto rule
            = decodeJSON<OnDemandRule>(replaced(ruleJSON, from, "\"" + std::string(value) + "\""));
        EXPECT_EQ(rule.has_value(), accepted) << value;
    }
}

TEST(JSONDecoding, MalformedTextAndBadUTF8GiveNoValue)
{
    const std::string &good = profileJSON;
    ASSERT_TRUE(decodeJSON<Resolver>(good));
    const auto named = [&](const char *name) { return replaced(good, "\"Home\"", name); };
    for (const std::string &text : { good.substr(0, good.size() - 1), good + " x", good + "{}", std::string(),
             std::string("[]"), named("\"H\xc3\x28\""), named("\"\xc0\xaf\""), named("\"\xed\xa0\x80\""),
             named(R"("\ud800")"), named("'Home'") })
        EXPECT_FALSE(decodeJSON<Resolver>(text)) << text;
    const auto escaped = decodeJSON<Resolver>(named(R"("\ud83d\udee1\u0000")"));
    ASSERT_TRUE(escaped);
    EXPECT_EQ(escaped->name, QString::fromUtf8("\xf0\x9f\x9b\xa1\0", 5));
}

TEST(JSONDecoding, NestingBeyondTheLimitGivesNoValueWithoutCrashing)
{
    // The profile object is one level; the unknown key adds the rest.
    const auto nested = [](int depth) {
        return profileStart + "], \"extra\": " + std::string(depth - 1, '[') + std::string(depth - 1, ']')
            + "}";
    };
    EXPECT_TRUE(decodeJSON<Resolver>(nested(maxJSONDepth)));
    EXPECT_FALSE(decodeJSON<Resolver>(nested(maxJSONDepth + 1)));
    EXPECT_FALSE(decodeJSON<std::vector<Resolver>>(QByteArray(1'000'000, '[')));
    EXPECT_FALSE(decodeJSON<std::vector<Resolver>>(QByteArray(500'000, '{')));
}

} // namespace
} // namespace brivanta
