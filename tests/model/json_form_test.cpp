#include "model/json_form.h"
#include "model/resolver.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brivanta {
namespace {

const QUuid profileId(QStringLiteral("0f2b6a1e-3c4d-4e5f-8a9b-0c1d2e3f4a5b"));
const QUuid ruleId(QStringLiteral("a0000000-0000-4000-8000-00000000000b"));

TEST(JSONEncoding, WritesKeysInFieldOrderWithUpperCaseIdsAndNoAbsentOptionals)
{
    const Resolver profile(profileId, QStringLiteral("Home"),
        Configuration::dnsOverTLS(
            DoTConfiguration({ QStringLiteral("1.1.1.1") }, QStringLiteral("one.one.one.one"))),
        { OnDemandRule(ruleId, QStringLiteral("Wi-Fi"), NEOnDemandRuleAction::connect,
            NEOnDemandRuleInterfaceType::wiFi, { QStringLiteral("Caf\u00e9") }, {}, {},
            QUrl(QStringLiteral("https://probe.example/ok"))) });
    EXPECT_EQ(encodeJSON(profile),
        QByteArray(
            R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"Home","configuration":{"base":"dnsOverTLS",)"
            R"("dotConfiguration":{"servers":["1.1.1.1"],"serverName":"one.one.one.one"}},"onDemandRules":[)"
            R"({"id":"A0000000-0000-4000-8000-00000000000B","name":"Wi-Fi","action":1,"interfaceType":2,)"
            "\"ssidMatch\":[\"Caf\xc3\xa9\"],\"dnsSearchDomainMatch\":[],\"dnsServerAddressMatch\":[],"
            R"("probeURL":"https://probe.example/ok"}]})"));
    EXPECT_EQ(decodeJSON<Resolver>(encodeJSON(profile)), profile);

    const DoHConfiguration doh(
        { QStringLiteral("::1") }, QUrl(QStringLiteral("https://dns.example/q?x=%2F#f")));
    EXPECT_EQ(decodeJSON<DoHConfiguration>(encodeJSON(doh)), doh);
}

// A valid profile with one rule; each test below changes one part of it.
const char *const profileJSON
    = R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"Home",)"
      R"("configuration":{"base":"dnsOverHTTPS","dohConfiguration":{"servers":[]}},)"
      R"("onDemandRules":[RULE]})";
const char *const ruleJSON = R"({"id":"A0000000-0000-4000-8000-00000000000B","name":"r","action":1,)"
                             R"("interfaceType":2,"ssidMatch":["Cafe"],"dnsSearchDomainMatch":[],)"
                             R"("dnsServerAddressMatch":[],"probeURL":"https://probe.example/ok"})";

QByteArray replaced(const char *text, const std::string &from, const std::string &to)
{
    std::string result(text);
    const size_t at = result.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos)
        result.replace(at, from.size(), to);
    return QByteArray::fromStdString(result);
}

QByteArray profileWithRule(const QByteArray &rule)
{
    return replaced(profileJSON, "RULE", rule.toStdString());
}

TEST(JSONDecoding, ReadsKeysByNameInAnyOrderAndIgnoresUnknownKeys)
{
    const auto decoded = decodeJSON<Resolver>(
        R"({"onDemandRules":[],"extra":{"nested":[1,{"id":"not-a-uuid"}]},"configuration":{"dotConfiguration":)"
        R"({"servers":["x"]},"base":"dnsOverTLS"},"name":"N","id":"0f2b6a1e-3c4d-4e5f-8a9b-0c1d2e3f4a5b"})");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded,
        Resolver(profileId, QStringLiteral("N"),
            Configuration::dnsOverTLS(DoTConfiguration({ QStringLiteral("x") }))));
}

// The text with the key renamed to an unknown one, and with its value replaced by null.
std::pair<QByteArray, QByteArray> missingAndNull(const std::string &text, const std::string &key)
{
    const std::string pattern = "\"" + key + "\":";
    const size_t at = text.find(pattern);
    EXPECT_NE(at, std::string::npos) << key;
    if (at == std::string::npos)
        return {};
    std::string renamed = text;
    std::string nulled = text;
    renamed.replace(at, pattern.size(), "\"unknown\":");
    nulled.insert(at + pattern.size(), "null,\"unknown\":");
    return { QByteArray::fromStdString(renamed), QByteArray::fromStdString(nulled) };
}

