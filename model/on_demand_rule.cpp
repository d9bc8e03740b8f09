#include "model/on_demand_rule.h"

#include <utility>

namespace brivanta {

OnDemandRule::OnDemandRule(QUuid id, QString name, NEOnDemandRuleAction action,
    NEOnDemandRuleInterfaceType interfaceType, QStringList ssidMatch, QStringList dnsSearchDomainMatch,
    QStringList dnsServerAddressMatch, std::optional<QUrl> probeURL)
    : id(id)
    , name(std::move(name))
    , action(action)
    , interfaceType(interfaceType)
    , ssidMatch(std::move(ssidMatch))
    , dnsSearchDomainMatch(std::move(dnsSearchDomainMatch))
    , dnsServerAddressMatch(std::move(dnsServerAddressMatch))
    , probeURL(std::move(probeURL))
{ }

OnDemandRule::OnDemandRule(QString name, NEOnDemandRuleAction action,
    NEOnDemandRuleInterfaceType interfaceType, QStringList ssidMatch, QStringList dnsSearchDomainMatch,
    QStringList dnsServerAddressMatch, std::optional<QUrl> probeURL)
    : OnDemandRule(QUuid::createUuid(), std::move(name), action, interfaceType, std::move(ssidMatch),
        std::move(dnsSearchDomainMatch), std::move(dnsServerAddressMatch), std::move(probeURL))
{ }

void OnDemandRule::hash(Hasher &hasher) const
{
    hasher.combine(id);
    hasher.combine(name);
    hasher.combine(action);
    hasher.combine(interfaceType);
    hasher.combine(ssidMatch);
    hasher.combine(dnsSearchDomainMatch);
    hasher.combine(dnsServerAddressMatch);
    hasher.combine(probeURL);
}

bool operator==(const OnDemandRule &a, const OnDemandRule &b)
{
    return a.id == b.id && canonicallyEqual(a.name, b.name) && a.action == b.action
        && a.interfaceType == b.interfaceType && canonicallyEqual(a.ssidMatch, b.ssidMatch)
        && canonicallyEqual(a.dnsSearchDomainMatch, b.dnsSearchDomainMatch)
        && canonicallyEqual(a.dnsServerAddressMatch, b.dnsServerAddressMatch) && a.probeURL == b.probeURL;
}

} // namespace brivanta
