#pragma once

#include "model/configuration.h"
#include "model/hasher.h"
#include "model/on_demand_rule.h"

#include <QString>
#include <QUuid>
#include <functional>
#include <vector>

namespace brivanta {

// One encrypted-DNS resolver profile. The id only gives the profile its identity in a list; equality
// is over every field.
struct Resolver
{
    QUuid id;
    QString name;
    Configuration configuration;
    std::vector<OnDemandRule> onDemandRules;

    Resolver(
        QUuid id, QString name, Configuration configuration, std::vector<OnDemandRule> onDemandRules = {});
    // The same with a new random id.
    Resolver(QString name, Configuration configuration, std::vector<OnDemandRule> onDemandRules = {});

    void hash(Hasher &hasher) const;
    friend bool operator==(const Resolver &a, const Resolver &b);
};

} // namespace brivanta

template <> struct std::hash<brivanta::Resolver>
{
    size_t operator()(const brivanta::Resolver &value) const { return brivanta::qHash(value); }
};
