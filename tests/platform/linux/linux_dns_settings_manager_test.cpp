#include "dns_slot_test_support.h"
#include "platform/linux/dns_slot_store.h"
#include "platform/linux/linux_dns_settings_manager.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace brivanta::testing {
namespace {

using Completion = DNSSettingsManager::Completion;

const NEDNSSettings goodHttps
    = NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("https://dns.example.test/x")) };

class LinuxDNSSettingsManagerTest : public SlotDirectory
{
protected:
    Outcome load(LinuxDNSSettingsManager &manager)
    {
        return finish([&](Completion done) { manager.loadFromPreferences(std::move(done)); });
    }
    Outcome save(LinuxDNSSettingsManager &manager)
    {
        return finish([&](Completion done) { manager.saveToPreferences(std::move(done)); });
    }
    Outcome remove(LinuxDNSSettingsManager &manager)
    {
        return finish([&](Completion done) { manager.removeFromPreferences(std::move(done)); });
    }
    Outcome saveSettings(const NEDNSSettings &settings, std::vector<NEOnDemandRule> rules = {})
    {
        LinuxDNSSettingsManager manager(storePath());
        manager.setDnsSettings(settings);
        manager.setOnDemandRules(std::move(rules));
        return save(manager);
    }
    static unsigned mode(const QString &path)
    {
        struct stat info
        {
        };
        return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
    }
    ino_t inode() const
    {
        struct stat info
        {
        };
        return ::stat(QFile::encodeName(storePath()).constData(), &info) == 0 ? info.st_ino : 0;
    }
};

TEST_F(LinuxDNSSettingsManagerTest, SavedConfigurationLoadsBackInAnotherManagerPrivately)
{
    NEOnDemandRule wifi { NEOnDemandRule::Kind::Connect, 2, QStringList {}, { QStringLiteral("home.lan") },
        {}, QUrl(QStringLiteral("https://probe.test/")) };
    NEOnDemandRule cellular { NEOnDemandRule::Kind::Ignore, 3, std::nullopt, {},
        { QStringLiteral("10.0.0.1") }, std::nullopt };
    const NEDNSSettings settings
        = NEDNSOverHTTPSSettings { { QStringLiteral("9.9.9.9"), QStringLiteral("::1") },
              QUrl(QStringLiteral("https://dns.example.test/c7e091")) };

    const Outcome saved = saveSettings(settings, { wifi, cellular });
    EXPECT_EQ(saved.error, std::nullopt);
    EXPECT_FALSE(saved.onCallingThread);

    LinuxDNSSettingsManager other(storePath());
    ASSERT_EQ(load(other).error, std::nullopt);
    EXPECT_EQ(other.dnsSettings(), settings);
    EXPECT_EQ(other.onDemandRules(), (std::vector<NEOnDemandRule> { wifi, cellular }));
    EXPECT_FALSE(other.isEnabled());

    EXPECT_EQ(mode(storePath()), 0600u);
    EXPECT_EQ(mode(QFileInfo(storePath()).absolutePath()), 0700u);
}

// Every launch after the first saves the same configuration again: that must succeed, writing nothing.
TEST_F(LinuxDNSSettingsManagerTest, SavingWhatIsStoredSucceedsAndWritesNothing)
{
    const NEDNSSettings settings = httpsSettings(QStringLiteral("https://dns.example.test/c7e091"));
    ASSERT_EQ(saveSettings(settings).error, std::nullopt);
    const ino_t before = inode();
    ASSERT_NE(before, 0u);

    // A second manager: judged against the store, not against what one manager remembers.
    EXPECT_EQ(saveSettings(settings).error, std::nullopt);
    EXPECT_EQ(inode(), before);

    EXPECT_EQ(
        saveSettings(httpsSettings(QStringLiteral("https://dns.example.test/other"))).error, std::nullopt);
    EXPECT_NE(inode(), before);
}

TEST_F(LinuxDNSSettingsManagerTest, SaveStoresWhatWasSetWhenItWasCalledEvenIfALoadRunsFirst)
{
    LinuxDNSSettingsManager manager(storePath());
    manager.setDnsSettings(goodHttps);
    std::promise<void> loaded;
    manager.loadFromPreferences([&](std::optional<PlatformError>) { loaded.set_value(); });
    const Outcome saved = save(manager);
    loaded.get_future().get();
    EXPECT_EQ(saved.error, std::nullopt);

    DnsSlot slot;
    ASSERT_EQ(DnsSlotStore(storePath()).read(slot), std::nullopt);
    EXPECT_EQ(slot.dnsSettings, goodHttps);
}

