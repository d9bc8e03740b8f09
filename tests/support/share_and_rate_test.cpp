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

TEST(ShareApp, PresentsTextThenStoreLinkOnTheRootControllerAnimatedAsAPopoverWhereThereIsOne)
{
    const FakeBundleInfo bundle = bundleWith(QStringLiteral("Brivanta"), QStringLiteral("2.1"));
    for (const bool hasPopover : { false, true }) {
        FakeApplicationServices application;
        application.hasPopover = hasPopover;
        FakeViewController &root = application.addWindowSceneWithRoot();
        root.bounds = QRectF(10, 20, 1024, 700);

        shareApp(bundle, application);

        ASSERT_EQ(root.presented.size(), 1u);
        const auto &presentation = root.presented.front();
        EXPECT_TRUE(presentation.animated);
        const auto &items = presentation.sheet.activityItems;
        ASSERT_EQ(items.size(), 2u);
        EXPECT_EQ(std::get<QString>(items[0]), shareText(bundle));
        EXPECT_EQ(std::get<QUrl>(items[1]).toString(),
            QStringLiteral("https://%1/app/id%2").arg(build::storeHost, build::storeAppId));
        const std::optional<PopoverAnchor> &popover = presentation.sheet.popover;
        ASSERT_EQ(popover.has_value(), hasPopover);
        if (popover) {
            // Floating at the centre of the root view, with no arrow.
            EXPECT_EQ(popover->sourceView, &root);
            EXPECT_EQ(popover->sourceRect, QRectF(522, 370, 0, 0));
            EXPECT_EQ(popover->permittedArrowDirections, 0u);
        }
    }
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
