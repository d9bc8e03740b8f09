#pragma once

#include "platform/main_queue.h"

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace brivanta::testing {

// A main queue the test drives by hand. Posting is thread-safe; running happens on the test's thread.
class ManualMainQueue final : public MainQueue
{
public:
    struct Delayed
    {
        std::chrono::milliseconds delay;
        std::function<void()> task;
    };

    void async(std::function<void()> task) override
    {
        std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }

    void asyncAfter(std::chrono::milliseconds delay, std::function<void()> task) override
    {
        std::lock_guard lock(m_mutex);
        m_delayed.push_back({delay, std::move(task)});
    }

    std::size_t pending() const
    {
        std::lock_guard lock(m_mutex);
        return m_tasks.size();
    }

    std::size_t pendingDelayed() const
    {
        std::lock_guard lock(m_mutex);
        return m_delayed.size();
    }

    std::vector<std::chrono::milliseconds> delays() const
    {
        std::lock_guard lock(m_mutex);
        std::vector<std::chrono::milliseconds> result;
        for (const auto &d : m_delayed)
            result.push_back(d.delay);
        return result;
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

    // Moves every delayed task to the queue as if its time had come, then runs everything.
    int fireDelayed()
    {
        std::deque<Delayed> due;
        {
            std::lock_guard lock(m_mutex);
            due.swap(m_delayed);
            for (auto &d : due)
                m_tasks.push_back(std::move(d.task));
        }
        return runAll();
    }

private:
    mutable std::mutex m_mutex;
    std::deque<std::function<void()>> m_tasks;
    std::deque<Delayed> m_delayed;
};

} // namespace brivanta::testing
