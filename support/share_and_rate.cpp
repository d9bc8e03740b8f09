#include "support/share_and_rate.h"

#include "model/fatal.h"
#include "platform/application_services.h"
#include "support/bundle_string.h"
#include "support/open_link.h"
#include "support/store_links.h"

namespace brivanta {

QString shareText(const BundleInfo &bundle)
{
    const QString name = bundleString(bundle, QStringLiteral("CFBundleName"), QStringLiteral("this app"));
    const QString version = bundleString(bundle, QStringLiteral("CFBundleShortVersionString"), QString());
    // The space goes in even when the version is empty: "this app !" is how it reads then.
    return QStringLiteral(u"🚀 Check out ") + name + u' ' + version
        + QStringLiteral(
            u"! 🎉\n\n✨ Enjoy the latest features, bug fixes, and sleek UI improvements!\n"
            u"📲 New users, download now! 🔄 Existing users, update for the best experience! 🔥\n\n");
}

void shareApp(const BundleInfo &bundle, ApplicationServices &application)
{
    shareApp(bundle, application, appStorePageLink());
}

void shareApp(const BundleInfo &bundle, ApplicationServices &application, const QString &storePageLink)
{
    const std::optional<QUrl> storePage = makeURL(storePageLink);
    if (!storePage)
        fatal("the store page link does not parse"); // a build constant: only a broken build gets here
    ShareSheet sheet { { shareText(bundle), *storePage }, std::nullopt };

    WindowScene *scene = presentingWindowScene(application);
    if (scene == nullptr)
        return;
    const std::vector<Window *> windows = scene->windows();
    if (windows.empty() || windows.front() == nullptr)
        return;
    ViewController *root = windows.front()->rootViewController();
    if (root == nullptr)
        return;

    if (application.shareSheetHasPopover()) {
        // Floats in the middle of the root view, with no arrow pointing anywhere.
        const QRectF bounds = root->viewBounds();
        sheet.popover
            = PopoverAnchor { root, QRectF(bounds.center(), QSizeF(0, 0)), PopoverArrowDirectionNone };
    }
    root->presentShareSheet(sheet, true);
}

void rateApp(ApplicationServices &application)
{
    rateApp(application, appReviewLink());
}

void rateApp(ApplicationServices &application, const QString &reviewLink)
{
    openLink(application, reviewLink);
}

} // namespace brivanta
