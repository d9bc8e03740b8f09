#include "platform/qt/stdout_console.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace brivanta {

StdoutConsole::StdoutConsole(int fileDescriptor)
    : m_fd(fileDescriptor)
{ }

void StdoutConsole::printLine(const std::string &line)
{
    // Flush whatever stdio may hold so lines keep their order, then write the line with its newline in
    // as few writes as the descriptor allows, under the lock so that no other line cuts in.
    std::string text = line;
    text.push_back('\n');
    std::lock_guard lock(m_mutex);
    std::fflush(stdout);
    const char *data = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        const ssize_t written = ::write(m_fd, data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return; // a closed or broken output is not ours to report
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
}

} // namespace brivanta
