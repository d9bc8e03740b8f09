#pragma once

#include "platform/console.h"

#include <mutex>
#include <vector>

namespace brivanta::testing {

// Keeps every line, in order; lines may come from any thread.
class RecordingConsole final : public Console
{
public:
    void printLine(const std::string &line) override
    {
        std::lock_guard lock(m_mutex);
        m_lines.push_back(line);
    }

    std::vector<std::string> lines() const
    {
        std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

} // namespace brivanta::testing
