// Writes the README's screenshots over the UI tests' scripted services (no DNS slot touched, no probe
// sent). Run under a display (scripts/screenshots.sh uses Xvfb): brivanta_screenshots <output directory>

#include "ui/brivanta_app.h"
#include "ui_harness.h"

#include <QDir>
#include <QGuiApplication>
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
using Scenario = std::function<void(UiHarness &)>;

// The whole main screen, top to bottom: the window grows to the height of its content.
void showWholeMainScreen(UiHarness &harness, bool enabled)
{
    if (enabled)
        harness.environment.variables["SIMULATOR_DEVICE_NAME"] = "Screenshots";
    harness.leaveOnboarding();
    const qreal height = harness.property(QStringLiteral("mainScrollView"), "contentHeight").toReal();
    harness.window().resize(harness.window().width(), int(std::ceil(height)));
    harness.settle();
}

void showResults(UiHarness &harness)
{
    harness.leaveOnboarding();
    harness.runAdBlockTest();
    QTest::mouseMove(&harness.window(), QPoint(0, 0)); // no hover on the button
    harness.scrollTo(harness.item(QStringLiteral("testSection")));
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    brivanta::BrivantaApp::configure();
    const QString directory = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("docs/screenshots");
    QDir().mkpath(directory);
    bool ok = true;
    const auto shoot = [&](const QString &name, QSize size, const Scenario &scenario) {
        UiHarness harness;
        harness.withSystemSwitch = name.contains(QLatin1String("linux")); // says why, offers the switch
        harness.start(size);
        scenario(harness);
        QTest::qWait(900); // long enough for the pager's and the pill's animations to finish
        harness.settle();
        const QString path = QStringLiteral("%1/%2.png").arg(directory, name);
        const QImage image = harness.window().grabWindow();
        ok = !image.isNull() && image.save(path) && ok;
        std::printf("%s (%dx%d)\n", qPrintable(path), image.width(), image.height());
    };
    const Scenario mainEnabled = [](UiHarness &h) { showWholeMainScreen(h, true); };
    const std::pair<QString, Scenario> scenarios[] = { { "onboarding-first", [](UiHarness &) {} },
        { "onboarding-last",
            [](UiHarness &h) { h.item("onboardingPager")->setProperty("currentIndex", 8); } },
        { "main-disabled", [](UiHarness &h) { showWholeMainScreen(h, false); } },
        { "main-enabled", mainEnabled }, { "main-results", showResults },
        { "share-sheet", [](UiHarness &h) { h.leaveOnboarding(), h.click(h.item("shareButton")); } } };
    for (const QSize size : { ContentWindow::phoneSize, ContentWindow::tabletSize })
        for (const auto &[name, scenario] : scenarios)
            shoot(name + (size == ContentWindow::phoneSize ? "-phone" : "-tablet"), size, scenario);

    // The onboarding and main screen in German, as a German locale shows them.
    QTranslator german;
    ok &= brivanta::BrivantaApp::installTranslator(application, german, QLocale("de_DE"));
    shoot("onboarding-first-phone-de", ContentWindow::phoneSize, [](UiHarness &) {});
    shoot("main-enabled-phone-de", ContentWindow::phoneSize, mainEnabled);
    QCoreApplication::removeTranslator(&german);
    shoot("main-linux-not-enabled-phone", ContentWindow::phoneSize, [](UiHarness &h) {
        h.systemSwitch.setReason(QStringLiteral("Not switched on."));
        h.leaveOnboarding();
        h.load();
    });
    return ok ? 0 : 1;
}
