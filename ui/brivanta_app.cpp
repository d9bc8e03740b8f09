#include "ui/brivanta_app.h"

#include "brivanta_build_config.h"
#include "platform/linux/machine_info.h"
#include "platform/qt/scene_graph_backend.h"
#include "support/launch_counter.h"
#include "support/store_links.h"
#include "ui/content_window.h"

#include <QFont>
#include <QGuiApplication>
#include <QLocale>

namespace brivanta {

void BrivantaApp::configure()
{
    QCoreApplication::setApplicationName(QString::fromUtf8(build::appName));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(build::appVersion));
    QCoreApplication::setOrganizationName(QString::fromUtf8(build::appName));
    QCoreApplication::setOrganizationDomain(QStringLiteral("brivanta.app"));
    QGuiApplication::setDesktopFileName(QStringLiteral("brivanta"));

    // Inter (Debian's fonts-inter) is the closest open relative of the platform's text face; without
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

BrivantaApp::BrivantaApp(QGuiApplication &application)
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

BrivantaApp::~BrivantaApp() = default;

void BrivantaApp::show()
{
    m_window->show();
}

void BrivantaApp::bringForward()
{
    if (m_window->windowState() & Qt::WindowMinimized)
        m_window->showNormal();
    m_window->raise();
    m_window->requestActivate();
}

} // namespace brivanta
