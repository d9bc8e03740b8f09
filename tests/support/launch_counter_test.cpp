#include "fakes/fake_application_services.h"
#include "fakes/fake_preferences.h"
#include "support/launch_counter.h"

#include <gtest/gtest.h>
#include <limits>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;
using testing::FakeOtherScene;
using testing::FakePreferences;
using testing::FakeWindowScene;

qlonglong storedCount(const FakePreferences &preferences)
{
    return preferences.values.value(QStringLiteral("launchCount")).toLongLong();
}

TEST(LaunchCounter, AsksForAReviewOnEveryFifthAppearanceInTheWindowScene)
{
    FakePreferences preferences;
    FakeApplicationServices application;
    // The prompt needs only the scene, not a window in it (windows matter to the share sheet).
    auto &scene = application.addScene<FakeWindowScene>();

    const std::vector<std::size_t> expectedRequests { 0, 0, 0, 0, 1, 1, 1, 1, 1, 2, 2 };
    for (int appearance = 1; appearance <= 11; ++appearance) {
        incrementLaunchCount(preferences, application);
        EXPECT_EQ(storedCount(preferences), appearance);
        EXPECT_EQ(application.reviewRequests.size(), expectedRequests[appearance - 1])
            << "appearance " << appearance;
    }
    for (WindowScene *requested : application.reviewRequests)
        EXPECT_EQ(requested, &scene);

    // From a stored count, too.
    preferences.values.insert(QStringLiteral("launchCount"), qlonglong(1'000'004));
    incrementLaunchCount(preferences, application);
    EXPECT_EQ(storedCount(preferences), 1'000'005);
    EXPECT_EQ(application.reviewRequests.size(), 3u);
}

TEST(LaunchCounter, WithoutAWindowSceneFirstStillCountsButRequestsNothing)
{
    for (const bool otherKindFirst : { false, true }) {
        FakePreferences preferences;
        FakeApplicationServices application;
        if (otherKindFirst) {
            application.addScene<FakeOtherScene>();
            application.addScene<FakeWindowScene>(); // never considered: only the first scene is
        }

        for (int appearance = 1; appearance <= 10; ++appearance)
            incrementLaunchCount(preferences, application);

        EXPECT_EQ(storedCount(preferences), 10) << otherKindFirst;
        EXPECT_EQ(preferences.writes, 10) << otherKindFirst;
        EXPECT_TRUE(application.reviewRequests.empty()) << otherKindFirst;
    }
}

TEST(LaunchCounterDeathTest, OverflowOfTheCounterIsFatal)
{
    FakePreferences preferences;
    preferences.values.insert(QStringLiteral("launchCount"), std::numeric_limits<qlonglong>::max());
    FakeApplicationServices application;

    EXPECT_DEATH(incrementLaunchCount(preferences, application), "");
}

} // namespace
} // namespace brivanta
