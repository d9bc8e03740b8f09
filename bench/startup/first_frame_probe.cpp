// Preloaded (LD_PRELOAD) into a Qt Quick program by the start-up bench: writes one line with the
// CLOCK_MONOTONIC time of the first frame swapped by the program's first QQuickWindow. The same probe
// goes into the application and into the bare window, so neither program needs a hook of its own and
// both are measured the same way.
//
// Lines, on standard error:
//   brivanta-probe app-constructed <ns>   the QCoreApplication exists (pre-routines run)
//   brivanta-probe window-seen <ns>       first event to a QQuickWindow: the QML scene has been created
//   brivanta-probe first-frame <ns>       first QQuickWindow::frameSwapped

#include <QCoreApplication>
#include <QEvent>
#include <QQuickWindow>

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

void report(const char *what)
{
    std::fprintf(stderr, "brivanta-probe %s %lld\n", what, monotonicNanoseconds());
    std::fflush(stderr);
}

// Finds the first Qt Quick window by the first event sent to it (always before it is exposed), then
// leaves the event path alone.
class FirstFrameProbe : public QObject {
public:
    bool eventFilter(QObject *receiver, QEvent *) override
    {
        if (auto *window = qobject_cast<QQuickWindow *>(receiver)) {
            QCoreApplication::instance()->removeEventFilter(this);
            report("window-seen");
            // frameSwapped comes from the render thread under the threaded render loop.
            QObject::connect(window, &QQuickWindow::frameSwapped, window, [] {
                static std::atomic_bool reported { false };
                if (!reported.exchange(true))
                    report("first-frame");
            }, Qt::DirectConnection);
        }
        return false;
    }
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
