#include "model/built_in_resolvers.h"
#include "platform/platform_mapping.h"

#include <csignal>
#include <gtest/gtest.h>
#include <ostream>

namespace brivanta {
namespace {

const QUrl probe(QStringLiteral("https://probe.example/ok"));

OnDemandRule ruleWith(qint64 action, qint64 interfaceType, QStringList ssids = { QStringLiteral("Cafe") })
{
    return OnDemandRule(QStringLiteral("ignored"), NEOnDemandRuleAction(action),
        NEOnDemandRuleInterfaceType(interfaceType), ssids, { QStringLiteral("corp.example") },
        { QStringLiteral("10.0.0.1"), QStringLiteral("10.0.0.2") }, probe);
}

TEST(DNSSettingsMapping, BuiltInProfileGivesHTTPSSettingsWithOnlyTheEndpointAndNoRules)
{
    const Resolver &profile = builtInResolvers().front();
    EXPECT_EQ(makeDNSSettings(profile.configuration),
        NEDNSSettings(NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("https://dns.nextdns.io/c7e091")) }));
    EXPECT_TRUE(makeOnDemandRules(profile.onDemandRules).empty());
}

TEST(DNSSettingsMapping, TLSPassesServersInOrderAndAnAbsentNameAsNil)
{
    const QStringList servers { QStringLiteral("9.9.9.9"), QStringLiteral("1.1.1.1") };
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverTLS(DoTConfiguration(servers))),
        NEDNSSettings(NEDNSOverTLSSettings { servers, std::nullopt }));
    EXPECT_EQ(makeDNSSettings(
                  Configuration::dnsOverTLS(DoTConfiguration(servers, QStringLiteral("dns.quad9.net")))),
        NEDNSSettings(NEDNSOverTLSSettings { servers, QStringLiteral("dns.quad9.net") }));
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverHTTPS(DoHConfiguration(servers))),
        NEDNSSettings(NEDNSOverHTTPSSettings { servers, std::nullopt }));
}

struct KindCase
{
    qint64 action;
    NEOnDemandRule::Kind kind;
};

void PrintTo(const KindCase &value, std::ostream *out)
{
    *out << "action " << value.action;
}

class RuleKind : public ::testing::TestWithParam<KindCase>
{
};

TEST_P(RuleKind, FollowsTheAction)
{
    EXPECT_EQ(makeOnDemandRule(ruleWith(GetParam().action, 0)).kind, GetParam().kind);
}

INSTANTIATE_TEST_SUITE_P(Actions, RuleKind,
    ::testing::Values(KindCase { 1, NEOnDemandRule::Kind::Connect },
        KindCase { 2, NEOnDemandRule::Kind::Disconnect },
        KindCase { 3, NEOnDemandRule::Kind::EvaluateConnection },
        KindCase { 4, NEOnDemandRule::Kind::Ignore }));

TEST(OnDemandRuleMapping, CellularRuleKeepsEverythingButTheSSIDList)
{
    const NEOnDemandRule expected { NEOnDemandRule::Kind::EvaluateConnection, 3, std::nullopt,
        { QStringLiteral("corp.example") }, { QStringLiteral("10.0.0.1"), QStringLiteral("10.0.0.2") },
        probe };
    EXPECT_EQ(makeOnDemandRule(ruleWith(3, 3)), expected);
}

struct SSIDCase
{
    qint64 interfaceType;
    QStringList ssids;
    std::optional<QStringList> expected;
};

void PrintTo(const SSIDCase &value, std::ostream *out)
{
    *out << "interface type " << value.interfaceType << ", " << value.ssids.size() << " SSIDs";
}

class SSIDList : public ::testing::TestWithParam<SSIDCase>
{
};

TEST_P(SSIDList, IsSetOnlyForAnyAndWiFiEvenWhenEmpty)
{
    const NEOnDemandRule rule = makeOnDemandRule(ruleWith(1, GetParam().interfaceType, GetParam().ssids));
    EXPECT_EQ(rule.interfaceTypeMatch, GetParam().interfaceType);
    EXPECT_EQ(rule.ssidMatch, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(InterfaceTypes, SSIDList,
    ::testing::Values(SSIDCase { 0, { QStringLiteral("Cafe") }, QStringList { QStringLiteral("Cafe") } },
        SSIDCase { 2, {}, QStringList {} },
        SSIDCase { 2, { QStringLiteral("a"), QStringLiteral("b") },
            QStringList { QStringLiteral("a"), QStringLiteral("b") } },
        SSIDCase { 1, { QStringLiteral("Cafe") }, std::nullopt }, SSIDCase { 3, {}, std::nullopt },
        SSIDCase { 7, { QStringLiteral("Cafe") }, std::nullopt },
        SSIDCase { -2, { QStringLiteral("Cafe") }, std::nullopt }));

TEST(OnDemandRuleMapping, EmptyListsStayEmptyListsAndAbsentProbeStaysAbsent)
{
    const OnDemandRule bare(QStringLiteral("bare"), NEOnDemandRuleAction::disconnect);
    const NEOnDemandRule expected { NEOnDemandRule::Kind::Disconnect, 0, QStringList {}, {}, {},
        std::nullopt };
    EXPECT_EQ(makeOnDemandRule(bare), expected);
}

TEST(OnDemandRuleMapping, RulesKeepTheirCountAndOrder)
{
    const std::vector<NEOnDemandRule> rules
        = makeOnDemandRules({ ruleWith(4, 3), ruleWith(1, 2), ruleWith(2, 1) });
    ASSERT_EQ(rules.size(), 3u);
    EXPECT_EQ(rules[0].kind, NEOnDemandRule::Kind::Ignore);
    EXPECT_EQ(rules[0].interfaceTypeMatch, 3);
    EXPECT_EQ(rules[1].kind, NEOnDemandRule::Kind::Connect);
    EXPECT_EQ(rules[1].interfaceTypeMatch, 2);
    EXPECT_EQ(rules[2].kind, NEOnDemandRule::Kind::Disconnect);
    EXPECT_EQ(rules[2].interfaceTypeMatch, 1);
}

class UnknownAction : public ::testing::TestWithParam<qint64>
{
};

using OnDemandRuleMappingDeathTest = UnknownAction;

TEST_P(OnDemandRuleMappingDeathTest, StopsTheProcessSilently)
{
    const OnDemandRule rule = ruleWith(GetParam(), 0);
    EXPECT_EXIT(makeOnDemandRule(rule), ::testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(makeOnDemandRules({ ruleWith(1, 0), rule }), ::testing::KilledBySignal(SIGABRT), "^$");
}

INSTANTIATE_TEST_SUITE_P(OutsideOneToFour, OnDemandRuleMappingDeathTest, ::testing::Values(0, 5, -1, 9));

} // namespace
} // namespace brivanta
