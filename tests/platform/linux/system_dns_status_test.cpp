#include "dns_slot_test_support.h"
#include "forwarder/canary.h"
#include "platform/linux/system_dns_status.h"

#include <QHostAddress>
#include <QSet>
#include <unistd.h>

namespace brivanta::testing {
namespace {

const QString endpoint = "https://dns.example.test/c7e091";

SystemDnsObservation workingMachine()
{
    SystemDnsObservation seen;
    seen.phase = "applied", seen.stack = "resolvconf", seen.canary = SystemDnsObservation::Canary::Answered;
    seen.appliedEndpoint = seen.forwarderEndpoint = endpoint;
    seen.routingKnown = seen.forwarderRunning = true;
    return seen;
}

TEST(DecideStatus, EnabledOnlyWhenEveryPieceHoldsAndOtherwiseNamesTheFirstThatDoesNot)
{
    using Canary = SystemDnsObservation::Canary;
    const struct
    {
        std::function<void(SystemDnsObservation &)> change;
        const char *reason; // empty: enabled
        QString savedEndpoint = endpoint;
    } cases[] = {
        { [](auto &) {}, "" },
        { [](auto &s) { s.phase = "disabled"; }, "Not switched on." },
        { [](auto &s) { s.phase = "paused"; }, "Not switched on." }, // the pause is over
        { [](auto &) {}, "Switched on for another DNS address.", "https://other.test/" },
        { [](auto &s) { s.forwarderEndpoint = "https://old.test/"; },
            "Switched on for another DNS address." },
        { [](auto &s) { s.routingKnown = false, s.routingProblem = "Cannot read."; }, "Cannot read." },
        { [](auto &s) { s.otherServers = QString("192.0.2.1 192.0.2.2").split(' '); },
            "Names can still reach 192.0.2.1, 192.0.2.2 directly." },
        { [](auto &s) { s.canary = Canary::NoAnswer, s.lastFailureMs = 2, s.lastError = "HTTP 403"; },
            "The filtering resolver cannot be reached: HTTP 403." },
        { [](auto &s) { s.canary = Canary::NoAnswer, s.lastSuccessMs = 3, s.lastFailureMs = 2; },
            "Lookups do not go through Brivanta." },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.reason);
        SystemDnsObservation seen = workingMachine();
        c.change(seen);
        const SystemDnsVerdict verdict = decideStatus(seen, c.savedEndpoint, 1000);
        EXPECT_EQ(verdict.enabled, *c.reason == 0);
        EXPECT_EQ(verdict.reason, QString::fromUtf8(c.reason));
    }

    SystemDnsObservation paused = workingMachine();
    paused.phase = "paused", paused.pausedUntilMs = 2000;
    EXPECT_TRUE(decideStatus(paused, endpoint, 1000).reason.startsWith("Paused until "));
}

// The probe on files in a temporary folder, with the system resolver's answer scripted.
struct ScriptedProbe : SystemDnsProbe
{
    using SystemDnsProbe::SystemDnsProbe;
    QString lookupIPv4(const QString &name) const override { return answer(name); }
    bool forwarderAlive(qint64 pid) const override { return pid == ::getpid(); }
    std::function<QString(const QString &)> answer;
};

using SystemDnsProbeTest = SlotDirectory;

// What the app shows after a load through the manager.
TEST_F(SystemDnsProbeTest, EnabledOnlyWhenAFreshCanaryComesBackWithTheForwardersAddressAndNothingLeaks)
{
    const QByteArray secret = QByteArray::fromHex("00112233445566778899aabbccddeeff");
    const QString dir = configHome();
    const SystemDnsPaths paths { dir + "/state.json", dir + "/health.json", dir + "/resolv.conf" };
    writeFile(paths.stateFile,
        R"({"phase": "applied", "stack": "resolvconf", "endpoint": ")" + endpoint.toUtf8() + "\"}");
    writeFile(paths.healthFile,
        QStringLiteral(R"({"pid": %1, "endpoint": "%2", "canarySecret": "%3"})")
            .arg(QString::number(::getpid()), endpoint, secret.toHex())
            .toUtf8());
    ASSERT_EQ(saveSlot(httpsSettings(endpoint)), std::nullopt);
    QStringList asked;
    const auto forwarder = [&](const QString &name) {
        asked << name;
        return QHostAddress(canaryAddress(secret, name.section('.', 0, 0).toLatin1())).toString();
    };
    const struct
    {
        QByteArray resolvConf;
        std::function<QString(const QString &)> answer;
        const char *reason; // empty: enabled
    } cases[] = {
        { "nameserver 127.0.0.153\n", forwarder, "" },
        { "nameserver 127.0.0.153\n", [](const QString &) { return "127.0.0.9"; },
            "Lookups do not go through Brivanta." },
        { "nameserver 127.0.0.153\nnameserver 192.0.2.53\n", forwarder,
            "Names can still reach 192.0.2.53 directly." },
        { "# nobody named: glibc asks 127.0.0.1\n", forwarder, "Names can still reach 127.0.0.1 directly." },
        { "nameserver 127.0.0.153\n", forwarder, "" }, // asks again, with a fresh name
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.reason);
        writeFile(paths.resolvConf, c.resolvConf);
        const auto probe = std::make_shared<ScriptedProbe>(paths);
        probe->answer = c.answer;
        LinuxDNSSettingsManager manager(storePath(), probe);
        EXPECT_EQ(load(manager), std::nullopt);
        EXPECT_EQ(manager.isEnabled(), !*c.reason);
        EXPECT_EQ(manager.statusReason(), c.reason);
    }
    // A fresh name each time, so that no cache can answer for the forwarder.
    ASSERT_GE(asked.size(), 2);
    EXPECT_TRUE(asked[0].endsWith(".canary.brivanta.test")) << asked[0].toStdString();
    EXPECT_EQ(QSet<QString>(asked.begin(), asked.end()).size(), asked.size());
}

} // namespace
} // namespace brivanta::testing
