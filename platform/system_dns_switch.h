#pragma once

#include <QString>
#include <functional>
#include <optional>

namespace brivanta {

// On a desktop the app itself switches the saved DNS configuration on for the whole machine (on the phone
// the user does that in the system settings, and there is no such object). Backends make one and hand
// it to the main screen.
class SystemDnsSwitch
{
public:
    // Called once on a thread of the backend's choosing; an error is one sentence for the user.
    using SwitchCompletion = std::function<void(std::optional<QString> error)>;

    virtual ~SystemDnsSwitch() = default;

    // After a load of the DNS slot: why blocking is not on right now, in one short sentence; empty when
    // it is.
    [[nodiscard]] virtual QString statusReason() const = 0;
    // Whether switchOn can work on this machine at all (the privileged helper is installed).
    [[nodiscard]] virtual bool canSwitchOn() const = 0;
    // Asks for the user's authorisation, then switches the saved configuration on. A cancelled
    // authorisation changes nothing and is reported as such.
    virtual void switchOn(SwitchCompletion completion) = 0;
    // Asks for the user's authorisation, then puts the machine's DNS back as it was.
    virtual void switchOff(SwitchCompletion completion) = 0;
};

} // namespace brivanta
