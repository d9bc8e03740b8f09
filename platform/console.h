#pragma once

#include <string>

namespace brivanta {

// Diagnostics: each call writes one whole line to standard output, newline-terminated and flushed,
// never interleaved with a line written from another thread. Callable from any thread.
class Console
{
public:
    virtual ~Console() = default;
    virtual void printLine(const std::string &line) = 0;
};

} // namespace brivanta
