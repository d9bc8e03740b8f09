#include "ui/brivanta_app.h"

#include "brivanta_build_config.h"
#include "dns/main_view_model.h"
#include "platform/linux/linux_dns_settings_manager.h"
#include "platform/linux/machine_info.h"
#include "platform/qt/application_bundle_info.h"
#include "platform/qt/desktop_application_services.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/desktop_rating_prompt.h"
#include "platform/qt/desktop_share_sheet.h"
#include "platform/qt/process_environment.h"
#include "platform/qt/qt_http_client.h"
#include "platform/qt/qt_locale_info.h"
#include "platform/qt/qt_main_queue.h"
#include "platform/qt/scene_graph_backend.h"
#include "platform/qt/settings_preferences.h"
#include "platform/qt/stdout_console.h"
#include "support/launch_counter.h"
#include "support/store_links.h"
#include "ui/content_window.h"
#include "ui/support_actions.h"

#include <QFont>
#include <QGuiApplication>
#include <QLocale>
#include <QTranslator>

namespace brivanta {

struct BrivantaApp::Parts
{
    explicit Parts(QGuiApplication &application);

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

void BrivantaApp::configure()
{
    QCoreApplication::setApplicationName(QString::fromUtf8(build::appName));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(build::appVersion));
    QCoreApplication::setOrganizationName(QString::fromUtf8(build::appName));
    QCoreApplication::setOrganizationDomain(QStringLiteral("brivanta.app"));
    QGuiApplication::setDesktopFileName(QStringLiteral("brivanta"));

    // Inter (Debian's fonts-inter) is the closest open relative of the phone platform's text face; without
    // it the system's sans-serif stands in.
    QFont font = QGuiApplication::font();
    font.setFamilies({ QStringLiteral("Inter"), font.family() });
    QGuiApplication::setFont(font);

    chooseSceneGraphBackend();
}

bool BrivantaApp::installTranslator(
    QCoreApplication &application, QTranslator &translator, const QLocale &locale)
{
    if (!translator.load(locale, QStringLiteral("brivanta"), QStringLiteral("_"), QStringLiteral(":/i18n")))
        return false;
    return application.installTranslator(&translator);
}

BrivantaApp::Parts::Parts(QGuiApplication &application)
    : m_mainQueue(&application)
    , m_device(linuxMachineModel(), linuxOsRelease().name, linuxOsRelease().version)
    , m_ratingPrompt(QUrl(appReviewLink()))
    , m_application(m_device, m_shareSheet, m_ratingPrompt)
    , m_mainViewModel({
          .manager = m_dnsSettingsManager,
          .mainQueue = m_mainQueue,
          .environment = m_environment,
          .console = m_console,
          .incrementLaunchCount = [this] { incrementLaunchCount(m_preferences, m_application); },
          .makeTester = [this] { return std::make_unique<AdBlockTester>(m_httpClient, m_mainQueue); },
          .systemSwitch = &m_dnsSettingsManager,
      })
    , m_supportActions({
          .bundle = m_bundle,
          .device = m_device,
          .locale = m_locale,
          .application = m_application,
      })
{
    installTranslator(application, m_translator, QLocale::system());
    m_window = std::make_unique<ContentWindow>(ViewServices::Objects {
        .mainViewModel = &m_mainViewModel,
        .device = &m_device,
        .supportActions = &m_supportActions,
        .shareSheet = &m_shareSheet,
        .ratingPrompt = &m_ratingPrompt,
    });
    m_application.setWindow(m_window.get());
}

BrivantaApp::BrivantaApp(QGuiApplication &application)
    : m_parts(std::make_unique<Parts>(application))
{ }

BrivantaApp::~BrivantaApp() = default;

bool BrivantaApp::hasViews() const
{
    return m_parts->m_window->status() != QQuickView::Error;
}

void BrivantaApp::show()
{
    m_parts->m_window->show();
}

void BrivantaApp::bringForward()
{
    QQuickView &window = *m_parts->m_window;
    if (window.windowState() & Qt::WindowMinimized)
        window.showNormal();
    window.raise();
    window.requestActivate();
}

} // namespace brivanta
