#pragma once

namespace brivanta {

class ApplicationServices;
class Preferences;

// The preferences key of the main screen's appearance count.
inline constexpr const char *launchCountKey = "launchCount";

// Counts one appearance of the main screen and, on every fifth, asks for the store's rating prompt.
// Main thread only; an overflow of the counter is fatal.
void incrementLaunchCount(Preferences &preferences, ApplicationServices &application);

} // namespace brivanta
