#include "ui/instruction_steps.h"

#include "model/checked_int.h"
#include "model/fatal.h"

#include <array>

namespace brivanta {

namespace {

// Step 0 names the add button; the last step names what the user picks or presses to switch the
// configuration on, which must stay in step with the screen and the system.
#ifdef Q_OS_LINUX
// On Linux the app switches the machine's DNS itself (the status card's button, or brivanta-dns).
const std::array<const char *, 4> steps {
    "Press 'Add Network Settings' above.",
    "Press 'Switch On' on the status card and confirm with your password.",
    "The status turns 'Enabled' once every lookup of this computer goes through Brivanta.",
    "If it stays 'Disabled', the line under it says why; 'brivanta-dns status' in a terminal tells more.",
};
#else
const std::array<const char *, 4> steps {
    "Tap 'Add Network Settings' above.",
    "Open Settings on your device.",
    "Go to General > VPN & Device Management.",
    "Select DNS and choose 'Brivanta'.",
};
#endif

} // namespace

int InstructionSteps::count()
{
    return static_cast<int>(steps.size());
}

QString InstructionSteps::text(int index)
{
    if (index < 0 || index >= count())
        fatal("instruction step index out of range");
    return QString::fromUtf8(steps[static_cast<size_t>(index)]);
}

QString InstructionSteps::symbol(int index)
{
    return QString::number(checkedAdd(index, 1)) + QStringLiteral(".circle.fill");
}

} // namespace brivanta
