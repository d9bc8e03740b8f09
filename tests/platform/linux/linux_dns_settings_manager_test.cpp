#include "dns_slot_test_support.h"
#include "platform/linux/dns_slot_store.h"

#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace brivanta::testing {
namespace {

const NEDNSSettings goodHttps = NEDNSOverHTTPSSettings { {}, QUrl("https://dns.example.test/x") };

using LinuxDNSSettingsManagerTest = SlotDirectory;

TEST_F(LinuxDNSSettingsManagerTest, SavedConfigurationLoadsBackInAnotherManagerPrivatelyUntilRemoved)
{
    const std::vector<NEOnDemandRule> rules {
        { NEOnDemandRule::Kind::Connect, 2, QStringList {}, { "home.lan" }, {}, QUrl("https://probe.test/") },
        { NEOnDemandRule::Kind::Ignore, 3, std::nullopt, {}, { "10.0.0.1" }, std::nullopt },
    };
    const NEDNSSettings settings
        = NEDNSOverHTTPSSettings { { "9.9.9.9", "::1" }, QUrl("https://dns.example.test/c7e091") };
    ASSERT_EQ(saveSlot(settings, rules), std::nullopt);
    // Owner only: 0600 and 0700 in Qt's permission flags.
    EXPECT_EQ(QFile::permissions(storePath()).toInt(), 0x6600);
    EXPECT_EQ(QFile::permissions(QFileInfo(storePath()).absolutePath()).toInt(), 0x7700);

    LinuxDNSSettingsManager other(storePath());
    ASSERT_EQ(load(other), std::nullopt);
    EXPECT_EQ(other.dnsSettings(), settings);
    EXPECT_EQ(other.onDemandRules(), rules);

    EXPECT_EQ(remove(other), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(storePath()));
    EXPECT_EQ(other.dnsSettings(), std::nullopt);
    other.setDnsSettings(goodHttps);
    EXPECT_EQ(load(other), std::nullopt); // no file: nothing saved
    EXPECT_EQ(other.dnsSettings(), std::nullopt);
}

TEST_F(LinuxDNSSettingsManagerTest, InvalidSettingsAreRefusedWithCode1AndNothingIsWritten)
{
    const auto rule = [](qint64 interfaceType, std::optional<QUrl> probe) {
        return NEOnDemandRule { NEOnDemandRule::Kind::Connect, interfaceType, std::nullopt, {}, {}, probe };
    };
    const char *const needsUrl = "DNS-over-HTTPS needs an https server URL with a host name.";
    const struct
    {
        std::optional<NEDNSSettings> settings;
        std::vector<NEOnDemandRule> rules;
        const char *description;
    } cases[] = {
        { std::nullopt, {}, "it has no DNS settings." },
        { NEDNSOverHTTPSSettings { {}, std::nullopt }, {}, needsUrl },
        { NEDNSOverTLSSettings { {}, QString() }, {},
            "DNS-over-TLS needs a server name or at least one server address." },
        { NEDNSOverTLSSettings { { "dns.test" }, "dns.test" }, {}, "“dns.test” is not an IP address." },
        { goodHttps, { rule(4, std::nullopt) }, "an on-demand rule has the unknown interface type 4." },
        { goodHttps, { rule(0, QUrl("ftp://probe.test/")) },
            "an on-demand rule's probe URL must be an http or https URL." },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.description);
        const Result error = saveSlot(c.settings, c.rules);
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code, 1);
        EXPECT_EQ(error->localizedDescription,
            "The DNS configuration is invalid: " + QString::fromUtf8(c.description));
        EXPECT_FALSE(QFileInfo::exists(storePath()));
    }
}

TEST_F(LinuxDNSSettingsManagerTest, ADamagedStoreIsReportedByEveryOperationAndLeftUntouched)
{
    const char *const cases[] = {
        R"({"format": 1, "enabled": tru)",
        "[]",
        R"({"format": 2, "enabled": false})",
        R"({"format": 1, "dnsSettings": {"protocol": "dnsOverQUIC", "servers": []}})",
        R"({"format": 1, "onDemandRules": [{"action": "connect"}]})",
        // Values that could not be written back as they are.
        R"({"format": 1, "dnsSettings": {"protocol": "dnsOverHTTPS", "servers": [], )"
        R"("serverURL": "https://a b/"}})",
        R"({"format": 1, "onDemandRules": [{"action": "connect", "interfaceTypeMatch": 1e300, )"
        R"("dnsSearchDomainMatch": [], "dnsServerAddressMatch": []}]})",
    };
    ASSERT_TRUE(QDir().mkpath(QFileInfo(storePath()).absolutePath()));
    for (const QByteArray bytes : cases) {
        SCOPED_TRACE(bytes.toStdString());
        writeFile(storePath(), bytes);
        LinuxDNSSettingsManager manager(storePath());
        manager.setDnsSettings(goodHttps);
        for (const Result &error : { load(manager), save(manager), remove(manager) }) {
            ASSERT_TRUE(error.has_value());
            EXPECT_EQ(error->code, 5);
            EXPECT_TRUE(error->localizedDescription.startsWith(
                "The saved DNS configuration (" + storePath() + ") is damaged ("))
                << error->localizedDescription.toStdString();
            EXPECT_TRUE(error->localizedDescription.endsWith("); fix or delete the file."));
        }
        EXPECT_EQ(fileBytes(storePath()), bytes);
        EXPECT_EQ(manager.dnsSettings(), goodHttps);
    }
}

