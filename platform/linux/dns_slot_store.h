#pragma once

#include "platform/ne_dns_settings.h"
#include "platform/ne_on_demand_rule.h"
#include "platform/platform_error.h"

#include <QJsonObject>
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

// The DNS slot's JSON store: one file, mode 0600 in a 0700 directory the user owns. A write goes to a
// temporary file that is written whole, synced and only then renamed over the old one, so a full disk or
// a crash leaves the previous configuration as it was. Every read-modify-write holds a kernel lock
// (flock) on a file next to it, so two running copies of the application never lose each other's updates
// and a crashed holder never blocks the next one. A store that cannot be read or parsed is reported, never
// overwritten; keys it does not know are kept on rewrite. Reads are capped and refuse anything that is not
// a regular file (links, FIFOs, devices). Thread-safe in the sense that separate instances (or threads) on
// one path serialise through the lock.
class DnsSlotStore
{
public:
    explicit DnsSlotStore(QString path);

    // $XDG_CONFIG_HOME/brivanta/dns-slot.json (~/.config/brivanta/dns-slot.json by default). A relative
    // XDG_CONFIG_HOME counts as unset; without an absolute HOME the home folder of the account is used.
    static QString defaultPath();

    // Larger files are refused rather than read.
    static constexpr qint64 maxFileSize = 1024 * 1024;

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
    std::optional<PlatformError> checkDirectory(bool create) const;
    std::optional<PlatformError> load(DnsSlot &slot, QJsonObject &document) const;
    std::optional<PlatformError> write(const DnsSlot &slot, QJsonObject document) const;
    std::optional<PlatformError> remove() const;

    QString m_path;
};

} // namespace brivanta
