#include "model/built_in_resolvers.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(BuiltInResolvers, HoldOneHTTPSProfileWithTheEndpointAndNothingElse)
{
    const std::vector<Resolver> &list = builtInResolvers();
    ASSERT_EQ(list.size(), 1u);
    const Resolver &profile = list.front();
    EXPECT_FALSE(profile.id.isNull());
    EXPECT_EQ(profile.name, QString());
    EXPECT_TRUE(profile.onDemandRules.empty());
    EXPECT_EQ(profile.configuration.description(), QStringLiteral("DNS-over-HTTPS"));
    EXPECT_EQ(profile.configuration,
        Configuration::dnsOverHTTPS(
            DoHConfiguration({}, QUrl(QStringLiteral("https://dns.nextdns.io/c7e091")))));
}

} // namespace
} // namespace brivanta
