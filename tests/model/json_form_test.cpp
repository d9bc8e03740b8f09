#include "model/json_form.h"
#include "model/resolver.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace brivanta {
namespace {

const QUuid profileId(QStringLiteral("0f2b6a1e-3c4d-4e5f-8a9b-0c1d2e3f4a5b"));
const QUuid ruleId(QStringLiteral("a0000000-0000-4000-8000-00000000000b"));

Resolver sampleProfile()
{
    return Resolver(profileId, QStringLiteral("Home"),
        Configuration::dnsOverTLS(
            DoTConfiguration({ QStringLiteral("1.1.1.1") }, QStringLiteral("one.one.one.one"))),
        { OnDemandRule(ruleId, QStringLiteral("Wi-Fi"), NEOnDemandRuleAction::connect,
            NEOnDemandRuleInterfaceType::wiFi, { QStringLiteral("Caf\u00e9") }, {}, {},
            QUrl(QStringLiteral("https://probe.example/ok"))) });
}

TEST(JSONEncoding, WritesKeysInFieldOrderWithUpperCaseIdsAndNoAbsentOptionals)
{
    EXPECT_EQ(encodeJSON(sampleProfile()),
        QByteArray(
            R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"Home","configuration":{"base":"dnsOverTLS",)"
            R"("dotConfiguration":{"servers":["1.1.1.1"],"serverName":"one.one.one.one"}},"onDemandRules":[)"
            R"({"id":"A0000000-0000-4000-8000-00000000000B","name":"Wi-Fi","action":1,"interfaceType":2,)"
            "\"ssidMatch\":[\"Caf\xc3\xa9\"],\"dnsSearchDomainMatch\":[],\"dnsServerAddressMatch\":[],"
            R"("probeURL":"https://probe.example/ok"}]})"));
}

TEST(JSONEncoding, HTTPSConfigurationHasExactlyBaseAndItsPayload)
{
    EXPECT_EQ(encodeJSON(Configuration::dnsOverHTTPS(DoHConfiguration())),
        QByteArray(R"({"base":"dnsOverHTTPS","dohConfiguration":{"servers":[]}})"));
    EXPECT_EQ(encodeJSON(Configuration::dnsOverTLS(DoTConfiguration({ QStringLiteral("a") }))),
        QByteArray(R"({"base":"dnsOverTLS","dotConfiguration":{"servers":["a"]}})"));
    EXPECT_EQ(encodeJSON(NEOnDemandRuleAction(-7)), QByteArray("-7"));
}

TEST(JSONRoundTrip, EveryRecordDecodesToAnEqualValue)
{
    const Resolver profile = sampleProfile();
    EXPECT_EQ(decodeJSON<Resolver>(encodeJSON(profile)), profile);
    EXPECT_EQ(
        decodeJSON<OnDemandRule>(encodeJSON(profile.onDemandRules.front())), profile.onDemandRules.front());
    const DoHConfiguration doh(
        { QStringLiteral("::1") }, QUrl(QStringLiteral("https://dns.example/q?x=%2F#f")));
    EXPECT_EQ(decodeJSON<DoHConfiguration>(encodeJSON(doh)), doh);
    EXPECT_EQ(decodeJSON<Configuration>(encodeJSON(Configuration::dnsOverHTTPS(doh))),
        Configuration::dnsOverHTTPS(doh));
    EXPECT_EQ(decodeJSON<NEOnDemandRuleInterfaceType>("1"), NEOnDemandRuleInterfaceType::ethernet);
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

TEST(JSONDecoding, MissingOrNullRulesGiveAnEmptyList)
{
    for (const char *rules : { R"("onDemandRules":[])", R"("onDemandRules":null)" }) {
        const QByteArray text = replaced(profileJSON, R"("onDemandRules":[RULE])", rules);
        const auto decoded = decodeJSON<Resolver>(text);
        ASSERT_TRUE(decoded) << text.toStdString();
        EXPECT_TRUE(decoded->onDemandRules.empty());
    }
    const QByteArray withoutKey = replaced(profileJSON, R"(,"onDemandRules":[RULE])", "");
    ASSERT_TRUE(decodeJSON<Resolver>(withoutKey));
    EXPECT_TRUE(decodeJSON<Resolver>(withoutKey)->onDemandRules.empty());
}

class ProfileKey : public ::testing::TestWithParam<const char *>
{
};

TEST_P(ProfileKey, IsRequiredAndMayNotBeNull)
{
    const std::string key = GetParam();
    const std::string pattern = "\"" + key + "\":";
    std::string text = profileWithRule(ruleJSON).toStdString();
    const size_t at = text.find(pattern);
    ASSERT_NE(at, std::string::npos);
    EXPECT_FALSE(decodeJSON<Resolver>(
        QByteArray::fromStdString(std::string(text).replace(at, key.size() + 2, "\"x\":"))));
    EXPECT_FALSE(
        decodeJSON<Resolver>(QByteArray::fromStdString(text.insert(at + pattern.size(), "null,\"y\":"))));
}

INSTANTIATE_TEST_SUITE_P(Resolver, ProfileKey, ::testing::Values("id", "name", "configuration"));

class RuleKey : public ::testing::TestWithParam<const char *>
{
};

// Every rule key but probeURL must be present and not null, even those the constructor defaults.
TEST_P(RuleKey, IsRequiredAndMayNotBeNull)
{
    const std::string key = GetParam();
    const std::string pattern = "\"" + key + "\":";
    std::string rule(ruleJSON);
    const size_t at = rule.find(pattern);
    ASSERT_NE(at, std::string::npos);
    const std::string renamed = std::string(rule).replace(at, key.size() + 2, "\"unknown\":");
    const std::string nulled = rule.insert(at + pattern.size(), "null,\"unknown\":");
    EXPECT_FALSE(decodeJSON<OnDemandRule>(QByteArray::fromStdString(renamed)));
    EXPECT_FALSE(decodeJSON<OnDemandRule>(QByteArray::fromStdString(nulled)));
    EXPECT_FALSE(decodeJSON<Resolver>(profileWithRule(QByteArray::fromStdString(renamed))));
}

INSTANTIATE_TEST_SUITE_P(OnDemandRule, RuleKey,
    ::testing::Values("id", "name", "action", "interfaceType", "ssidMatch", "dnsSearchDomainMatch",
        "dnsServerAddressMatch"));

TEST(JSONDecoding, ProbeURLMayBeMissingOrNull)
{
    for (const char *probe : { "", R"(,"probeURL":null)" }) {
        const auto rule = decodeJSON<OnDemandRule>(
            replaced(ruleJSON, R"(,"probeURL":"https://probe.example/ok")", probe));
        ASSERT_TRUE(rule) << probe;
        EXPECT_FALSE(rule->probeURL);
    }
}

TEST(JSONDecoding, UnknownEnumerationIntegersAreKept)
{
    const auto rule = decodeJSON<OnDemandRule>(replaced(replaced(ruleJSON, R"("action":1)", R"("action":9)"),
        R"("interfaceType":2)", R"("interfaceType":1)"));
    ASSERT_TRUE(rule);
    EXPECT_EQ(rule->action.rawValue, 9);
    EXPECT_EQ(rule->action.description(), QStringLiteral("Unknown"));
    EXPECT_EQ(rule->interfaceType.rawValue, 1);
    EXPECT_EQ(rule->interfaceType.description(), QStringLiteral("Unknown"));

    EXPECT_EQ(decodeJSON<NEOnDemandRuleAction>("-9223372036854775808")->rawValue, INT64_MIN);
    EXPECT_EQ(decodeJSON<NEOnDemandRuleAction>("9223372036854775807")->rawValue, INT64_MAX);
    EXPECT_EQ(decodeJSON<NEOnDemandRuleAction>("-0")->rawValue, 0);
}

class NonIntegerEnumeration : public ::testing::TestWithParam<const char *>
{
};

TEST_P(NonIntegerEnumeration, FailsToDecode)
{
    EXPECT_FALSE(decodeJSON<NEOnDemandRuleAction>(GetParam()));
    EXPECT_FALSE(decodeJSON<NEOnDemandRuleInterfaceType>(GetParam()));
    EXPECT_FALSE(decodeJSON<OnDemandRule>(
        replaced(ruleJSON, R"("action":1)", std::string("\"action\":") + GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Values, NonIntegerEnumeration,
    ::testing::Values("1.5", "1.0", "1e2", R"("1")", "true", "null", "[1]", "{}", "9223372036854775808",
        "18446744073709551615", "99999999999999999999999"));

TEST(JSONDecoding, BaseSelectsThePayloadAndTheOtherKeyIsNeverRead)
{
    EXPECT_FALSE(decodeJSON<Configuration>(R"({"base":"dnsOverHTTPS","dotConfiguration":{"servers":[]}})"));
    const auto tls = decodeJSON<Configuration>(
        R"({"base":"dnsOverTLS","dotConfiguration":{"servers":[]},"dohConfiguration":"anything at all"})");
    ASSERT_TRUE(tls);
    EXPECT_EQ(*tls, Configuration::dnsOverTLS(DoTConfiguration()));
    EXPECT_FALSE(tls->dotConfiguration()->serverName);
}

TEST(JSONDecoding, BaseMustBeOneOfTheTwoRawValues)
{
    for (const char *base : { R"("dot")", R"("doh")", R"("DNSOVERHTTPS")", R"("dnsoverhttps")",
             R"("dnsOverHTTPS ")", R"("")", "1", "null" }) {
        const std::string text = std::string(R"({"base":)") + base + R"(,"dohConfiguration":{"servers":[]}})";
        EXPECT_FALSE(decodeJSON<Configuration>(QByteArray::fromStdString(text))) << text;
    }
    EXPECT_FALSE(decodeJSON<Configuration>(R"({"dohConfiguration":{"servers":[]}})"));
}

TEST(JSONDecoding, ServerListsAreRequiredAndOptionalTextsMayBeNull)
{
    EXPECT_FALSE(decodeJSON<DoHConfiguration>(R"({"serverURL":"https://a.example"})"));
    EXPECT_FALSE(decodeJSON<DoTConfiguration>(R"({"servers":null})"));
    EXPECT_FALSE(decodeJSON<DoTConfiguration>(R"({"servers":["a",null]})"));
    EXPECT_FALSE(decodeJSON<DoTConfiguration>(R"({"servers":"a"})"));
    EXPECT_FALSE(decodeJSON<DoTConfiguration>(R"({"servers":[],"serverName":5})"));
    EXPECT_EQ(decodeJSON<DoTConfiguration>(R"({"servers":["a"],"serverName":null})"),
        DoTConfiguration({ QStringLiteral("a") }));
}

class UUIDText : public ::testing::TestWithParam<std::pair<const char *, bool>>
{
};

TEST_P(UUIDText, OnlyTheBare36CharacterFormIsAccepted)
{
    const auto [uuid, accepted] = GetParam();
    const auto rule = decodeJSON<OnDemandRule>(
        replaced(ruleJSON, R"("A0000000-0000-4000-8000-00000000000B")", std::string("\"") + uuid + "\""));
    EXPECT_EQ(rule.has_value(), accepted);
    if (rule) {
        EXPECT_EQ(rule->id, QUuid::fromString(QLatin1StringView(uuid)));
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, UUIDText,
    ::testing::Values(std::pair { "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d", true },
        std::pair { "A0B1C2D3-E4F5-4A6B-8C7D-9E0F1A2B3C4D", true },
        std::pair { "a0B1c2D3-e4F5-4a6B-8c7D-9e0F1a2B3c4D", true },
        std::pair { "00000000-0000-0000-0000-000000000000", true },
        std::pair { "{a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d}", false },
        std::pair { "a0b1c2d3e4f54a6b8c7d9e0f1a2b3c4d", false },
        std::pair { "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4d0", false },
        std::pair { "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4", false },
        std::pair { "a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4g", false },
        std::pair { " a0b1c2d3-e4f5-4a6b-8c7d-9e0f1a2b3c4", false },
        std::pair { "a0b1c2d3e-4f5-4a6b-8c7d-9e0f1a2b3c4d", false },
        std::pair { "urn:uuid:a0b1c2d3-e4f5-4a6b-8c7d-9e0f", false }, std::pair { "", false }));

class URLText : public ::testing::TestWithParam<std::pair<const char *, bool>>
{
};

TEST_P(URLText, TextsTheParserRejectsFail)
{
    const auto [url, accepted] = GetParam();
    const auto rule = decodeJSON<OnDemandRule>(
        replaced(ruleJSON, R"("https://probe.example/ok")", std::string("\"") + url + "\""));
    EXPECT_EQ(rule.has_value(), accepted) << url;
}

INSTANTIATE_TEST_SUITE_P(Forms, URLText,
    ::testing::Values(std::pair { "https://dns.example/c7e091", true },
        std::pair { "https://[::1]:8443/q?a=b#c", true }, std::pair { "relative/path", true },
        std::pair { "", false }, std::pair { " ", false }, std::pair { "https://bad host/", false },
        std::pair { "https://dns.example/a b", false }, std::pair { " https://dns.example/", false },
        std::pair { "https://dns.example/%zz", false }, std::pair { "https://dns.example/\\\"", false },
        std::pair { "https://dns.example/\\n", false }));

TEST(JSONDecoding, MalformedTextAndBadUTF8GiveNoValue)
{
    const QByteArray good = profileWithRule(ruleJSON);
    ASSERT_TRUE(decodeJSON<Resolver>(good));
    EXPECT_FALSE(decodeJSON<Resolver>(good.left(good.size() - 1)));
    EXPECT_FALSE(decodeJSON<Resolver>(good + " x"));
    EXPECT_FALSE(decodeJSON<Resolver>(good + "{}"));
    EXPECT_FALSE(decodeJSON<Resolver>(""));
    EXPECT_FALSE(decodeJSON<Resolver>("[]"));
    EXPECT_FALSE(decodeJSON<Resolver>(replaced(good.constData(), "\"Home\"", "\"H\xc3\x28\"")));
    EXPECT_FALSE(decodeJSON<Resolver>(replaced(good.constData(), "\"Home\"", "\"\xc0\xaf\"")));
    EXPECT_FALSE(decodeJSON<Resolver>(replaced(good.constData(), "\"Home\"", "\"\xed\xa0\x80\"")));
    EXPECT_FALSE(decodeJSON<Resolver>(replaced(good.constData(), "\"Home\"", R"("\ud800")")));
    EXPECT_FALSE(decodeJSON<Resolver>(replaced(good.constData(), "\"Home\"", "'Home'")));

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
