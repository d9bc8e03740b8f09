#pragma once

#include "dns/main_view_model.h"
#include "platform/linux/linux_dns_settings_manager.h"
#include "platform/qt/application_bundle_info.h"
#include "platform/qt/desktop_application_services.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "platform/qt/process_environment.h"
#include "platform/qt/qt_http_client.h"
#include "platform/qt/qt_locale_info.h"
#include "platform/qt/qt_main_queue.h"
#include "platform/qt/settings_preferences.h"
#include "platform/qt/stdout_console.h"
#include "ui/support_actions.h"

#include <QTranslator>
#include <memory>

class QCoreApplication;
class QGuiApplication;
class QLocale;

namespace brivanta {

class ContentWindow;

// The application: picks the real backends, once, hands them to the logic, and shows ContentView in
// its one window.
class BrivantaApp
{
public:
    // Application and organisation names and the version, from the build, and the text face. The names
    // are the bundle's name and version and name the preferences store, so this comes first. Also picks
    // the software scene graph where OpenGL would run on the CPU.
    static void configure();
    // Installs the compiled translation for the locale's languages; false when there is none (English).
    static bool installTranslator(
        QCoreApplication &application, QTranslator &translator, const QLocale &locale);

    explicit BrivantaApp(QGuiApplication &application);
    ~BrivantaApp();

    void show();
    // Shows the window again if it was minimised, raises it and asks for the focus.
    void bringForward();

private:
    QTranslator m_translator;
    QtMainQueue m_mainQueue;
    ProcessEnvironment m_environment;
    StdoutConsole m_console;
    LinuxDNSSettingsManager m_dnsSettingsManager;
    QtHttpClient m_httpClient;
    SettingsPreferences m_preferences;
    ApplicationBundleInfo m_bundle;
    QtLocaleInfo m_locale;
    DesktopDevice m_device;
    DesktopShareSheet m_shareSheet;
    DesktopRatingPrompt m_ratingPrompt;
    DesktopApplicationServices m_application;
    MainViewModel m_mainViewModel;
    SupportActions m_supportActions;
    std::unique_ptr<ContentWindow> m_window;
};

} // namespace brivanta
