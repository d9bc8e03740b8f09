#pragma once

#include "platform/dns_settings_manager.h"

#include <algorithm>
#include <deque>
#include <stdexcept>
#include <thread>

namespace brivanta::testing {

// Holds every completion until the test releases it, then runs it on a thread of its own as the phone
// platform and Linux do. The test's thread waits for that thread, so no state here is touched by two
// threads at once. An optional hook runs as each operation starts.
class FakeDNSSettingsManager final : public DNSSettingsManager
{
public:
    enum class Operation { Load, Save, Remove };

    std::function<void(Operation)> onStart;
    bool enabled = false;
    std::optional<NEDNSSettings> settings;
    std::vector<NEOnDemandRule> rules;
    std::vector<Operation> started; // in order

    void loadFromPreferences(Completion completion) override
    {
        start(Operation::Load, std::move(completion));
    }
    void saveToPreferences(Completion completion) override { start(Operation::Save, std::move(completion)); }
    void removeFromPreferences(Completion completion) override
    {
        start(Operation::Remove, std::move(completion));
    }

    bool isEnabled() const override { return enabled; }
    void setEnabled(bool value) { enabled = value; }
    std::optional<NEDNSSettings> dnsSettings() const override { return settings; }
    void setDnsSettings(std::optional<NEDNSSettings> value) override { settings = std::move(value); }
    std::vector<NEOnDemandRule> onDemandRules() const override { return rules; }
    void setOnDemandRules(std::vector<NEOnDemandRule> value) override { rules = std::move(value); }

    int count(Operation operation) const
    {
        return static_cast<int>(std::count(started.begin(), started.end(), operation));
    }

    // Completes the oldest pending call of that operation.
    void release(Operation operation, std::optional<PlatformError> error = std::nullopt)
    {
        auto it = std::find_if(m_pending.begin(), m_pending.end(),
            [&](const auto &pending) { return pending.first == operation; });
        if (it == m_pending.end())
            throw std::logic_error("no pending call of that operation");
        Completion completion = std::move(it->second);
        m_pending.erase(it);
        std::thread([&] { completion(std::move(error)); }).join();
    }

private:
    void start(Operation operation, Completion completion)
    {
        started.push_back(operation);
        m_pending.emplace_back(operation, std::move(completion));
        if (onStart)
            onStart(operation);
    }

    std::deque<std::pair<Operation, Completion>> m_pending;
};

} // namespace brivanta::testing
