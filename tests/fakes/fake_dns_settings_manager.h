#pragma once

#include "platform/dns_settings_manager.h"

#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace brivanta::testing {

// Holds every completion until the test releases it, on the test's thread or on a thread of its own as
// the phone platform and Linux do. Records which thread started each operation; an optional hook runs as each
// starts.
class FakeDNSSettingsManager final : public DNSSettingsManager
{
public:
    enum class Operation { Load, Save, Remove };
    enum class On { ThisThread, OtherThread };

    std::function<void(Operation)> onStart;

    void loadFromPreferences(Completion completion) override
    {
        start(Operation::Load, std::move(completion));
    }
    void saveToPreferences(Completion completion) override { start(Operation::Save, std::move(completion)); }
    void removeFromPreferences(Completion completion) override
    {
        start(Operation::Remove, std::move(completion));
    }

    bool isEnabled() const override
    {
        std::lock_guard lock(m_mutex);
        return m_enabled;
    }
    void setEnabled(bool enabled)
    {
        std::lock_guard lock(m_mutex);
        m_enabled = enabled;
    }
    std::optional<NEDNSSettings> dnsSettings() const override
    {
        std::lock_guard lock(m_mutex);
        return m_settings;
    }
    void setDnsSettings(std::optional<NEDNSSettings> settings) override
    {
        std::lock_guard lock(m_mutex);
        m_settings = std::move(settings);
    }
    std::vector<NEOnDemandRule> onDemandRules() const override
    {
        std::lock_guard lock(m_mutex);
        return m_rules;
    }
    void setOnDemandRules(std::vector<NEOnDemandRule> rules) override
    {
        std::lock_guard lock(m_mutex);
        m_rules = std::move(rules);
        m_rulesSet = true;
    }
    bool onDemandRulesWereSet() const
    {
        std::lock_guard lock(m_mutex);
        return m_rulesSet;
    }

    // Operations started so far, in order, with the thread that started each.
    struct Started
    {
        Operation operation;
        std::thread::id thread;
    };
    std::vector<Started> started() const
    {
        std::lock_guard lock(m_mutex);
        return m_started;
    }
    int count(Operation operation) const
    {
        int n = 0;
        for (const Started &s : started())
            n += s.operation == operation ? 1 : 0;
        return n;
    }

    // Completes the oldest pending call of that operation.
    void release(
        Operation operation, std::optional<PlatformError> error = std::nullopt, On on = On::OtherThread)
    {
        Completion completion;
        {
            std::lock_guard lock(m_mutex);
            auto it = m_pending.begin();
            while (it != m_pending.end() && it->first != operation)
                ++it;
            if (it == m_pending.end())
                throw std::logic_error("no pending call of that operation");
            completion = std::move(it->second);
            m_pending.erase(it);
        }
        if (on == On::ThisThread) {
            completion(std::move(error));
            return;
        }
        std::thread platform([&] { completion(std::move(error)); });
        platform.join();
    }

private:
    void start(Operation operation, Completion completion)
    {
        {
            std::lock_guard lock(m_mutex);
            m_started.push_back({ operation, std::this_thread::get_id() });
            m_pending.emplace_back(operation, std::move(completion));
        }
        if (onStart)
            onStart(operation);
    }

    mutable std::mutex m_mutex;
    bool m_enabled = false;
    std::optional<NEDNSSettings> m_settings;
    std::vector<NEOnDemandRule> m_rules;
    bool m_rulesSet = false;
    std::vector<Started> m_started;
    std::deque<std::pair<Operation, Completion>> m_pending;
};

} // namespace brivanta::testing
