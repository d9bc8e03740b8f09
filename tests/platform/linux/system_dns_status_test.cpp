#include "dns_slot_test_support.h"
#include "forwarder/canary.h"
#include "platform/linux/system_dns_status.h"

#include <QDir>
#include <QHostAddress>
#include <unistd.h>

namespace brivanta::testing {
namespace {

const QString endpoint = "https://dns.example.test/c7e091";

SystemDnsObservation workingMachine()
{
    SystemDnsObservation seen;
    seen.phase = "applied";
    seen.appliedEndpoint = seen.forwarderEndpoint = endpoint;
    seen.stack = "resolvconf";
    seen.routingKnown = seen.forwarderRunning = true;
    seen.canary = SystemDnsObservation::Canary::Answered;
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
        { [](auto &) {}, "Switched on for another DNS address.", "" },
        { [](auto &) {}, "Switched on for another DNS address.", "https://other.test/" },
        { [](auto &s) { s.forwarderEndpoint = "https://old.test/"; },
            "Switched on for another DNS address." },
        { [](auto &s) { s.routingKnown = false, s.routingProblem = "Cannot read."; }, "Cannot read." },
        { [](auto &s) {
             s.otherServers = { "192.0.2.1", "192.0.2.2" };
         },
            "Names can still reach 192.0.2.1, 192.0.2.2 directly." },
        { [](auto &s) { s.canary = Canary::NoAnswer, s.lastFailureMs = 2, s.lastError = "HTTP 403"; },
            "The filtering resolver cannot be reached: HTTP 403." },
        { [](auto &s) { s.canary = Canary::NoAnswer, s.lastSuccessMs = 3, s.lastFailureMs = 2; },
            "Lookups do not go through Brivanta." },
        // Someone else answered: the forwarder's own trouble is not the reason.
        { [](auto &s) { s.canary = Canary::WrongAddress, s.lastFailureMs = 2, s.lastError = "HTTP 403"; },
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

// The probe on files in a temporary root, with the system resolver's answer scripted.
struct ScriptedProbe : SystemDnsProbe
{
    using SystemDnsProbe::SystemDnsProbe;
    QString lookupIPv4(const QString &name) const override { return answer(name); }
    bool forwarderAlive(qint64 pid) const override { return pid == ::getpid(); }
    std::function<QString(const QString &)> answer;
};

using Status = std::pair<bool, QString>;

class SystemDnsProbeTest : public SlotDirectory
{
protected:
    void SetUp() override
    {
        SlotDirectory::SetUp();
        m_paths
            = { configHome() + "/state.json", configHome() + "/health.json", configHome() + "/resolv.conf" };
        writeFile(m_paths.stateFile,
            R"({"phase": "applied", "stack": "resolvconf", "endpoint": ")" + endpoint.toUtf8() + "\"}");
        writeFile(m_paths.healthFile,
            QStringLiteral(R"({"pid": %1, "endpoint": "%2", "canarySecret": "%3"})")
                .arg(QString::number(::getpid()), endpoint, secret.toHex())
                .toUtf8());
        writeFile(m_paths.resolvConf, "nameserver 127.0.0.153\n");
        ASSERT_EQ(saveSlot(httpsSettings(endpoint)), std::nullopt);
    }

    // isEnabled and statusReason after a load through the manager, as the app sees them.
    Status status(std::function<QString(const QString &)> answer)
    {
        const auto probe = std::make_shared<ScriptedProbe>(m_paths);
        probe->answer = std::move(answer);
        LinuxDNSSettingsManager manager(storePath(), probe);
        EXPECT_EQ(load(manager), std::nullopt);
        return { manager.isEnabled(), manager.statusReason() };
    }

    static QString forwarderAnswer(const QString &name)
    {
        return QHostAddress(canaryAddress(secret, name.section(QLatin1Char('.'), 0, 0).toLatin1()))
            .toString();
    }

    inline static const QByteArray secret = QByteArray::fromHex("00112233445566778899aabbccddeeff");
    SystemDnsPaths m_paths;
};

TEST_F(SystemDnsProbeTest, EnabledWhenAFreshCanaryComesBackWithTheForwardersAddress)
{
    QStringList asked;
    const auto [enabled, reason] = status([&](const QString &name) {
        asked << name;
        return forwarderAnswer(name);
    });
    EXPECT_TRUE(enabled);
    EXPECT_EQ(reason, QString());
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].endsWith(".canary.brivanta.test"));
    // A fresh name each time, so that no cache can answer for the forwarder.
    status([&](const QString &name) {
        asked << name;
        return QString();
    });
    EXPECT_NE(asked[0], asked[1]);
}

TEST_F(SystemDnsProbeTest, LeaksAndStrangersAreNotEnabled)
{
    EXPECT_EQ(status([](const QString &) { return "127.0.0.9"; }),
        Status(false, "Lookups do not go through Brivanta."));

    writeFile(m_paths.resolvConf, "nameserver 127.0.0.153\nnameserver 192.0.2.53\n");
    EXPECT_EQ(status(&SystemDnsProbeTest::forwarderAnswer),
        Status(false, "Names can still reach 192.0.2.53 directly."));

    writeFile(m_paths.resolvConf, "# nobody named: glibc asks 127.0.0.1\n");
    EXPECT_EQ(status(&SystemDnsProbeTest::forwarderAnswer),
        Status(false, "Names can still reach 127.0.0.1 directly."));
}

} // namespace
} // namespace brivanta::testing
