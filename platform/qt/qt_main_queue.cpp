#include "platform/qt/qt_main_queue.h"

#include <QMetaObject>
#include <QObject>
#include <QTimer>

namespace brivanta {

QtMainQueue::QtMainQueue(QObject *mainThreadContext)
    : m_context(mainThreadContext)
{ }

void QtMainQueue::async(std::function<void()> task)
{
    QMetaObject::invokeMethod(m_context.data(), std::move(task), Qt::QueuedConnection);
}

void QtMainQueue::asyncAfter(std::chrono::milliseconds delay, std::function<void()> task)
{
    // The timer must be started on the main thread, whatever thread asks.
    QObject *context = m_context.data();
    QMetaObject::invokeMethod(
        context,
        [context, delay, task = std::move(task)]() mutable {
            QTimer::singleShot(delay, context, std::move(task));
        },
        Qt::QueuedConnection);
}

} // namespace brivanta