TEST_F(LinuxDNSSettingsManagerTest, KeysOfOtherVersionsLoadAndAreKeptButTheMachineDecidesTheSwitch)
{
    ASSERT_EQ(saveSettings(httpsSettings(QStringLiteral("https://a.test/1"))).error, std::nullopt);
    QByteArray old = fileBytes(storePath());
    ASSERT_FALSE(old.contains("enabled"));
    writeFile(storePath(), old.replace(0, 1, "{\"enabled\": true, \"future\": [1],"));

    SystemDnsPaths nothingApplied;
    nothingApplied.stateFile = configHome() + QStringLiteral("/no-state.json");
    LinuxDNSSettingsManager manager(storePath(), std::make_shared<SystemDnsProbe>(nothingApplied));
    ASSERT_EQ(load(manager).error, std::nullopt);
    EXPECT_EQ(manager.dnsSettings(), httpsSettings(QStringLiteral("https://a.test/1")));
    EXPECT_FALSE(manager.isEnabled());
    EXPECT_EQ(manager.statusReason(), QStringLiteral("Not switched on."));

    ASSERT_EQ(saveSettings(httpsSettings(QStringLiteral("https://b.test/2"))).error, std::nullopt);
    const QJsonObject rewritten = QJsonDocument::fromJson(fileBytes(storePath())).object();
    EXPECT_EQ(rewritten.value(QStringLiteral("future")), QJsonArray { 1 });
    EXPECT_EQ(rewritten.value(QStringLiteral("enabled")), true);
}

TEST_F(LinuxDNSSettingsManagerTest, RemoveDeletesTheConfigurationAndNoFileLoadsAsNothingSaved)
{
    ASSERT_EQ(saveSettings(httpsSettings(QStringLiteral("https://a.test/1"))).error, std::nullopt);

    LinuxDNSSettingsManager manager(storePath());
    ASSERT_EQ(load(manager).error, std::nullopt);
    const Outcome removed = remove(manager);
    EXPECT_EQ(removed.error, std::nullopt);
    EXPECT_FALSE(removed.onCallingThread);
    EXPECT_FALSE(QFileInfo::exists(storePath()));
    EXPECT_FALSE(manager.isEnabled());
    EXPECT_EQ(manager.dnsSettings(), std::nullopt);
    manager.setDnsSettings(goodHttps);
    EXPECT_EQ(load(manager).error, std::nullopt);
    EXPECT_EQ(manager.dnsSettings(), std::nullopt);
}

struct InvalidCase
{
    const char *name;
    std::optional<NEDNSSettings> settings;
    std::vector<NEOnDemandRule> rules;
    const char *description;
    friend void PrintTo(const InvalidCase &c, std::ostream *os) { *os << c.name; }
};

class InvalidSettingsTest : public LinuxDNSSettingsManagerTest,
                            public ::testing::WithParamInterface<InvalidCase>
{
};

TEST_P(InvalidSettingsTest, AreRefusedWithCode1AndNothingIsWritten)
{
    LinuxDNSSettingsManager manager(storePath());
    manager.setDnsSettings(GetParam().settings);
    manager.setOnDemandRules(GetParam().rules);
    const Outcome outcome = save(manager);
    ASSERT_TRUE(outcome.error.has_value());
    EXPECT_EQ(outcome.error->domain, QStringLiteral("NEConfigurationErrorDomain"));
    EXPECT_EQ(outcome.error->code, 1);
    EXPECT_EQ(outcome.error->localizedDescription,
        QStringLiteral("The DNS configuration is invalid: ") + QString::fromUtf8(GetParam().description));
    EXPECT_FALSE(QFileInfo::exists(storePath()));
}

NEOnDemandRule ruleWith(qint64 interfaceType, std::optional<QUrl> probe)
{
    return NEOnDemandRule { NEOnDemandRule::Kind::Connect, interfaceType, std::nullopt, {}, {},
        std::move(probe) };
}

INSTANTIATE_TEST_SUITE_P(Platform, InvalidSettingsTest,
    ::testing::Values(InvalidCase { "NoSettings", std::nullopt, {}, "it has no DNS settings." },
        InvalidCase { "HttpsWithoutUrl", NEDNSOverHTTPSSettings { {}, std::nullopt }, {},
            "DNS-over-HTTPS needs an https server URL with a host name." },
        InvalidCase { "PlainHttpUrl",
            NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("http://dns.test/x")) }, {},
            "DNS-over-HTTPS needs an https server URL with a host name." },
        InvalidCase { "UrlWithoutHost", NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("https:/x")) }, {},
            "DNS-over-HTTPS needs an https server URL with a host name." },
        InvalidCase { "TlsWithNothing", NEDNSOverTLSSettings { {}, QString() }, {},
            "DNS-over-TLS needs a server name or at least one server address." },
        InvalidCase { "ServerNotAnAddress",
            NEDNSOverTLSSettings { { QStringLiteral("dns.test") }, QStringLiteral("dns.test") }, {},
            "“dns.test” is not an IP address." },
        InvalidCase { "UnknownInterfaceType", goodHttps, { ruleWith(4, std::nullopt) },
            "an on-demand rule has the unknown interface type 4." },
        InvalidCase { "FtpProbe", goodHttps, { ruleWith(0, QUrl(QStringLiteral("ftp://probe.test/"))) },
            "an on-demand rule's probe URL must be an http or https URL." }),
    [](const auto &info) { return std::string(info.param.name); });

