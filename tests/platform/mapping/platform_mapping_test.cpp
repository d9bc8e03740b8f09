#include "model/resolver.h"
#include "platform/platform_mapping.h"

#include <csignal>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

const QUrl probe(QStringLiteral("https://probe.example/ok"));

OnDemandRule ruleWith(qint64 action, qint64 interfaceType, QStringList ssids = { QStringLiteral("Cafe") })
{
    return OnDemandRule(QStringLiteral("ignored"), NEOnDemandRuleAction(action),
        NEOnDemandRuleInterfaceType(interfaceType), ssids, { QStringLiteral("corp.example") },
        { QStringLiteral("10.0.0.1"), QStringLiteral("10.0.0.2") }, probe);
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

TEST(OnDemandRuleMapping, TheKindFollowsTheActionAndTheFieldsPassAsTheyAre)
{
    using Kind = NEOnDemandRule::Kind;
    const std::pair<qint64, Kind> kinds[] = { { 1, Kind::Connect }, { 2, Kind::Disconnect },
        { 3, Kind::EvaluateConnection }, { 4, Kind::Ignore } };
    for (const auto &[action, kind] : kinds)
        EXPECT_EQ(makeOnDemandRule(ruleWith(action, 0)).kind, kind) << "action " << action;
    EXPECT_EQ(makeOnDemandRules({ ruleWith(4, 3), ruleWith(1, 2) }),
        (std::vector { makeOnDemandRule(ruleWith(4, 3)), makeOnDemandRule(ruleWith(1, 2)) }));

    EXPECT_EQ(makeOnDemandRule(ruleWith(3, 3)),
        (NEOnDemandRule { NEOnDemandRule::Kind::EvaluateConnection, 3, std::nullopt,
            { QStringLiteral("corp.example") }, { QStringLiteral("10.0.0.1"), QStringLiteral("10.0.0.2") },
            probe }));
    EXPECT_EQ(makeOnDemandRule(OnDemandRule(QStringLiteral("bare"), NEOnDemandRuleAction::disconnect)),
        (NEOnDemandRule { NEOnDemandRule::Kind::Disconnect, 0, QStringList {}, {}, {}, std::nullopt }));
}

TEST(OnDemandRuleMapping, TheSSIDListIsSetOnlyForAnyAndWiFiEvenWhenEmpty)
{
    const QStringList cafe { QStringLiteral("Cafe") };
    const QStringList two { QStringLiteral("a"), QStringLiteral("b") };
    const struct
    {
        qint64 interfaceType;
        QStringList ssids;
        std::optional<QStringList> expected;
    } cases[] = { { 0, cafe, cafe }, { 2, {}, QStringList {} }, { 2, two, two }, { 1, cafe, std::nullopt },
        { 3, {}, std::nullopt }, { 7, cafe, std::nullopt }, { -2, cafe, std::nullopt } };
    for (const auto &c : cases) {
        const NEOnDemandRule rule = makeOnDemandRule(ruleWith(1, c.interfaceType, c.ssids));
        EXPECT_EQ(rule.interfaceTypeMatch, c.interfaceType);
        EXPECT_EQ(rule.ssidMatch, c.expected) << "interface type " << c.interfaceType;
    }
}

TEST(OnDemandRuleMappingDeathTest, AnActionOutsideOneToFourStopsTheProcessSayingWhy)
{
    const char *reason = "no on-demand rule class for this action value";
    for (const qint64 action : { 0, 5, -1 }) {
        const OnDemandRule rule = ruleWith(action, 0);
        EXPECT_EXIT(makeOnDemandRule(rule), ::testing::KilledBySignal(SIGABRT), reason) << action;
        EXPECT_EXIT(makeOnDemandRules({ ruleWith(1, 0), rule }), ::testing::KilledBySignal(SIGABRT), reason)
            << action;
    }
}

} // namespace
} // namespace brivanta
