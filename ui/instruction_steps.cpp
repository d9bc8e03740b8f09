#include "ui/instruction_steps.h"

#include <array>
#include <cstdlib>

namespace brivanta {

namespace {

// Step 0 names the add button and step 3 the app's display name, under which the system lists its
// DNS configuration; both must stay in step with those.
const std::array<const char *, 4> steps {
    "Tap 'Add Network Settings' above.",
    "Open Settings on your device.",
    "Go to General > VPN & Device Management.",
    "Select DNS and choose 'Brivanta'.",
};

} // namespace

int InstructionSteps::count()
{
    return static_cast<int>(steps.size());
}

QString InstructionSteps::text(int index)
{
    if (index < 0 || index >= count())
        std::abort();
    return QString::fromUtf8(steps[static_cast<size_t>(index)]);
}

QString InstructionSteps::symbol(int index)
{
    int number = 0;
    if (__builtin_add_overflow(index, 1, &number))
        std::abort();
    return QString::number(number) + QStringLiteral(".circle.fill");
}

} // namespace brivanta