class CorruptStoreTest : public LinuxDNSSettingsManagerTest,
                         public ::testing::WithParamInterface<const char *>
{
};

TEST_P(CorruptStoreTest, IsReportedByEveryOperationAndLeftUntouched)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(storePath()).absolutePath()));
    const QByteArray bytes(GetParam());
    writeFile(storePath(), bytes);

    LinuxDNSSettingsManager manager(storePath());
    manager.setDnsSettings(goodHttps);
    for (const Outcome &outcome : { load(manager), save(manager), remove(manager) }) {
        ASSERT_TRUE(outcome.error.has_value());
        EXPECT_EQ(outcome.error->domain, QStringLiteral("NEConfigurationErrorDomain"));
        EXPECT_EQ(outcome.error->code, 5);
        EXPECT_TRUE(outcome.error->localizedDescription.startsWith(
            QStringLiteral("The saved DNS configuration (") + storePath() + QStringLiteral(") is damaged (")))
            << outcome.error->localizedDescription.toStdString();
        EXPECT_TRUE(
            outcome.error->localizedDescription.endsWith(QStringLiteral("); fix or delete the file.")));
    }
    EXPECT_EQ(fileBytes(storePath()), bytes);
    EXPECT_EQ(manager.dnsSettings(), goodHttps);
}

INSTANTIATE_TEST_SUITE_P(Store, CorruptStoreTest,
    ::testing::Values("{\"format\": 1, \"enabled\": tru", "[]", "{\"format\": 2, \"enabled\": false}",
        "{\"enabled\": false}",
        "{\"format\": 1, \"enabled\": false, \"dnsSettings\": {\"protocol\": \"dnsOverQUIC\", \"servers\": "
        "[]}}",
        "{\"format\": 1, \"enabled\": false, \"onDemandRules\": [{\"action\": \"connect\"}]}",
        // Values that could not be written back as they are.
        "{\"format\": 1, \"dnsSettings\": {\"protocol\": \"dnsOverHTTPS\", \"servers\": [], \"serverURL\": "
        "\"https://a b/\"}}",
        "{\"format\": 1, \"onDemandRules\": [{\"action\": \"connect\", \"interfaceTypeMatch\": 2.5, "
        "\"dnsSearchDomainMatch\": [], \"dnsServerAddressMatch\": []}]}",
        "{\"format\": 1, \"onDemandRules\": [{\"action\": \"connect\", \"interfaceTypeMatch\": 1e300, "
        "\"dnsSearchDomainMatch\": [], \"dnsServerAddressMatch\": []}]}"));

// Each row turns a saved slot into one way the store can fail.
struct StoreFailureCase
{
    const char *name;
    bool moveAside; // the saved file goes to <slot>.kept first, so that something else can take its place
    int (*arrange)(const char *slot, const char *folder, const char *lock); // 0, or -1 and errno
    const char *description; // <slot>, <folder> and <lock> stand for their paths
    friend void PrintTo(const StoreFailureCase &c, std::ostream *os) { *os << c.name; }
};

class StoreFailureTest : public LinuxDNSSettingsManagerTest,
                         public ::testing::WithParamInterface<StoreFailureCase>
{
protected:
    void TearDown() override
    {
        ::setrlimit(RLIMIT_FSIZE, &m_fileSizeLimit);
        qunsetenv("BRIVANTA_DNS_SLOT_SYNC_ERRNO");
    }
    rlimit m_fileSizeLimit = [] {
        rlimit limit {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        return limit;
    }();
};

TEST_P(StoreFailureTest, NamesItsCauseAndKeepsTheSavedFile)
{
    ASSERT_EQ(saveSettings(goodHttps).error, std::nullopt);
    const QString folder = QFileInfo(storePath()).absolutePath();
    const QString lock = storePath() + QStringLiteral(".lock");
    const QString kept = GetParam().moveAside ? storePath() + QStringLiteral(".kept") : storePath();
    ASSERT_TRUE(QFile::rename(storePath(), kept) || !GetParam().moveAside);
    std::signal(SIGXFSZ, SIG_IGN); // a write past RLIMIT_FSIZE fails instead of ending the process
    if (GetParam().arrange(QFile::encodeName(storePath()).constData(), QFile::encodeName(folder).constData(),
            QFile::encodeName(lock).constData())
        != 0) {
        if (errno == EPERM)
            GTEST_SKIP() << "needs root to arrange this case";
        FAIL() << "cannot arrange the case: " << std::strerror(errno);
    }
    const QStringList entries = QDir(folder).entryList(QDir::AllEntries | QDir::System);
    const QByteArray saved = fileBytes(kept);
    ASSERT_TRUE(saved.contains("dns.example.test"));

    const auto error = DnsSlotStore(storePath()).update([](DnsSlot &slot) {
        slot.dnsSettings = httpsSettings(QStringLiteral("https://other.test/x"));
        return DnsSlotStore::Change::Write;
    });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code, 5);
    EXPECT_EQ(error->localizedDescription.toStdString(),
        QString::fromUtf8(GetParam().description)
            .replace(QStringLiteral("<slot>"), storePath())
            .replace(QStringLiteral("<folder>"), folder)
            .replace(QStringLiteral("<lock>"), lock)
            .toStdString());
    // Nothing replaced, nothing left behind.
    EXPECT_EQ(fileBytes(kept), saved);
    EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::System), entries);
}

