#pragma once

#include "platform/console.h"

#include <mutex>

namespace brivanta {

// Standard output, one line per call.
class StdoutConsole final : public Console
{
public:
    explicit StdoutConsole(int fileDescriptor = 1);
    void printLine(const std::string &line) override;

private:
    int m_fd;
    std::mutex m_mutex;
};

} // namespace brivanta
