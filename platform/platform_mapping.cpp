#include "platform/platform_mapping.h"

#include "model/fatal.h"

namespace brivanta {

NEDNSSettings makeDNSSettings(const Configuration &configuration)
{
    if (const DoTConfiguration *dot = configuration.dotConfiguration()) {
        return NEDNSOverTLSSettings { dot->servers, dot->serverName };
    }
    const DoHConfiguration &doh = *configuration.dohConfiguration();
    return NEDNSOverHTTPSSettings { doh.servers, doh.serverURL };
}

namespace {

NEOnDemandRule::Kind ruleKind(NEOnDemandRuleAction action)
{
    switch (action.rawValue) {
    case 1:
        return NEOnDemandRule::Kind::Connect;
    case 2:
        return NEOnDemandRule::Kind::Disconnect;
    case 3:
        return NEOnDemandRule::Kind::EvaluateConnection;
    case 4:
        return NEOnDemandRule::Kind::Ignore;
    default:
        // Decoding keeps any integer, but no platform rule class stands for it.
        fatal("no on-demand rule class for this action value");
    }
}

} // namespace

NEOnDemandRule makeOnDemandRule(const OnDemandRule &rule)
{
    NEOnDemandRule platformRule;
    platformRule.kind = ruleKind(rule.action);
    platformRule.interfaceTypeMatch = rule.interfaceType.rawValue;
    // Only "any" and Wi-Fi take an SSID list, even an empty one; every other type keeps the
    // phone platform's default of no list.
    if (rule.interfaceType == NEOnDemandRuleInterfaceType::any
        || rule.interfaceType == NEOnDemandRuleInterfaceType::wiFi)
        platformRule.ssidMatch = rule.ssidMatch;
    platformRule.dnsSearchDomainMatch = rule.dnsSearchDomainMatch;
    platformRule.dnsServerAddressMatch = rule.dnsServerAddressMatch;
    platformRule.probeURL = rule.probeURL;
    return platformRule;
}

std::vector<NEOnDemandRule> makeOnDemandRules(const std::vector<OnDemandRule> &rules)
{
    std::vector<NEOnDemandRule> platformRules;
    platformRules.reserve(rules.size());
    for (const OnDemandRule &rule : rules)
        platformRules.push_back(makeOnDemandRule(rule));
    return platformRules;
}

} // namespace brivanta
