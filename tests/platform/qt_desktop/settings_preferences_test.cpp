#include "fakes/fake_application_services.h"
#include "platform/qt/settings_preferences.h"
#include "support/launch_counter.h"

#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;

struct SettingsPreferencesTest : ::testing::Test
{
    QTemporaryDir directory;
    QString fileName = directory.filePath(QStringLiteral("Brivanta.conf"));
    const QString key = QStringLiteral("launchCount");

    void SetUp() override { ASSERT_TRUE(directory.isValid()); }

    void storeRaw(const QVariant &value)
    {
        QSettings settings(fileName, QSettings::NativeFormat);
        settings.setValue(key, value);
    }
};

// A missing key reads 0, so the first appearance stores 1.
TEST_F(SettingsPreferencesTest, TheCounterSurvivesIntoANewStore)
{
    FakeApplicationServices application;
    {
        SettingsPreferences first(fileName);
        for (int appearance = 1; appearance <= 3; ++appearance)
            incrementLaunchCount(first, application);
        // A second store on the same file sees each write at once, before the first goes away.
        EXPECT_EQ(SettingsPreferences(fileName).integerForKey(key), 3);
    }
    SettingsPreferences second(fileName);
    incrementLaunchCount(second, application);
    EXPECT_EQ(SettingsPreferences(fileName).integerForKey(key), 4);
}

TEST_F(SettingsPreferencesTest, AValueThatIsNotAnIntegerReadsZeroAndIsOverwrittenByOne)
{
    for (const char *damaged : { "five", "2.5", "", "99999999999999999999", "0x10" }) {
        storeRaw(QString::fromUtf8(damaged));
        SettingsPreferences preferences(fileName);
        EXPECT_EQ(preferences.integerForKey(key), 0) << damaged;

        FakeApplicationServices application;
        incrementLaunchCount(preferences, application);

        EXPECT_EQ(SettingsPreferences(fileName).integerForKey(key), 1) << damaged;
    }
}

} // namespace
} // namespace brivanta
