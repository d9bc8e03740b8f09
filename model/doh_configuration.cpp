#include "model/doh_configuration.h"

#include <utility>

namespace brivanta {

DoHConfiguration::DoHConfiguration(QStringList servers, std::optional<QUrl> serverURL)
    : servers(std::move(servers))
    , serverURL(std::move(serverURL))
{ }

void DoHConfiguration::hash(Hasher &hasher) const
{
    hasher.combine(servers);
    hasher.combine(serverURL);
}

bool operator==(const DoHConfiguration &a, const DoHConfiguration &b)
{
    return canonicallyEqual(a.servers, b.servers) && a.serverURL == b.serverURL;
}

} // namespace brivanta
