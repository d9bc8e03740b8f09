#include "model/resolver.h"
#include "platform/platform_mapping.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(DNSSettingsMapping, ServersPassInOrderAndAnAbsentNameAsNil)
{
    const QStringList servers { "9.9.9.9", "1.1.1.1" };
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverTLS(DoTConfiguration(servers, "dns.quad9.net"))),
        NEDNSSettings(NEDNSOverTLSSettings { servers, "dns.quad9.net" }));
    EXPECT_EQ(makeDNSSettings(Configuration::dnsOverHTTPS(DoHConfiguration(servers))),
        NEDNSSettings(NEDNSOverHTTPSSettings { servers, std::nullopt }));
}

TEST(OnDemandRuleMapping, TheKindFollowsTheActionAndOnlyAnyAndWiFiTakeTheSSIDListEvenWhenEmpty)
{
    using Kind = NEOnDemandRule::Kind;
    const QStringList cafe { "Cafe" }, domains { "corp.example" }, addresses { "10.0.0.1", "10.0.0.2" };
    const QUrl probe("https://probe.example/ok");
    // Action, interface type, SSIDs, and the kind and SSID list they map to.
    const std::tuple<qint64, qint64, QStringList, Kind, std::optional<QStringList>> cases[]
        = { { 1, 0, cafe, Kind::Connect, cafe }, { 2, 2, {}, Kind::Disconnect, QStringList {} },
              { 3, 2, cafe, Kind::EvaluateConnection, cafe }, { 4, 1, cafe, Kind::Ignore, std::nullopt },
              { 1, 3, {}, Kind::Connect, std::nullopt }, { 1, 7, cafe, Kind::Connect, std::nullopt },
              { 1, -2, cafe, Kind::Connect, std::nullopt } };
    std::vector<OnDemandRule> rules;
    std::vector<NEOnDemandRule> expected;
    for (const auto &[action, interfaceType, ssids, kind, ssidMatch] : cases) {
        rules.emplace_back("ignored", NEOnDemandRuleAction(action),
            NEOnDemandRuleInterfaceType(interfaceType), ssids, domains, addresses, probe);
        expected.push_back({ kind, interfaceType, ssidMatch, domains, addresses, probe });
    }
    EXPECT_EQ(makeOnDemandRules(rules), expected);
}

} // namespace
} // namespace brivanta
