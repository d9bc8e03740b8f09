#include "brivanta_build_config.h"
#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "support/share_and_rate.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

using testing::FakeApplicationServices;
using testing::FakeBundleInfo;
using testing::FakeOtherScene;
using testing::FakeViewController;
using testing::FakeWindowScene;

const QByteArray shareBody
    = "! \xF0\x9F\x8E\x89\n\n"
      "\xE2\x9C\xA8 Enjoy the latest features, bug fixes, and sleek UI improvements!\n"
      "\xF0\x9F\x93\xB2 New users, download now! \xF0\x9F\x94\x84 Existing users, update for "
      "the best experience! \xF0\x9F\x94\xA5\n\n";

FakeBundleInfo bundleWith(QVariant name, QVariant version)
{
    FakeBundleInfo bundle;
    if (name.isValid())
        bundle.dictionary.insert(QStringLiteral("CFBundleName"), name);
    if (version.isValid())
        bundle.dictionary.insert(QStringLiteral("CFBundleShortVersionString"), version);
    return bundle;
}

TEST(ShareText, ComposesOpeningNameSpaceVersionAndBody)
{
    const struct
    {
        QVariant name;
        QVariant version;
        QByteArray firstLine;
    } cases[]
        = { { QStringLiteral("Brivanta"), QStringLiteral("2.1"), "\xF0\x9F\x9A\x80 Check out Brivanta 2.1" },
              { QVariant(42), QStringLiteral("2.1"), "\xF0\x9F\x9A\x80 Check out this app 2.1" },
              { QStringLiteral("Brivanta"), QVariant(2.1), "\xF0\x9F\x9A\x80 Check out Brivanta " },
              { QVariant(), QVariant(), "\xF0\x9F\x9A\x80 Check out this app " } };
    for (const auto &c : cases)
        EXPECT_EQ(shareText(bundleWith(c.name, c.version)).toUtf8(), c.firstLine + shareBody);
}

TEST(ShareApp, PresentsTextThenStoreLinkOnTheRootControllerAnimated)
{
    const FakeBundleInfo bundle = bundleWith(QStringLiteral("Brivanta"), QStringLiteral("2.1"));
    FakeApplicationServices application;
    FakeViewController &root = application.addWindowSceneWithRoot();

    shareApp(bundle, application);

    ASSERT_EQ(root.presented.size(), 1u);
    const auto &presentation = root.presented.front();
    EXPECT_TRUE(presentation.animated);
    ASSERT_EQ(presentation.sheet.activityItems.size(), 2u);
    ASSERT_TRUE(std::holds_alternative<QString>(presentation.sheet.activityItems[0]));
    ASSERT_TRUE(std::holds_alternative<QUrl>(presentation.sheet.activityItems[1]));
    EXPECT_EQ(std::get<QString>(presentation.sheet.activityItems[0]), shareText(bundle));
    EXPECT_EQ(std::get<QUrl>(presentation.sheet.activityItems[1]).toString(),
        QStringLiteral("https://%1/app/id%2").arg(build::storeHost, build::storeAppId));
    EXPECT_FALSE(presentation.sheet.popover.has_value()); // phones have no popover to anchor
}

TEST(ShareApp, AsAPopoverFloatsAtTheCentreOfTheRootViewWithNoArrow)
{
    const FakeBundleInfo bundle;
    FakeApplicationServices application;
    application.hasPopover = true;
    FakeViewController &root = application.addWindowSceneWithRoot();
    root.bounds = QRectF(10, 20, 1024, 700);

    shareApp(bundle, application);

    ASSERT_EQ(root.presented.size(), 1u);
    const std::optional<PopoverAnchor> &popover = root.presented.front().sheet.popover;
    ASSERT_TRUE(popover.has_value());
    EXPECT_EQ(popover->sourceView, &root);
    EXPECT_EQ(popover->sourceRect, QRectF(522, 370, 0, 0));
    EXPECT_EQ(popover->permittedArrowDirections, 0u);
}

enum class Presenter { NoScene, OtherKindFirst, NoWindows, NoRootController };

class ShareAppWithoutPresenter : public ::testing::TestWithParam<Presenter>
{
};

TEST_P(ShareAppWithoutPresenter, DoesNothingAndTriesNoOtherPresenter)
{
    const FakeBundleInfo bundle;
    FakeApplicationServices application;
    // A usable root that a fallback would wrongly pick: in a later scene or a later window.
    FakeViewController *bystander = nullptr;
    switch (GetParam()) {
    case Presenter::NoScene:
        break;
    case Presenter::OtherKindFirst:
        application.addScene<FakeOtherScene>();
        bystander = &application.addWindowSceneWithRoot();
        break;
    case Presenter::NoWindows:
        application.addScene<FakeWindowScene>();
        bystander = &application.addWindowSceneWithRoot();
        break;
    case Presenter::NoRootController: {
        auto &scene = application.addScene<FakeWindowScene>();
        scene.addWindow().root.reset();
        bystander = scene.addWindow().root.get();
        break;
    }
    }

    shareApp(bundle, application);

    if (bystander != nullptr) {
        EXPECT_TRUE(bystander->presented.empty());
    }
    EXPECT_TRUE(application.openedURLs.empty());
}

INSTANTIATE_TEST_SUITE_P(, ShareAppWithoutPresenter,
    ::testing::Values(
        Presenter::NoScene, Presenter::OtherKindFirst, Presenter::NoWindows, Presenter::NoRootController));

TEST(ShareAppDeathTest, AStoreLinkThatDoesNotParseIsFatal)
{
    const FakeBundleInfo bundle;
    FakeApplicationServices application;
    application.addWindowSceneWithRoot();

    EXPECT_DEATH(shareApp(bundle, application, QStringLiteral("https://apps example.com/app/id1")), "");
}

} // namespace
} // namespace brivanta
