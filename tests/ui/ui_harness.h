#pragma once

#include "dns/main_view_model.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_dns_settings_manager.h"
#include "fakes/fake_environment.h"
#include "fakes/fake_locale_info.h"
#include "fakes/fake_preferences.h"
#include "fakes/fake_system_dns_switch.h"
#include "fakes/manual_main_queue.h"
#include "fakes/recording_console.h"
#include "platform/qt/desktop_application_services.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "tester/fake_http_client.h"
#include "ui/content_window.h"
#include "ui/support_actions.h"

#include <QQuickItem>
#include <memory>

namespace brivanta::testing {

// The real QML module in a real ContentWindow, over scripted services the test completes by hand and the
// real desktop services (catch links with a URL handler).
class UiHarness
{
public:
    ManualMainQueue mainQueue;
    FakeEnvironment environment;
    RecordingConsole console;
    FakeDNSSettingsManager dnsSettingsManager;
    FakeHttpClient httpClient;
    FakePreferences preferences;
    FakeBundleInfo bundle;
    FakeLocaleInfo locale;
    DesktopDevice device { "ThinkPad X1", "Debian GNU/Linux", "12" };
    DesktopShareSheet shareSheet;
    DesktopRatingPrompt ratingPrompt { QUrl("https://apps.apple.com/app/id6742517203?action=write-review") };
    DesktopApplicationServices application { device, shareSheet, ratingPrompt };
    // Set before start: the status card explains and offers the switch, as on Linux.
    FakeSystemDnsSwitch systemSwitch;
    bool withSystemSwitch = false;

    ~UiHarness();

    // Shows the window at that size, on the onboarding or straight on the main screen.
    void start(QSize size = ContentWindow::phoneSize, bool onboarding = true);
    ContentWindow &window() { return *m_window; }
    // Lays out and renders once (a grab polishes every item), so that geometry is current.
    void settle()
    {
        QCoreApplication::processEvents();
        m_window->grabWindow();
    }
    // The item with that objectName (the first visible one, else the first); fails the test when none.
    QQuickItem *item(const QString &objectName);
    QList<QQuickItem *> items(const QString &objectName, QQuickItem *root = nullptr);
    QVariant property(const QString &name, const char *key = "text") { return item(name)->property(key); }
    void leaveOnboarding()
    {
        m_window->rootObject()->setProperty("showOnboarding", false);
        settle();
    }
    // scrollTo brings the item's top just below the screen's top (as near as it goes); click scrolls, then
    // clicks the item's centre.
    void scrollTo(QQuickItem *item);
    void click(QQuickItem *item);
    void runMainQueue()
    {
        mainQueue.runAll();
        settle();
    }
    // Completes the platform's load of the settings.
    void load()
    {
        dnsSettingsManager.release(FakeDNSSettingsManager::Operation::Load);
        runMainQueue();
    }
    // Runs the ad-block test; of its probes only outbrain.com and taboola.com answer: not blocked.
    static bool answers(const QString &host) { return host == "outbrain.com" || host == "taboola.com"; }
    void runAdBlockTest();

private:
    std::unique_ptr<MainViewModel> m_model;
    std::unique_ptr<SupportActions> m_supportActions;
    std::unique_ptr<ContentWindow> m_window;
};

} // namespace brivanta::testing
