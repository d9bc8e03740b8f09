#pragma once

#include "platform/main_queue.h"

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>

namespace brivanta::testing {

// A main queue the test drives by hand. Posting is thread-safe; running happens on the test's thread.
class ManualMainQueue final : public MainQueue
{
public:
    void async(std::function<void()> task) override
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }

    // Nothing under test posts delayed work; a task that does is dropped.
    void asyncAfter(std::chrono::milliseconds, std::function<void()>) override { }

    std::size_t pending() const
    {
        std::lock_guard lock(m_mutex);
        return m_tasks.size();
    }

    // Runs the oldest task; false when there was none.
    bool runOne()
    {
        std::function<void()> task;
        {
            std::lock_guard lock(m_mutex);
            if (m_tasks.empty())
                return false;
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
        }
        task();
        return true;
    }

    // Runs tasks until the queue is empty, including tasks posted by the tasks; returns how many ran.
    int runAll()
    {
        int count = 0;
        while (runOne())
            ++count;
        return count;
    }

private:
    mutable std::mutex m_mutex;
    std::deque<std::function<void()>> m_tasks;
};

} // namespace brivanta::testing
