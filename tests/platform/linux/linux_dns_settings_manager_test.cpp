#include "dns_slot_test_support.h"
#include "platform/linux/dns_slot_store.h"
#include "platform/linux/linux_dns_settings_manager.h"

#include <QDir>
#include <QFileInfo>
#include <sys/stat.h>

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

TEST_F(LinuxDNSSettingsManagerTest, NoStoreYetLoadsAsNothingSavedOnAWorkerThread)
{
    LinuxDNSSettingsManager manager(storePath());
    const Outcome outcome = load(manager);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_FALSE(outcome.onCallingThread);
    EXPECT_EQ(manager.dnsSettings(), std::nullopt);
    EXPECT_FALSE(manager.isEnabled());
    EXPECT_FALSE(QFileInfo::exists(storePath()));
}

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

TEST_F(LinuxDNSSettingsManagerTest, AnOlderFileWithItsOnSwitchStillLoadsButTheMachineDecides)
{
    ASSERT_EQ(saveSettings(httpsSettings(QStringLiteral("https://a.test/1"))).error, std::nullopt);
    QByteArray old = fileBytes(storePath());
    ASSERT_FALSE(old.contains("enabled"));
    writeFile(storePath(), old.replace("{", "{\"enabled\": true,"));

    SystemDnsPaths nothingApplied;
    nothingApplied.stateFile = configHome() + QStringLiteral("/no-state.json");
    LinuxDNSSettingsManager manager(storePath(), std::make_shared<SystemDnsProbe>(nothingApplied));
    ASSERT_EQ(load(manager).error, std::nullopt);
    EXPECT_EQ(manager.dnsSettings(), httpsSettings(QStringLiteral("https://a.test/1")));
    EXPECT_FALSE(manager.isEnabled());
    EXPECT_EQ(manager.statusReason(), QStringLiteral("Not switched on."));
}

TEST_F(LinuxDNSSettingsManagerTest, RemoveDeletesTheConfiguration)
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
    EXPECT_EQ(outcome.error->localizedDescription, QString::fromUtf8(GetParam().description));
    EXPECT_FALSE(QFileInfo::exists(storePath()));
}

NEOnDemandRule ruleWith(qint64 interfaceType, std::optional<QUrl> probe)
{
    return NEOnDemandRule { NEOnDemandRule::Kind::Connect, interfaceType, std::nullopt, {}, {},
        std::move(probe) };
}

INSTANTIATE_TEST_SUITE_P(Platform, InvalidSettingsTest,
    ::testing::Values(InvalidCase { "NoSettings", std::nullopt, {},
                          "The DNS configuration is invalid: it has no DNS settings." },
        InvalidCase { "HttpsWithoutUrl", NEDNSOverHTTPSSettings { {}, std::nullopt }, {},
            "The DNS configuration is invalid: DNS-over-HTTPS needs an https server URL with a host name." },
        InvalidCase { "PlainHttpUrl",
            NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("http://dns.test/x")) }, {},
            "The DNS configuration is invalid: DNS-over-HTTPS needs an https server URL with a host name." },
        InvalidCase { "UrlWithoutHost", NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("https:/x")) }, {},
            "The DNS configuration is invalid: DNS-over-HTTPS needs an https server URL with a host name." },
        InvalidCase { "TlsWithNothing", NEDNSOverTLSSettings { {}, QString() }, {},
            "The DNS configuration is invalid: DNS-over-TLS needs a server name or at least one server "
            "address." },
        InvalidCase { "ServerNotAnAddress",
            NEDNSOverTLSSettings { { QStringLiteral("dns.test") }, QStringLiteral("dns.test") }, {},
            "The DNS configuration is invalid: “dns.test” is not an IP address." },
        InvalidCase { "UnknownInterfaceType", goodHttps, { ruleWith(4, std::nullopt) },
            "The DNS configuration is invalid: an on-demand rule has the unknown interface type 4." },
        InvalidCase { "FtpProbe", goodHttps, { ruleWith(0, QUrl(QStringLiteral("ftp://probe.test/"))) },
            "The DNS configuration is invalid: an on-demand rule's probe URL must be an http or https "
            "URL." }),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(LinuxDNSSettingsManagerTest, TlsWithOnlyAServerNameIsAccepted)
{
    EXPECT_EQ(
        saveSettings(NEDNSOverTLSSettings { {}, QStringLiteral("dns.example.test") }).error, std::nullopt);
}

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
        "{\"format\": 1, \"enabled\": false, \"onDemandRules\": [{\"action\": \"connect\"}]}"));

TEST_F(LinuxDNSSettingsManagerTest, UnreadableStoreIsAnErrorNotACrash)
{
    ASSERT_TRUE(QDir().mkpath(storePath())); // a folder where the file should be cannot be read as one
    LinuxDNSSettingsManager manager(storePath());
    const Outcome outcome = load(manager);
    ASSERT_TRUE(outcome.error.has_value());
    EXPECT_EQ(outcome.error->code, 5);
    EXPECT_TRUE(outcome.error->localizedDescription.startsWith(QStringLiteral("The saved DNS configuration (")
        + storePath() + QStringLiteral(") could not be read: ")))
        << outcome.error->localizedDescription.toStdString();
}

} // namespace
} // namespace brivanta::testing
