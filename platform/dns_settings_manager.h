#pragma once

#include "platform/ne_dns_settings.h"
#include "platform/ne_on_demand_rule.h"
#include "platform/platform_error.h"

#include <functional>
#include <optional>
#include <vector>

namespace brivanta {

// The application's one DNS settings slot (the phone platform's shared NEDNSSettingsManager). The application
// entry makes exactly one and hands it to whoever needs it. Properties may be read from any thread.
class DNSSettingsManager
{
public:
    // Called once on a thread of the backend's choosing, never synchronously inside the starting call;
    // no value means success.
    using Completion = std::function<void(std::optional<PlatformError> error)>;

    virtual ~DNSSettingsManager() = default;

    virtual void loadFromPreferences(Completion completion) = 0;
    virtual void saveToPreferences(Completion completion) = 0;
    virtual void removeFromPreferences(Completion completion) = 0;

    virtual bool isEnabled() const = 0;
    virtual std::optional<NEDNSSettings> dnsSettings() const = 0;
    virtual void setDnsSettings(std::optional<NEDNSSettings> settings) = 0;
    virtual std::vector<NEOnDemandRule> onDemandRules() const = 0;
    virtual void setOnDemandRules(std::vector<NEOnDemandRule> rules) = 0;
};

} // namespace brivanta
