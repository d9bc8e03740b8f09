#pragma once

#include "platform/main_queue.h"

#include <QPointer>

class QObject;

namespace brivanta {

// Posts to the thread of a context object (the application object: the main thread).
class QtMainQueue final : public MainQueue
{
public:
    explicit QtMainQueue(QObject *mainThreadContext);

    void async(std::function<void()> task) override;
    void asyncAfter(std::chrono::milliseconds delay, std::function<void()> task) override;

private:
    QPointer<QObject> m_context;
};

} // namespace brivanta
