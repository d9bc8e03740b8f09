#include "dns_slot_test_support.h"
#include "platform/linux/dns_slot_store.h"
#include "platform/linux/linux_dns_settings_manager.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace brivanta::testing {
namespace {

struct CommandRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

class BrivantaDnsCommandTest : public SlotDirectory
{
protected:
    CommandRun run(const QStringList &arguments)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome());
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(BRIVANTA_DNS_BINARY), arguments);
        EXPECT_TRUE(process.waitForFinished(30000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return CommandRun { process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    void saveBuiltInLike()
    {
        LinuxDNSSettingsManager manager(storePath());
        manager.setDnsSettings(httpsSettings(QStringLiteral("https://dns.example.test/c7e091")));
        ASSERT_EQ(finish([&](auto done) { manager.saveToPreferences(std::move(done)); }).error, std::nullopt);
    }

    bool loadedIsEnabled()
    {
        LinuxDNSSettingsManager manager(storePath());
        EXPECT_EQ(
            finish([&](auto done) { manager.loadFromPreferences(std::move(done)); }).error, std::nullopt);
        return manager.isEnabled();
    }
};

TEST_F(BrivantaDnsCommandTest, StatusOfAnEmptySlot)
{
    const CommandRun result = run({ QStringLiteral("status") });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
        QStringLiteral("Saved DNS settings: none\nSwitched on: no\nStore: ") + storePath()
            + QStringLiteral("\n"));
    EXPECT_EQ(result.err, QString());
}

TEST_F(BrivantaDnsCommandTest, EnablingWithNothingSavedSaysWhatToDoFirst)
{
    const CommandRun result = run({ QStringLiteral("enable") });
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
        QStringLiteral("Nothing to enable: open Brivanta and press “Add Network Settings” first.\n"));
    EXPECT_EQ(result.out, QString());
    EXPECT_FALSE(QFileInfo::exists(storePath()));
}

TEST_F(BrivantaDnsCommandTest, SwitchesTheSavedSettingsOnAndOffForTheApplication)
{
    saveBuiltInLike();

    CommandRun result = run({ QStringLiteral("enable") });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, QStringLiteral("Brivanta's DNS settings are switched on.\n"));
    EXPECT_TRUE(loadedIsEnabled());

    result = run({ QStringLiteral("enable") });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, QStringLiteral("Brivanta's DNS settings were already switched on.\n"));

    result = run({ QStringLiteral("status") });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out,
        QStringLiteral("Saved DNS settings: DNS-over-HTTPS, server URL https://dns.example.test/c7e091\n"
                       "On-demand rules: 0\nSwitched on: yes\nStore: ")
            + storePath() + QStringLiteral("\n"));

    result = run({ QStringLiteral("disable") });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, QStringLiteral("Brivanta's DNS settings are switched off.\n"));
    EXPECT_FALSE(loadedIsEnabled());
}

TEST_F(BrivantaDnsCommandTest, DamagedStoreIsOneSentenceOnStandardErrorAndStaysAsItIs)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(storePath()).absolutePath()));
    writeFile(storePath(), "not json");
    for (const char *command : { "status", "enable", "disable" }) {
        const CommandRun result = run({ QString::fromLatin1(command) });
        EXPECT_EQ(result.exitCode, 1) << command;
        EXPECT_TRUE(result.err.startsWith(
            QStringLiteral("The saved DNS configuration (") + storePath() + QStringLiteral(") is damaged (")))
            << result.err.toStdString();
        EXPECT_TRUE(result.err.endsWith(QStringLiteral("); fix or delete the file.\n")));
        EXPECT_EQ(result.err.count(QLatin1Char('\n')), 1);
        EXPECT_EQ(result.out, QString());
    }
    EXPECT_EQ(fileBytes(storePath()), QByteArray("not json"));
}

struct UsageCase
{
    const char *name;
    QStringList arguments;
    const char *message;
    friend void PrintTo(const UsageCase &c, std::ostream *os) { *os << c.name; }
};

class BrivantaDnsUsageTest : public BrivantaDnsCommandTest, public ::testing::WithParamInterface<UsageCase>
{
};

TEST_P(BrivantaDnsUsageTest, ExitsWith2AndOneSentence)
{
    const CommandRun result = run(GetParam().arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, QString::fromUtf8(GetParam().message));
    EXPECT_EQ(result.out, QString());
}

INSTANTIATE_TEST_SUITE_P(Command, BrivantaDnsUsageTest,
    ::testing::Values(
        UsageCase { "NoCommand", {}, "Expected one command: status, enable or disable (see --help).\n" },
        UsageCase { "TwoCommands", { QStringLiteral("status"), QStringLiteral("now") },
            "Expected one command: status, enable or disable (see --help).\n" },
        UsageCase { "UnknownCommand", { QStringLiteral("frobnicate") },
            "Unknown command “frobnicate”: use status, enable or disable (see --help).\n" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(BrivantaDnsCommandTest, HelpSaysWhereTheSlotIsAndWhatEnableDoesNotDo)
{
    const CommandRun result = run({ QStringLiteral("--help") });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.startsWith(QStringLiteral("Usage: brivanta-dns <command>\n")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("\n  ") + storePath() + QStringLiteral("\n")));
    EXPECT_TRUE(result.out.contains(
        QStringLiteral("What enable does NOT do: it does not change how this computer resolves names.")));
}

} // namespace
} // namespace brivanta::testing
