#pragma once

#include "platform/linux/linux_dns_settings_manager.h"

#include <QFile>
#include <QTemporaryDir>
#include <future>
#include <gtest/gtest.h>

namespace brivanta::testing {

using Result = std::optional<PlatformError>;

// A fresh configuration folder per test: the slot lives at <dir>/brivanta/dns-slot.json.
class SlotDirectory : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }
    QString configHome() const { return m_dir.path(); }
    QString storePath() const { return m_dir.path() + "/brivanta/dns-slot.json"; }

    // Runs one of the manager's operations and waits for its completion (its worker runs it).
    using M = DNSSettingsManager;
    static Result finish(M &m, auto operation)
    {
        std::promise<Result> promise;
        (m.*operation)([&](Result error) { promise.set_value(std::move(error)); });
        return promise.get_future().get();
    }
    static Result load(M &m) { return finish(m, &M::loadFromPreferences); }
    static Result save(M &m) { return finish(m, &M::saveToPreferences); }
    static Result remove(M &m) { return finish(m, &M::removeFromPreferences); }

    // Saves through a manager of its own, as an earlier run of the app would have.
    Result saveSlot(std::optional<NEDNSSettings> settings, std::vector<NEOnDemandRule> rules = {}) const
    {
        LinuxDNSSettingsManager manager(storePath());
        manager.setDnsSettings(settings);
        manager.setOnDemandRules(std::move(rules));
        return save(manager);
    }

    static NEDNSSettings httpsSettings(QString url) { return NEDNSOverHTTPSSettings { {}, QUrl(url) }; }
    static QByteArray fileBytes(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void writeFile(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

private:
    QTemporaryDir m_dir;
};

} // namespace brivanta::testing
