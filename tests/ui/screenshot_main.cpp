// Writes the README's screenshots: the real QML module in a real window, over the scripted services of
// the UI tests, so that no DNS slot is touched and no probe leaves the machine. Run under a display
// (scripts/screenshots.sh uses Xvfb): brivanta_screenshots <output directory>

#include "ui/brivanta_app.h"
#include "ui_harness.h"

#include <QDir>
#include <QGuiApplication>
#include <QQuickItem>
#include <QTest>
#include <QTranslator>
#include <QtQml/qqmlextensionplugin.h>
#include <cmath>
#include <cstdio>
#include <functional>

Q_IMPORT_QML_PLUGIN(BrivantaPlugin)

namespace {

using brivanta::ContentWindow;
using brivanta::testing::UiHarness;

// Long enough for the pager's and the pill's animations to finish.
constexpr int settleMilliseconds = 900;

bool shoot(const QString &path, QSize size, const std::function<void(UiHarness &)> &scenario,
    bool withSystemSwitch = false)
{
    UiHarness harness;
    harness.withSystemSwitch = withSystemSwitch;
    harness.start(size);
    scenario(harness);
    QTest::qWait(settleMilliseconds);
    harness.settle();
    const QImage image = harness.window().grabWindow();
    if (image.isNull() || !image.save(path)) {
        std::fprintf(stderr, "could not write %s\n", qPrintable(path));
        return false;
    }
    std::printf("%s (%dx%d)\n", qPrintable(path), image.width(), image.height());
    return true;
}

void scrollTo(UiHarness &harness, const QString &objectName)
{
    QQuickItem *scrollView = harness.item(QStringLiteral("mainScrollView"));
    QQuickItem *target = harness.item(objectName);
    const auto *content = scrollView->property("contentItem").value<QQuickItem *>();
    const qreal top = target->mapToItem(content, QPointF(0, 0)).y() - 16;
    const qreal maximum = scrollView->property("contentHeight").toReal() - scrollView->height();
    scrollView->setProperty("contentY", std::clamp(top, 0.0, std::max(0.0, maximum)));
    harness.settle();
}

// The whole main screen, top to bottom: the window grows to the height of its content.
void showWholeMainScreen(UiHarness &harness)
{
    harness.leaveOnboarding();
    QQuickItem *scrollView = harness.item(QStringLiteral("mainScrollView"));
    harness.resize(
        QSize(harness.window().width(), int(std::ceil(scrollView->property("contentHeight").toReal()))));
}

void showPage(UiHarness &harness, int page)
{
    harness.item(QStringLiteral("onboardingPager"))->setProperty("currentIndex", page);
}

void showResults(UiHarness &harness)
{
    harness.leaveOnboarding();
    harness.click(harness.item(QStringLiteral("testButton")));
    // Two of the ten probes answer 200: not blocked.
    harness.httpClient.completeAll([](const QUrl &url) {
        const QString host = url.host();
        if (host == QLatin1String("outbrain.com") || host == QLatin1String("taboola.com"))
            return brivanta::testing::httpStatus(200);
        return brivanta::testing::transportError(brivanta::NSURLErrorCannotFindHost);
    });
    harness.runMainQueue();
    scrollTo(harness, QStringLiteral("testSection"));
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    brivanta::BrivantaApp::configure();
    const QString directory = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("docs/screenshots");
    QDir().mkpath(directory);

    struct Size
    {
        const char *name;
        QSize size;
    };
    const Size sizes[] = { { "phone", ContentWindow::phoneSize }, { "tablet", ContentWindow::tabletSize } };

    const std::vector<std::pair<QString, std::function<void(UiHarness &)>>> scenarios {
        { QStringLiteral("onboarding-first"), [](UiHarness &) {} },
        { QStringLiteral("onboarding-last"), [](UiHarness &h) { showPage(h, 8); } },
        { QStringLiteral("main-disabled"), showWholeMainScreen },
        { QStringLiteral("main-enabled"),
            [](UiHarness &h) {
                h.environment.variables["SIMULATOR_DEVICE_NAME"] = "Screenshots";
                showWholeMainScreen(h);
            } },
        { QStringLiteral("main-results"), showResults },
        { QStringLiteral("share-sheet"),
            [](UiHarness &h) {
                h.leaveOnboarding();
                h.click(h.item(QStringLiteral("shareButton")));
            } },
    };

    bool ok = true;
    for (const Size &size : sizes) {
        for (const auto &[name, scenario] : scenarios) {
            ok = shoot(QStringLiteral("%1/%2-%3.png").arg(directory, name, QLatin1String(size.name)),
                     size.size, scenario)
                && ok;
        }
    }

    // The onboarding and main screen in German, as a German locale shows them.
    QTranslator german;
    if (brivanta::BrivantaApp::installTranslator(
            application, german, QLocale(QLocale::German, QLocale::Germany))) {
        ok = shoot(QStringLiteral("%1/onboarding-first-phone-de.png").arg(directory),
                 ContentWindow::phoneSize, [](UiHarness &) {})
            && ok;
        ok = shoot(QStringLiteral("%1/main-enabled-phone-de.png").arg(directory), ContentWindow::phoneSize,
                 [](UiHarness &h) {
                     h.environment.variables["SIMULATOR_DEVICE_NAME"] = "Screenshots";
                     showWholeMainScreen(h);
                 })
            && ok;
        QCoreApplication::removeTranslator(&german);
    } else {
        std::fprintf(stderr, "no German translation compiled in\n");
        ok = false;
    }
    // On Linux a disabled card says why, and offers the switch.
    ok = shoot(
             QStringLiteral("%1/main-linux-not-enabled-phone.png").arg(directory), ContentWindow::phoneSize,
             [](UiHarness &h) {
                 h.systemSwitch.setReason(QStringLiteral("Not switched on."));
                 h.leaveOnboarding();
                 h.dnsSettingsManager.release(brivanta::testing::FakeDNSSettingsManager::Operation::Load);
                 h.runMainQueue();
             },
             true)
        && ok;
    return ok ? 0 : 1;
}
