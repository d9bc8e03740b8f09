#pragma once

#include "platform/dns_settings_manager.h"
#include "platform/linux/dns_slot_store.h"

#include <QThreadPool>
#include <mutex>

namespace brivanta {

// The application's DNS slot on Linux, kept in a DnsSlotStore. It behaves as the phone platform's
// manager does: load copies the stored slot into the properties; save judges the settings, answers an
// identical configuration with code 9 and never touches the on/off switch (that is brivanta-dns's job);
// remove deletes the stored configuration.
//
// Operations run one at a time, in the order started, on the manager's own worker thread; completions
// arrive there. The destructor waits for operations already started.
class LinuxDNSSettingsManager final : public DNSSettingsManager
{
public:
    explicit LinuxDNSSettingsManager(QString storePath = DnsSlotStore::defaultPath());
    ~LinuxDNSSettingsManager() override;

    void loadFromPreferences(Completion completion) override;
    void saveToPreferences(Completion completion) override;
    void removeFromPreferences(Completion completion) override;

    bool isEnabled() const override;
    std::optional<NEDNSSettings> dnsSettings() const override;
    void setDnsSettings(std::optional<NEDNSSettings> settings) override;
    std::vector<NEOnDemandRule> onDemandRules() const override;
    void setOnDemandRules(std::vector<NEOnDemandRule> rules) override;

    // What the platform accepts: DNS-over-HTTPS needs an https server URL with a host; DNS-over-TLS needs
    // a server name or at least one server address; server addresses must be IP addresses; on-demand
    // rules need a known interface type (0 to 3) and, when they have one, an http or https probe URL.
    // Empty when valid, else the error a save answers with ("NEConfigurationErrorDomain" code 1).
    static std::optional<PlatformError> judge(
        const std::optional<NEDNSSettings> &settings, const std::vector<NEOnDemandRule> &rules);

private:
    void run(std::function<std::optional<PlatformError>()> operation, Completion completion);
    std::optional<PlatformError> load();
    std::optional<PlatformError> save(const DnsSlot &wanted);
    std::optional<PlatformError> remove();

    DnsSlotStore m_store;
    mutable std::mutex m_mutex; // guards m_slot, the properties the application sets and reads
    DnsSlot m_slot;
    QThreadPool m_worker;
};

} // namespace brivanta
