#pragma once

#include <QtGlobal>
#include <functional>

namespace brivanta {

class MainQueue;

// A dispatch group reduced to what a test run needs: a count of work in flight and one notification,
// submitted to a queue once the count is back at zero (at once if it already is). Main thread only.
class DispatchGroup
{
public:
    void enter();
    // Leaving more often than entering is fatal.
    void leave();
    void notify(MainQueue &queue, std::function<void()> block);

private:
    void submitIfDrained();

    qint64 m_count = 0;
    MainQueue *m_queue = nullptr;
    std::function<void()> m_block;
};

} // namespace brivanta
