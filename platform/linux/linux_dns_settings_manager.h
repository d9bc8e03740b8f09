#pragma once

#include "platform/dns_settings_manager.h"
#include "platform/linux/dns_slot_store.h"
#include "platform/linux/system_dns_status.h"
#include "platform/system_dns_switch.h"

#include <QThreadPool>
#include <mutex>

namespace brivanta {

// The application's DNS slot on Linux, kept in a DnsSlotStore. It behaves as the phone platform's
// manager does: load copies the stored slot into the properties; save judges the settings, answers an
// identical configuration with code 9; remove deletes the stored configuration.
//
// isEnabled is the truth about the machine, found out by every load: the saved DNS-over-HTTPS endpoint is
// applied system-wide and a fresh lookup really went through brivanta-dohd to it (SystemDnsProbe). When
// it is not, statusReason says why. switchOn and switchOff run the privileged helper through pkexec.
//
// Operations run one at a time, in the order started, on the manager's own worker thread; completions
// arrive there. The destructor waits for operations already started.
class LinuxDNSSettingsManager final : public DNSSettingsManager, public SystemDnsSwitch
{
public:
    explicit LinuxDNSSettingsManager(QString storePath = DnsSlotStore::defaultPath(),
        std::shared_ptr<const SystemDnsProbe> probe = std::make_shared<SystemDnsProbe>());
    ~LinuxDNSSettingsManager() override;

    void loadFromPreferences(DNSSettingsManager::Completion completion) override;
    void saveToPreferences(DNSSettingsManager::Completion completion) override;
    void removeFromPreferences(DNSSettingsManager::Completion completion) override;

    bool isEnabled() const override;
    std::optional<NEDNSSettings> dnsSettings() const override;
    void setDnsSettings(std::optional<NEDNSSettings> settings) override;
    std::vector<NEOnDemandRule> onDemandRules() const override;
    void setOnDemandRules(std::vector<NEOnDemandRule> rules) override;

    QString statusReason() const override;
    bool canSwitchOn() const override;
    void switchOn(SwitchCompletion completion) override;
    void switchOff(SwitchCompletion completion) override;

    // The DNS-over-HTTPS endpoint of a slot, empty when it holds none.
    static QString savedEndpoint(const DnsSlot &slot);
    // The helper's command: pkexec and brivanta-dns-apply; builds with tests take
    // $BRIVANTA_DNS_APPLY_COMMAND instead when it is set.
    static QStringList helperCommand();
    // Runs the helper with these arguments (blocking); an error sentence, or nothing when it did it.
    static std::optional<QString> runHelper(const QStringList &arguments);

    // What the phone platform accepts: DNS-over-HTTPS needs an https server URL with a host; DNS-over-TLS
    // needs a server name or at least one server address; server addresses must be IP addresses; on-demand
    // rules need a known interface type (0 to 3) and, when they have one, an http or https probe URL.
    // Empty when valid, else the error a save answers with ("NEConfigurationErrorDomain" code 1).
    static std::optional<PlatformError> judge(
        const std::optional<NEDNSSettings> &settings, const std::vector<NEOnDemandRule> &rules);

private:
    void run(
        std::function<std::optional<PlatformError>()> operation, DNSSettingsManager::Completion completion);
    std::optional<PlatformError> load();
    std::optional<PlatformError> save(const DnsSlot &wanted);
    std::optional<PlatformError> remove();

    DnsSlotStore m_store;
    std::shared_ptr<const SystemDnsProbe> m_probe;
    mutable std::mutex m_mutex; // guards m_slot, m_enabled and m_reason
    DnsSlot m_slot;
    bool m_enabled = false;
    QString m_reason;
    QThreadPool m_worker;
};

} // namespace brivanta
