#pragma once

#include <chrono>
#include <functional>

namespace brivanta {

// The main thread's task queue. Tasks run on the main thread in the order posted; both calls may be
// made from any thread.
class MainQueue
{
public:
    virtual ~MainQueue() = default;
    virtual void async(std::function<void()> task) = 0;
    virtual void asyncAfter(std::chrono::milliseconds delay, std::function<void()> task) = 0;
};

} // namespace brivanta