// Also shows that missingAndNull() makes texts that decode, so the failures below are the keys' doing.
TEST(JSONDecoding, OptionalKeysMayBeMissingOrNull)
{
    const auto [noRules, nullRules]
        = missingAndNull(profileWithRule(ruleJSON).toStdString(), "onDemandRules");
    for (const QByteArray &text : { noRules, nullRules }) {
        const auto decoded = decodeJSON<Resolver>(text);
        ASSERT_TRUE(decoded) << text.toStdString();
        EXPECT_TRUE(decoded->onDemandRules.empty());
    }
    const auto [noProbe, nullProbe] = missingAndNull(ruleJSON, "probeURL");
    for (const QByteArray &text : { noProbe, nullProbe }) {
        const auto rule = decodeJSON<OnDemandRule>(text);
        ASSERT_TRUE(rule) << text.toStdString();
        EXPECT_FALSE(rule->probeURL);
    }
}

TEST(JSONDecoding, RequiredKeysMayBeNeitherMissingNorNull)
{
    for (const char *key : { "id", "name", "configuration" }) {
        const auto [missing, null] = missingAndNull(profileWithRule(ruleJSON).toStdString(), key);
        EXPECT_FALSE(decodeJSON<Resolver>(missing)) << key;
        EXPECT_FALSE(decodeJSON<Resolver>(null)) << key;
    }
    // Every rule key but probeURL, even those the constructor defaults.
    for (const char *key : { "id", "name", "action", "interfaceType", "ssidMatch", "dnsSearchDomainMatch",
             "dnsServerAddressMatch" }) {
        const auto [missing, null] = missingAndNull(ruleJSON, key);
        EXPECT_FALSE(decodeJSON<OnDemandRule>(missing)) << key;
        EXPECT_FALSE(decodeJSON<OnDemandRule>(null)) << key;
        EXPECT_FALSE(decodeJSON<Resolver>(profileWithRule(missing))) << key;
    }
}

// Unknown values are kept; anything but a 64-bit integer is refused.
TEST(JSONDecoding, EnumerationsAreAny64BitInteger)
{
    const std::pair<const char *, std::optional<qint64>> cases[] = { { "9", 9 }, { "-0", 0 },
        { "-9223372036854775808", INT64_MIN }, { "9223372036854775807", INT64_MAX }, { "1.5", std::nullopt },
        { "1.0", std::nullopt }, { "1e2", std::nullopt }, { R"("1")", std::nullopt },
        { "true", std::nullopt }, { "null", std::nullopt }, { "[1]", std::nullopt },
        { "9223372036854775808", std::nullopt }, { "99999999999999999999999", std::nullopt } };
    const auto rawValue = [](const auto &decoded) -> std::optional<qint64> {
        return decoded ? std::optional(decoded->rawValue) : std::nullopt;
    };
    for (const auto &[value, expected] : cases) {
        EXPECT_EQ(rawValue(decodeJSON<NEOnDemandRuleAction>(value)), expected) << value;
        EXPECT_EQ(rawValue(decodeJSON<NEOnDemandRuleInterfaceType>(value)), expected) << value;
        EXPECT_EQ(
            decodeJSON<OnDemandRule>(replaced(ruleJSON, R"("action":1)", std::string("\"action\":") + value))
                .has_value(),
            expected.has_value())
            << value;
    }
}

TEST(JSONDecoding, BaseSelectsThePayloadAndServerListsAreRequired)
{
    const auto tls = decodeJSON<Configuration>(
        R"({"base":"dnsOverTLS","dotConfiguration":{"servers":[],"serverName":null},"dohConfiguration":"any"})");
    ASSERT_TRUE(tls);
    EXPECT_EQ(*tls, Configuration::dnsOverTLS(DoTConfiguration()));

    for (const char *text : { R"({"base":"dnsOverHTTPS","dotConfiguration":{"servers":[]}})",
             R"({"dohConfiguration":{"servers":[]}})", R"({"base":"doh","dohConfiguration":{"servers":[]}})",
             R"({"base":"dnsoverhttps","dohConfiguration":{"servers":[]}})",
             R"({"base":"dnsOverHTTPS ","dohConfiguration":{"servers":[]}})",
             R"({"base":null,"dohConfiguration":{"servers":[]}})",
             R"({"base":"dnsOverHTTPS","dohConfiguration":{"serverURL":"https://a.example"}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":null}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":["a",null]}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":"a"}})",
             R"({"base":"dnsOverTLS","dotConfiguration":{"servers":[],"serverName":5}})" })
        EXPECT_FALSE(decodeJSON<Configuration>(text)) << text;
}

