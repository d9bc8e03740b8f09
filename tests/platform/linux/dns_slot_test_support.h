#pragma once

#include "platform/dns_settings_manager.h"

#include <QFile>
#include <QTemporaryDir>
#include <future>
#include <gtest/gtest.h>
#include <thread>

namespace brivanta::testing {

// How one completion arrived.
struct Outcome
{
    std::optional<PlatformError> error;
    bool onCallingThread = true;
};

// Starts an operation and waits for its completion (the backend's worker runs it; nothing to drive).
inline Outcome finish(const std::function<void(DNSSettingsManager::Completion)> &start)
{
    std::promise<Outcome> promise;
    const auto caller = std::this_thread::get_id();
    start([&](std::optional<PlatformError> error) {
        promise.set_value(Outcome { std::move(error), std::this_thread::get_id() == caller });
    });
    return promise.get_future().get();
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

private:
    QTemporaryDir m_dir;
};

} // namespace brivanta::testing
