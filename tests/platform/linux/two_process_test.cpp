#include "dns_slot_test_support.h"
#include "platform/linux/dns_slot_store.h"
#include "platform/linux/linux_dns_settings_manager.h"

#include <QProcess>

namespace brivanta::testing {
namespace {

using TwoProcessTest = SlotDirectory;

// One process saves configurations through the manager while another flips the switch; each checks
// before every step that its own last update survived the other's read-modify-write.
TEST_F(TwoProcessTest, SavingAndTogglingConcurrentlyLoseNoUpdate)
{
    constexpr int saves = 100;
    constexpr int toggles = 101; // odd: the last toggle switches on
    {
        LinuxDNSSettingsManager manager(storePath());
        manager.setDnsSettings(httpsSettings(QStringLiteral("https://resolver.test/0")));
        ASSERT_EQ(finish([&](auto done) { manager.saveToPreferences(std::move(done)); }).error, std::nullopt);
    }

    QProcess saver;
    QProcess toggler;
    saver.start(QStringLiteral(DNS_SLOT_WORKER_BINARY),
        { storePath(), QStringLiteral("save"), QString::number(saves) });
    toggler.start(QStringLiteral(DNS_SLOT_WORKER_BINARY),
        { storePath(), QStringLiteral("toggle"), QString::number(toggles) });
    ASSERT_TRUE(saver.waitForFinished(60000));
    ASSERT_TRUE(toggler.waitForFinished(60000));
    EXPECT_EQ(saver.exitCode(), 0) << saver.readAllStandardError().toStdString();
    EXPECT_EQ(toggler.exitCode(), 0) << toggler.readAllStandardError().toStdString();

    DnsSlot slot;
    ASSERT_EQ(DnsSlotStore(storePath()).read(slot), std::nullopt);
    EXPECT_EQ(slot.dnsSettings, httpsSettings(QStringLiteral("https://resolver.test/100")));
    EXPECT_TRUE(slot.enabled);
}

} // namespace
} // namespace brivanta::testing
