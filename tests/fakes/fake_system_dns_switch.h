#pragma once

#include "platform/system_dns_switch.h"

#include <mutex>
#include <vector>

namespace brivanta::testing {

// A scripted reason, and switch-on requests held until the test completes them.
class FakeSystemDnsSwitch final : public SystemDnsSwitch
{
public:
    QString statusReason() const override
    {
        std::lock_guard lock(m_mutex);
        return m_reason;
    }
    void setReason(QString reason)
    {
        std::lock_guard lock(m_mutex);
        m_reason = std::move(reason);
    }
    bool canSwitchOn() const override { return helperInstalled; }
    void switchOn(SwitchCompletion completion) override { pending.push_back(std::move(completion)); }
    void switchOff(SwitchCompletion completion) override { pending.push_back(std::move(completion)); }

    bool helperInstalled = true;
    std::vector<SwitchCompletion> pending;

private:
    mutable std::mutex m_mutex;
    QString m_reason;
};

} // namespace brivanta::testing
