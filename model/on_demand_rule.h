#pragma once

#include "model/hasher.h"
#include "model/ne_on_demand_rule_action.h"
#include "model/ne_on_demand_rule_interface_type.h"

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUuid>
#include <functional>
#include <optional>

namespace brivanta {

// When the phone platform applies a profile. The id only gives the rule its identity in a list; equality is
// over every field.
struct OnDemandRule
{
    QUuid id;
    QString name;
    NEOnDemandRuleAction action;
    NEOnDemandRuleInterfaceType interfaceType;
    QStringList ssidMatch;
    QStringList dnsSearchDomainMatch;
    QStringList dnsServerAddressMatch;
    std::optional<QUrl> probeURL;

    OnDemandRule(QUuid id, QString name, NEOnDemandRuleAction action = NEOnDemandRuleAction::ignore,
        NEOnDemandRuleInterfaceType interfaceType = NEOnDemandRuleInterfaceType::any,
        QStringList ssidMatch = {}, QStringList dnsSearchDomainMatch = {},
        QStringList dnsServerAddressMatch = {}, std::optional<QUrl> probeURL = std::nullopt);
    // The same with a new random id.
    explicit OnDemandRule(QString name, NEOnDemandRuleAction action = NEOnDemandRuleAction::ignore,
        NEOnDemandRuleInterfaceType interfaceType = NEOnDemandRuleInterfaceType::any,
        QStringList ssidMatch = {}, QStringList dnsSearchDomainMatch = {},
        QStringList dnsServerAddressMatch = {}, std::optional<QUrl> probeURL = std::nullopt);

    void hash(Hasher &hasher) const;
    friend bool operator==(const OnDemandRule &a, const OnDemandRule &b);
};

} // namespace brivanta

template <> struct std::hash<brivanta::OnDemandRule>
{
    size_t operator()(const brivanta::OnDemandRule &value) const { return brivanta::qHash(value); }
};
