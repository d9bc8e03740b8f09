#include "model/resolver.h"
#include "platform/platform_mapping.h"

#include <csignal>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

const QStringList domains { "corp.example" };
const QStringList addresses { "10.0.0.1", "10.0.0.2" };
const QUrl probe("https://probe.example/ok");

OnDemandRule ruleWith(qint64 action, qint64 interfaceType, QStringList ssids = { "Cafe" })
{
    return OnDemandRule("ignored", NEOnDemandRuleAction(action), NEOnDemandRuleInterfaceType(interfaceType),
        ssids, domains, addresses, probe);
}

TEST(DNSSettingsMapping, ServersPassInOrderAndAnAbsentNameAsNil)
{
    const QStringList servers { "9.9.9.9", "1.1.1.1" };
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverTLS(DoTConfiguration(servers))),
        NEDNSSettings(NEDNSOverTLSSettings { servers, std::nullopt }));
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverTLS(DoTConfiguration(servers, "dns.quad9.net"))),
        NEDNSSettings(NEDNSOverTLSSettings { servers, "dns.quad9.net" }));
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverHTTPS(DoHConfiguration(servers))),
        NEDNSSettings(NEDNSOverHTTPSSettings { servers, std::nullopt }));
}

TEST(OnDemandRuleMapping, TheKindFollowsTheActionAndOnlyAnyAndWiFiTakeTheSSIDListEvenWhenEmpty)
{
    using Kind = NEOnDemandRule::Kind;
    const QStringList cafe { "Cafe" };
    const struct
    {
        qint64 action;
        qint64 interfaceType;
        QStringList ssids;
        Kind kind;
        std::optional<QStringList> ssidMatch;
    } cases[] = { { 1, 0, cafe, Kind::Connect, cafe }, { 2, 2, {}, Kind::Disconnect, QStringList {} },
        { 3, 2, cafe, Kind::EvaluateConnection, cafe }, { 4, 1, cafe, Kind::Ignore, std::nullopt },
        { 1, 3, {}, Kind::Connect, std::nullopt }, { 1, 7, cafe, Kind::Connect, std::nullopt },
        { 1, -2, cafe, Kind::Connect, std::nullopt } };
    for (const auto &c : cases) {
        EXPECT_EQ(makeOnDemandRule(ruleWith(c.action, c.interfaceType, c.ssids)),
            (NEOnDemandRule { c.kind, c.interfaceType, c.ssidMatch, domains, addresses, probe }))
            << "action " << c.action << ", interface type " << c.interfaceType;
    }
    EXPECT_EQ(makeOnDemandRules({ ruleWith(4, 3), ruleWith(1, 2) }),
        (std::vector { makeOnDemandRule(ruleWith(4, 3)), makeOnDemandRule(ruleWith(1, 2)) }));
    EXPECT_EQ(makeOnDemandRule(OnDemandRule("bare", NEOnDemandRuleAction::disconnect)),
        (NEOnDemandRule { Kind::Disconnect, 0, QStringList {}, {}, {}, std::nullopt }));
}

TEST(OnDemandRuleMappingDeathTest, AnActionOutsideOneToFourStopsTheProcessSayingWhy)
{
    for (const qint64 action : { 0, 5, -1 })
        EXPECT_EXIT(makeOnDemandRule(ruleWith(action, 0)), ::testing::KilledBySignal(SIGABRT),
            "no on-demand rule class for this action value")
            << action;
}

} // namespace
} // namespace brivanta
