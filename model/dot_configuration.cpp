#include "model/dot_configuration.h"

#include <utility>

namespace brivanta {

DoTConfiguration::DoTConfiguration(QStringList servers, std::optional<QString> serverName)
    : servers(std::move(servers))
    , serverName(std::move(serverName))
{ }

void DoTConfiguration::hash(Hasher &hasher) const
{
    hasher.combine(servers);
    hasher.combine(serverName);
}

bool operator==(const DoTConfiguration &a, const DoTConfiguration &b)
{
    return canonicallyEqual(a.servers, b.servers) && canonicallyEqual(a.serverName, b.serverName);
}

} // namespace brivanta
