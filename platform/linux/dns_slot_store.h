#pragma once

#include "platform/ne_dns_settings.h"
#include "platform/ne_on_demand_rule.h"
#include "platform/platform_error.h"

#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace brivanta {

// Codes of "NEConfigurationErrorDomain" that the Linux DNS slot answers with. 1 and 9 are the phone
// platform's own; 5 follows its read/write-failed code for a store that cannot be read, parsed or written.
namespace neConfigurationError {
inline constexpr qint64 invalid = 1;
inline constexpr qint64 readWriteFailed = 5;
inline constexpr qint64 unchanged = 9;
} // namespace neConfigurationError

// What the application's one DNS slot holds on this OS.
struct DnsSlot
{
    std::optional<NEDNSSettings> dnsSettings;
    std::vector<NEOnDemandRule> onDemandRules;

    friend bool operator==(const DnsSlot &, const DnsSlot &) = default;
};

// The DNS slot's JSON store: one file, replaced atomically, mode 0600 in a 0700 directory. Every
// read-modify-write holds a lock file next to it, so two running copies of the application never lose
// each other's updates. A store that cannot be read or parsed is reported, never overwritten. Thread-safe in
// the sense that separate instances (or threads) on one path serialise through the lock file.
class DnsSlotStore
{
public:
    explicit DnsSlotStore(QString path);

    // $XDG_CONFIG_HOME/brivanta/dns-slot.json (~/.config/brivanta/dns-slot.json by default).
    static QString defaultPath();

    const QString &path() const { return m_path; }

    // No file yet is an empty slot, not an error.
    std::optional<PlatformError> read(DnsSlot &slot) const;

    enum class Change { Keep, Write, Delete };
    // Reads the slot under the lock, lets change edit it and decide, then writes or deletes the file
    // before releasing the lock. A store that cannot be read is an error and change is not called.
    std::optional<PlatformError> update(const std::function<Change(DnsSlot &)> &change);

    // The JSON form of the saved settings and rules, as stored; equal texts mean equal configurations.
    static QByteArray configurationJson(const DnsSlot &slot);

private:
    PlatformError storeError(const QString &description) const;
    std::optional<PlatformError> ensureDirectory() const;
    std::optional<PlatformError> write(const DnsSlot &slot) const;

    QString m_path;
};

} // namespace brivanta
