#include "model/resolver.h"

#include <utility>

namespace brivanta {

Resolver::Resolver(
    QUuid id, QString name, Configuration configuration, std::vector<OnDemandRule> onDemandRules)
    : id(id)
    , name(std::move(name))
    , configuration(std::move(configuration))
    , onDemandRules(std::move(onDemandRules))
{ }

Resolver::Resolver(QString name, Configuration configuration, std::vector<OnDemandRule> onDemandRules)
    : Resolver(QUuid::createUuid(), std::move(name), std::move(configuration), std::move(onDemandRules))
{ }

void Resolver::hash(Hasher &hasher) const
{
    hasher.combine(id);
    hasher.combine(name);
    hasher.combine(configuration);
    hasher.combine(static_cast<quint64>(onDemandRules.size()));
    for (const OnDemandRule &rule : onDemandRules)
        hasher.combine(rule);
}

bool operator==(const Resolver &a, const Resolver &b)
{
    return a.id == b.id && canonicallyEqual(a.name, b.name) && a.configuration == b.configuration
        && a.onDemandRules == b.onDemandRules;
}

} // namespace brivanta
