#pragma once

#include "platform/linux/linux_dns_settings_manager.h"

#include <QFile>
#include <QTemporaryDir>
#include <future>
#include <gtest/gtest.h>

namespace brivanta::testing {

using Result = std::optional<PlatformError>;

// Starts an operation and waits for its completion (the backend's worker runs it; nothing to drive).
inline Result finish(const std::function<void(DNSSettingsManager::Completion)> &start)
{
    std::promise<Result> promise;
    start([&](Result error) { promise.set_value(std::move(error)); });
    return promise.get_future().get();
}
inline Result load(DNSSettingsManager &m)
{
    return finish([&](auto done) { m.loadFromPreferences(done); });
}
inline Result save(DNSSettingsManager &m)
{
    return finish([&](auto done) { m.saveToPreferences(done); });
}
inline Result remove(DNSSettingsManager &m)
{
    return finish([&](auto done) { m.removeFromPreferences(done); });
}

inline NEDNSSettings httpsSettings(const QString &url)
{
    return NEDNSOverHTTPSSettings { {}, QUrl(url) };
}

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

// A fresh configuration folder per test: the slot lives at <dir>/brivanta/dns-slot.json.
class SlotDirectory : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }
    QString configHome() const { return m_dir.path(); }
    QString storePath() const { return m_dir.path() + QStringLiteral("/brivanta/dns-slot.json"); }
    // Saves through a manager of its own, as an earlier run of the app would have.
    Result saveSlot(const NEDNSSettings &settings, std::vector<NEOnDemandRule> rules = {}) const
    {
        LinuxDNSSettingsManager manager(storePath());
        manager.setDnsSettings(settings);
        manager.setOnDemandRules(std::move(rules));
        return save(manager);
    }

private:
    QTemporaryDir m_dir;
};

} // namespace brivanta::testing
