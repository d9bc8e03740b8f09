#include "ui/content_window.h"

#include "brivanta_build_config.h"
#include "platform/qt/desktop_device.h"
#include "ui/symbol_image_provider.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQmlEngine>
#include <QScreen>

namespace brivanta {

ContentWindow::ContentWindow(const ViewServices::Objects &objects, QWindow *parent)
    : QQuickView(parent)
{
    ViewServices::attach(*engine(), objects);
    // The module lives at the resource root (qrc:/Brivanta); Qt 6.4 does not look there by itself.
    engine()->addImportPath(QStringLiteral("qrc:/"));
    engine()->addImageProvider(QLatin1String(SymbolImageProvider::providerId), new SymbolImageProvider);
    // Qt.quit() (Ctrl+Q) ends the application.
    connect(engine(), &QQmlEngine::quit, QCoreApplication::instance(), &QCoreApplication::quit,
        Qt::QueuedConnection);
    setTitle(QString::fromUtf8(build::appName));
    // The system background behind the screens, in the dark appearance their white texts are made for.
    setColor(Qt::black);
    setResizeMode(QQuickView::SizeRootObjectToView);
    setIcon(QIcon(QStringLiteral(":/icons/brivanta.svg")));
    setMinimumSize(minimumSize);
    const QScreen *screen = QGuiApplication::primaryScreen();
    resize(screen ? initialSize(screen->availableGeometry()) : phoneSize);

    if (DesktopDevice *device = objects.device) {
        device->setWindowWidth(width());
        connect(this, &QWindow::widthChanged, device, [device](int width) { device->setWindowWidth(width); });
    }
    setSource(QUrl(QStringLiteral("qrc:/Brivanta/ContentView.qml")));
}

QSize ContentWindow::initialSize(const QRect &available)
{
    const int height
        = std::max(minimumSize.height(), std::min(phoneSize.height(), available.height() - frameAllowance));
    const int width = std::max(minimumSize.width(), height * phoneSize.width() / phoneSize.height());
    return { std::min(width, std::max(minimumSize.width(), available.width())), height };
}

} // namespace brivanta
