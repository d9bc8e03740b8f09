#pragma once

namespace brivanta {

// Stops the process at once for a state the code cannot be in. The reason goes to standard error through
// Qt's message handler (never to the console lines the app prints), so a crash report says what broke.
[[noreturn]] void fatal(const char *reason);

} // namespace brivanta
