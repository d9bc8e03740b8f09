// Preloaded (LD_PRELOAD) into a Qt Quick program by the start-up bench: writes one line with the
// CLOCK_MONOTONIC time of the first frame swapped by the program's first QQuickWindow. The same probe
// goes into the application and into the bare window, so neither program needs a hook of its own and
// both are measured the same way.
//
// Lines, on standard error:
//   brivanta-probe app-constructed <ns>   the QCoreApplication exists (pre-routines run)
//   brivanta-probe window-exposed <ns>    the window is first exposed: the scene is loaded and shown, its
//                                         first frame not yet rendered
//   brivanta-probe graphics-api <name>    what the scene graph draws with (software, opengl, …), just
//                                         before the first-frame line
//   brivanta-probe first-frame <ns>       first QQuickWindow::frameSwapped

#include <QCoreApplication>
#include <QEvent>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <atomic>
#include <cstdio>
#include <ctime>

namespace {

long long monotonicNanoseconds()
{
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1'000'000'000LL + now.tv_nsec;
}

void report(const char *what, long long nanoseconds = monotonicNanoseconds())
{
    std::fprintf(stderr, "brivanta-probe %s %lld\n", what, nanoseconds);
    std::fflush(stderr);
}

const char *graphicsApiName(QSGRendererInterface::GraphicsApi api)
{
    switch (api) {
    case QSGRendererInterface::Software:
        return "software";
    case QSGRendererInterface::OpenGL:
        return "opengl";
    case QSGRendererInterface::Vulkan:
        return "vulkan";
    case QSGRendererInterface::OpenVG:
        return "openvg";
    default:
        return "other";
    }
}

// Hooks the first Qt Quick window at the first event sent to it, then watches the event path only until
// that window is exposed.
class FirstFrameProbe : public QObject
{
public:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        auto *window = qobject_cast<QQuickWindow *>(receiver);
        if (!window || (m_window && window != m_window))
            return false;
        if (!m_window) {
            m_window = window;
            // frameSwapped comes from the render thread under the threaded render loop.
            QObject::connect(
                window, &QQuickWindow::frameSwapped, window,
                [window] {
                    static std::atomic_bool reported { false };
                    if (reported.exchange(true))
                        return;
                    const long long swapped = monotonicNanoseconds();
                    const QSGRendererInterface *renderer = window->rendererInterface();
                    std::fprintf(stderr, "brivanta-probe graphics-api %s\n",
                        renderer ? graphicsApiName(renderer->graphicsApi()) : "none");
                    report("first-frame", swapped);
                },
                Qt::DirectConnection);
        }
        if (event->type() == QEvent::Expose && window->isExposed()) {
            report("window-exposed");
            QCoreApplication::instance()->removeEventFilter(this);
        }
        return false;
    }

private:
    QQuickWindow *m_window = nullptr;
};

void installProbe()
{
    report("app-constructed");
    auto *app = QCoreApplication::instance();
    auto *probe = new FirstFrameProbe;
    probe->setParent(app);
    app->installEventFilter(probe);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(installProbe)