TEST_F(LinuxDNSSettingsManagerTest, AStoreThatCannotBeUsedSafelyNamesItsCauseAndKeepsTheSavedFile)
{
    using Paths = std::array<const char *, 3>; // slot, folder, lock
    // Each row turns a saved slot into one way the store can fail. <slot>, <folder>, <lock>: their paths;
    // <read>, <unsafe>, <unusable>: the start of a failure to read the slot, trust its folder, use its lock.
    const struct
    {
        bool moveAside; // the saved file goes to <slot>.kept first, so that something else can take its place
        int (*arrange)(const Paths &); // 0, or -1 and errno
        const char *description;
    } cases[] = {
        { false, [](const Paths &) { return ::setenv("BRIVANTA_DNS_SLOT_SYNC_ERRNO", "5", 1); },
            "The DNS configuration could not be written to <slot>: Input/output error." },
        { true, [](const Paths &p) { return ::symlink("dns-slot.json.kept", p[0]); },
            "<read> it is a symbolic link, which is not followed." },
        { true, [](const Paths &p) { return ::mkfifo(p[0], 0600); },
            "<read> it is a FIFO, not a regular file." },
        { false, [](const Paths &p) { return ::truncate(p[0], DnsSlotStore::maxFileSize + 1); },
            "<read> it is too large (more than 1048576 bytes)." },
        { false, [](const Paths &p) { return ::chown(p[1], 65534, 65534); },
            "<unsafe> it belongs to user 65534, not to this user (0)." },
        { false, [](const Paths &p) { return ::chmod(p[1], 0770); },
            "<unsafe> other users can write to it (mode 0770); run “chmod go-w” on it." },
        { false, [](const Paths &p) { return ::chown(p[2], 65534, 65534); },
            "<unusable> it belongs to user 65534, not to this user (0)." },
    };
    const QString folder = QFileInfo(storePath()).absolutePath();
    const QString lock = storePath() + ".lock";
    const std::pair<const char *, QString> expansions[]
        = { { "<read>", "The saved DNS configuration (<slot>) could not be read:" },
              { "<unsafe>", "The folder of the DNS configuration (<folder>) is not safe to use:" },
              { "<unusable>", "The lock file of the DNS configuration (<lock>) cannot be used:" },
              { "<slot>", storePath() }, { "<folder>", folder }, { "<lock>", lock } };
    const QByteArray paths[]
        = { QFile::encodeName(storePath()), QFile::encodeName(folder), QFile::encodeName(lock) };
    QStringList needRoot;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.description);
        const auto restore = qScopeGuard([] { qunsetenv("BRIVANTA_DNS_SLOT_SYNC_ERRNO"); });
        ASSERT_TRUE(QDir(folder).removeRecursively());
        ASSERT_EQ(saveSlot(goodHttps), std::nullopt);
        const QString kept = c.moveAside ? storePath() + ".kept" : storePath();
        ASSERT_TRUE(!c.moveAside || QFile::rename(storePath(), kept));
        if (c.arrange({ paths[0].constData(), paths[1].constData(), paths[2].constData() })) {
            ASSERT_EQ(errno, EPERM) << "cannot arrange the case: " << std::strerror(errno);
            needRoot << c.description;
            continue;
        }
        const QStringList entries = QDir(folder).entryList(QDir::AllEntries | QDir::System);
        const QByteArray saved = fileBytes(kept);
        ASSERT_TRUE(saved.contains("dns.example.test"));

        const auto error = DnsSlotStore(storePath()).update([](DnsSlot &slot) {
            slot.dnsSettings = httpsSettings("https://other.test/x");
            return DnsSlotStore::Change::Write;
        });
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code, 5);
        QString expected = QString::fromUtf8(c.description);
        for (const auto &[from, to] : expansions)
            expected.replace(from, to);
        EXPECT_EQ(error->localizedDescription.toStdString(), expected.toStdString());
        // Nothing replaced, nothing left behind.
        EXPECT_EQ(fileBytes(kept), saved);
        EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::System), entries);
    }
    if (!needRoot.isEmpty())
        GTEST_SKIP() << "needs root: " << needRoot.join("; ").toStdString();
}

} // namespace
} // namespace brivanta::testing
