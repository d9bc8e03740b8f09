#pragma once

#include <QString>

namespace brivanta {

// The device the app runs on. Main thread only; every value is read fresh on each call.
class Device
{
public:
    // The phone platform's raw idiom values; only the tablet test matters to the app.
    static constexpr int phoneIdiom = 0;
    static constexpr int tabletIdiom = 1;

    virtual ~Device() = default;
    virtual int userInterfaceIdiom() const = 0;
    // A human-readable model, e.g. "iPhone" or a PC's product name.
    virtual QString model() const = 0;
    // The operating system's name ("iOS", "Debian GNU/Linux") and version ("17.2", "12").
    virtual QString systemName() const = 0;
    virtual QString systemVersion() const = 0;
};

} // namespace brivanta
