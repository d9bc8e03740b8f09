#include "tester/dispatch_group.h"

#include "model/checked_int.h"
#include "model/fatal.h"
#include "platform/main_queue.h"

#include <utility>

namespace brivanta {

void DispatchGroup::enter()
{
    m_count = checkedAdd(m_count, qint64 { 1 });
}

void DispatchGroup::leave()
{
    if (m_count == 0)
        fatal("DispatchGroup::leave() without a matching enter()");
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