// Gives a path to user 65534; only root may.
int giveAway(const char *path)
{
    if (::geteuid() == 0)
        return ::chown(path, 65534, 65534);
    errno = EPERM;
    return -1;
}

INSTANTIATE_TEST_SUITE_P(Store, StoreFailureTest,
    ::testing::Values(
        // A write that stops short after 64 bytes and then fails, as on a nearly full disk.
        StoreFailureCase { "ShortWrite", false,
            [](const char *, const char *, const char *) {
                const rlimit limit { 64, RLIM_INFINITY };
                return ::setrlimit(RLIMIT_FSIZE, &limit);
            },
            "The DNS configuration could not be written to <slot>: File too large." },
        StoreFailureCase { "SyncFails", false,
            [](const char *, const char *, const char *) {
                return ::setenv("BRIVANTA_DNS_SLOT_SYNC_ERRNO", "5", 1);
            },
            "The DNS configuration could not be written to <slot>: Input/output error." },
        StoreFailureCase { "SymbolicLink", true,
            [](const char *slot, const char *, const char *) {
                return ::symlink("dns-slot.json.kept", slot);
            },
            "The saved DNS configuration (<slot>) could not be read: it is a symbolic link, which is not "
            "followed." },
        StoreFailureCase { "Fifo", true,
            [](const char *slot, const char *, const char *) { return ::mkfifo(slot, 0600); },
            "The saved DNS configuration (<slot>) could not be read: it is a FIFO, not a regular file." },
        StoreFailureCase { "Device", true, // the null device; making one needs root
            [](const char *slot, const char *, const char *) {
                return ::mknod(slot, S_IFCHR | 0600, makedev(1, 3));
            },
            "The saved DNS configuration (<slot>) could not be read: it is a device, not a regular file." },
        StoreFailureCase { "Folder", true,
            [](const char *slot, const char *, const char *) { return ::mkdir(slot, 0700); },
            "The saved DNS configuration (<slot>) could not be read: it is a folder, not a file." },
        StoreFailureCase { "TooLarge", false,
            [](const char *slot, const char *, const char *) {
                return ::truncate(slot, DnsSlotStore::maxFileSize + 1);
            },
            "The saved DNS configuration (<slot>) could not be read: it is too large (more than 1048576 "
            "bytes)." },
        StoreFailureCase { "FolderOfAnotherUser", false,
            [](const char *, const char *folder, const char *) { return giveAway(folder); },
            "The folder of the DNS configuration (<folder>) is not safe to use: it belongs to user 65534, "
            "not "
            "to this user (0)." },
        StoreFailureCase { "FolderWritableByOthers", false,
            [](const char *, const char *folder, const char *) { return ::chmod(folder, 0770); },
            "The folder of the DNS configuration (<folder>) is not safe to use: other users can write to it "
            "(mode 0770); run “chmod go-w” on it." },
        StoreFailureCase { "LockIsAFolder", false,
            [](const char *, const char *, const char *lock) {
                return ::unlink(lock) == 0 ? ::mkdir(lock, 0700) : -1;
            },
            "The lock file of the DNS configuration (<lock>) cannot be used: Is a directory." },
        StoreFailureCase { "LockIsALink", false,
            [](const char *, const char *, const char *lock) {
                return ::unlink(lock) == 0 ? ::symlink("x", lock) : -1;
            },
            "The lock file of the DNS configuration (<lock>) cannot be used: it is a symbolic link, which is "
            "not followed." },
        StoreFailureCase { "LockOfAnotherUser", false,
            [](const char *, const char *, const char *lock) { return giveAway(lock); },
            "The lock file of the DNS configuration (<lock>) cannot be used: it belongs to user 65534, not "
            "to "
            "this user (0)." }),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
} // namespace brivanta::testing
