#include "model/built_in_resolvers.h"

#include "brivanta_build_config.h"

#include <QUrl>

namespace brivanta {

namespace {

std::vector<Resolver> makeBuiltInResolvers()
{
    const QString endpoint = QStringLiteral("https://") + QString::fromUtf8(build::resolverHost)
        + QStringLiteral("/") + QString::fromUtf8(build::resolverProfile);
    // A host of the build that does not parse leaves the endpoint out rather than failing.
    std::optional<QUrl> serverURL;
    if (const QUrl url(endpoint, QUrl::StrictMode); url.isValid())
        serverURL = url;
    const Configuration configuration = Configuration::dnsOverHTTPS(DoHConfiguration({}, serverURL));
    return { Resolver(QUuid::createUuid(), QString(), configuration, {}) };
}

} // namespace

const std::vector<Resolver> &builtInResolvers()
{
    static const std::vector<Resolver> resolvers = makeBuiltInResolvers();
    return resolvers;
}

} // namespace brivanta
