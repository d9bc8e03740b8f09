#include "dns_slot_test_support.h"
#include "platform/linux/dns_slot_store.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace brivanta::testing {
namespace {

struct CommandRun
{
    int exitCode;
    QString out, err;
};

class BrivantaDnsCommandTest : public SlotDirectory
{
protected:
    // brivanta-dns with the test folder as its configuration home and machine root, and a script as its
    // helper (with pkexec) that logs its arguments and fails when $FAIL is set. Later variables win.
    CommandRun run(const QStringList &arguments, const QStringList &environment = {})
    {
        const QString home = configHome();
        writeFile(home + "/helper.sh",
            "echo \"$*\" >> \"$HELPER_LOG\"\n"
            "[ -z \"$FAIL\" ] || { echo 'brivanta-dns-apply: the endpoint did not answer' >&2; exit 1; }\n");
        QProcess process;
        process.setEnvironment(QProcess::systemEnvironment()
            + QStringList { "XDG_CONFIG_HOME=" + home, "BRIVANTA_SYSTEM_ROOT=" + home,
                "BRIVANTA_DNS_APPLY_COMMAND=sh " + home + "/helper.sh", "HELPER_LOG=" + helperLog() }
            + environment);
        process.start(BRIVANTA_DNS_BINARY, arguments);
        EXPECT_TRUE(process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit);
        return { process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError() };
    }

    QString helperLog() const { return configHome() + "/helper.log"; }
};

TEST_F(BrivantaDnsCommandTest, StatusShowsTheSavedSettingsEscapedSaysWhyBlockingIsOffAndExits1)
{
    ASSERT_EQ(saveSlot(NEDNSOverTLSSettings { {}, "a\x1b]0;x\x07 b\u009b" }), std::nullopt);
    const CommandRun result = run({ "status" });
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.startsWith(QStringLiteral(
        "Saved DNS settings: DNS-over-TLS, server name a\\x1b]0;x\\x07 b\\u{009b}\nApplied: no (")))
        << result.out.toStdString();
    EXPECT_TRUE(result.out.endsWith("Blocking: off. Not switched on.\n")) << result.out.toStdString();
}

TEST_F(BrivantaDnsCommandTest, MistakesAndADamagedStoreAreOneSentenceOnStandardErrorAndChangeNothing)
{
    const auto expectSentence = [&](const QStringList &arguments, int exitCode, const QString &sentence) {
        SCOPED_TRACE(sentence.toStdString());
        const CommandRun result = run(arguments);
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.err, sentence + "\n");
        EXPECT_EQ(result.out, QString());
    };
    expectSentence(
        { "enable" }, 1, "Nothing to enable: open Brivanta and press “Add Network Settings” first.");
    expectSentence({}, 2, "Expected one command: status, enable, disable or pause <time> (see --help).");
    expectSentence({ "frobnicate" }, 2,
        "Unknown command “frobnicate”: use status, enable, disable or pause (see --help).");
    expectSentence(
        { "pause", "25h" }, 2, "Pause for how long? Give 1 second to 24 hours, e.g. 90s, 5m or 1h.");
    EXPECT_FALSE(QFileInfo::exists(storePath()));
    EXPECT_FALSE(QFileInfo::exists(helperLog()));

    ASSERT_TRUE(QDir().mkpath(QFileInfo(storePath()).absolutePath()));
    writeFile(storePath(), "not json");
    DnsSlot slot;
    const QString damaged = DnsSlotStore(storePath()).read(slot).value().localizedDescription;
    expectSentence({ "status" }, 1, damaged);
    expectSentence({ "enable" }, 1, damaged);
    EXPECT_EQ(fileBytes(storePath()), "not json"); // left for the user to fix
}

TEST_F(BrivantaDnsCommandTest, AsksTheHelperWithTheSavedEndpointAndReportsItsFailure)
{
    ASSERT_EQ(saveSlot(httpsSettings("https://dns.example.test/c7e091")), std::nullopt);
    EXPECT_EQ(run({ "enable" }).exitCode, 0);
    EXPECT_EQ(run({ "pause", "5m" }).exitCode, 0);
    EXPECT_EQ(run({ "disable" }).exitCode, 0);
    EXPECT_EQ(
        fileBytes(helperLog()), QByteArray("enable https://dns.example.test/c7e091\npause 300\ndisable\n"));

    const CommandRun failed = run({ "enable" }, { "FAIL=1" });
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.err, "the endpoint did not answer\n");

    // pkexec's own 126: the password prompt was dismissed and the helper never ran.
    const QString pkexec = configHome() + "/pkexec";
    writeFile(pkexec, "#!/bin/sh\nexit 126\n");
    QFile::setPermissions(pkexec, QFile::ReadOwner | QFile::ExeOwner);
    const CommandRun cancelled
        = run({ "enable" }, { "BRIVANTA_DNS_APPLY_COMMAND=" + pkexec + " /nonexistent/brivanta-dns-apply" });
    EXPECT_EQ(cancelled.exitCode, 1);
    EXPECT_EQ(cancelled.err, "Switching on was cancelled.\n");
}

TEST_F(BrivantaDnsCommandTest, HelpSaysWhereTheSlotIsAndARelativeConfigHomeCountsAsUnset)
{
    const CommandRun result = run({ "--help" }, { "XDG_CONFIG_HOME=relative", "HOME=" + configHome() });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.startsWith("Usage: brivanta-dns <command>\n"));
    EXPECT_TRUE(result.out.contains("\n  " + configHome() + "/.config/brivanta/dns-slot.json\n"))
        << result.out.toStdString();
}

} // namespace
} // namespace brivanta::testing