TEST(JSONDecoding, OnlyTheBare36CharacterUUIDFormIsAccepted)
{
    const std::pair<const char *, bool> cases[] = { { "a0B1c2D3-e4F5-4a6B-8c7D-9e0F1a2B3c4D", true },
        { "{a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d}", false }, { "a0b1c2d3e4f54a6b8c7d9e0f1a2b3c4d", false },
        { "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d0", false }, { "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4g", false },
        { "a0b1c2d3e-4f5-4a6b-8c7d-9e0f1a2b3c4d", false }, { "", false } };
    for (const auto &[uuid, accepted] : cases) {
        const auto rule = decodeJSON<OnDemandRule>(
            replaced(ruleJSON, R"("A0000000-0000-4000-8000-00000000000B")", std::string("\"") + uuid + "\""));
        ASSERT_EQ(rule.has_value(), accepted) << uuid;
        if (rule) {
            EXPECT_EQ(rule->id, QUuid::fromString(QLatin1StringView(uuid)));
        }
    }
}

TEST(JSONDecoding, URLTextsTheParserRejectsFail)
{
    const std::pair<const char *, bool> cases[] = { { "https://[::1]:8443/q?a=b#c", true },
        { "relative/path", true }, { "", false }, { "https://bad host/", false },
        { " https://dns.example/", false }, { "https://dns.example/%zz", false } };
    for (const auto &[url, accepted] : cases) {
        EXPECT_EQ(decodeJSON<OnDemandRule>(
                      replaced(ruleJSON, R"("https://probe.example/ok")", std::string("\"") + url + "\""))
                      .has_value(),
            accepted)
            << url;
    }
}

TEST(JSONDecoding, MalformedTextAndBadUTF8GiveNoValue)
{
    const QByteArray good = profileWithRule(ruleJSON);
    ASSERT_TRUE(decodeJSON<Resolver>(good));
    for (const QByteArray &text : { good.left(good.size() - 1), good + " x", good + "{}", QByteArray(),
             QByteArray("[]"), replaced(good.constData(), "\"Home\"", "\"H\xc3\x28\""),
             replaced(good.constData(), "\"Home\"", "\"\xc0\xaf\""),
             replaced(good.constData(), "\"Home\"", "\"\xed\xa0\x80\""),
             replaced(good.constData(), "\"Home\"", R"("\ud800")"),
             replaced(good.constData(), "\"Home\"", "'Home'") })
        EXPECT_FALSE(decodeJSON<Resolver>(text)) << text.toStdString();

    const auto escaped
        = decodeJSON<Resolver>(replaced(good.constData(), "\"Home\"", R"("\ud83d\udee1\u0000")"));
    ASSERT_TRUE(escaped);
    EXPECT_EQ(escaped->name, QString::fromUtf8("\xf0\x9f\x9b\xa1\0", 5));
}

TEST(JSONDecoding, NestingBeyondTheLimitGivesNoValueWithoutCrashing)
{
    const auto nestedProfile = [](int depth) {
        // The profile object is one level; the unknown key adds the rest.
        const QByteArray open(depth - 1, '[');
        const QByteArray close(depth - 1, ']');
        return replaced(profileJSON, "[RULE]", "[], \"extra\": " + (open + close).toStdString());
    };
    EXPECT_TRUE(decodeJSON<Resolver>(nestedProfile(maxJSONDepth)));
    EXPECT_FALSE(decodeJSON<Resolver>(nestedProfile(maxJSONDepth + 1)));
    EXPECT_FALSE(decodeJSON<std::vector<Resolver>>(QByteArray(1'000'000, '[')));
    EXPECT_FALSE(decodeJSON<std::vector<Resolver>>(QByteArray(500'000, '{')));
}

} // namespace
} // namespace brivanta
