#include "model/built_in_resolvers.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

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

// The list must not be built yet when the threads reach it, so this runs in a fresh child process.
TEST(BuiltInResolversDeathTest, ThreadsReachingTheListFirstTogetherSeeOneList)
{
    EXPECT_EXIT(
        {
            constexpr int threadCount = 8;
            std::vector<const std::vector<Resolver> *> seen(threadCount, nullptr);
            std::vector<QUuid> ids(threadCount);
            std::vector<std::thread> threads;
            for (int i = 0; i < threadCount; ++i) {
                threads.emplace_back([&, i] {
                    seen[i] = &builtInResolvers();
                    ids[i] = seen[i]->front().id;
                });
            }
            for (std::thread &thread : threads)
                thread.join();
            bool same = true;
            for (int i = 1; i < threadCount; ++i)
                same = same && seen[i] == seen[0] && ids[i] == ids[0] && !ids[i].isNull();
            std::exit(same ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace brivanta
