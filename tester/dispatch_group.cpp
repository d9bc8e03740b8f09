#include "tester/dispatch_group.h"

#include "platform/main_queue.h"

#include <cstdlib>
#include <limits>
#include <utility>

namespace brivanta {

void DispatchGroup::enter()
{
    if (m_count == std::numeric_limits<qint64>::max())
        std::abort();
    ++m_count;
}

void DispatchGroup::leave()
{
    if (m_count == 0)
        std::abort();
    --m_count;
    submitIfDrained();
}

void DispatchGroup::notify(MainQueue &queue, std::function<void()> block)
{
    m_queue = &queue;
    m_block = std::move(block);
    submitIfDrained();
}

void DispatchGroup::submitIfDrained()
{
    if (m_count != 0 || !m_block)
        return;
    // Submitted, not run in place: it runs as a task of its own, after the task that drained the group.
    m_queue->async(std::exchange(m_block, nullptr));
}

} // namespace brivanta
