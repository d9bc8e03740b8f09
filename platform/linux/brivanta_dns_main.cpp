// brivanta-dns: the on/off switch of Brivanta's system-wide blocking on Linux, standing in for the system
// settings of a phone. It reads the configuration the application saved and asks the privileged helper
// (through pkexec) to apply it; its status is the same check the application makes.

#include "platform/linux/dns_slot_store.h"
#include "platform/linux/linux_dns_settings_manager.h"
#include "platform/linux/system_dns_status.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>
#include <cstdio>
#include <cstdlib>
#include <string>

using brivanta::DnsSlot;
using brivanta::DnsSlotStore;
using brivanta::NEDNSOverHTTPSSettings;
using brivanta::NEDNSOverTLSSettings;
using namespace brivanta;

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

// Control characters written out as \xHH (or \u{HHHH} beyond ASCII): what is printed comes partly from
// files and other programs, and must not reach the terminal as escape sequences. Line breaks are kept
// only where keepLines asks for them.
QString printable(const QString &text, bool keepLines)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if ((u == '\n' && keepLines) || !(u < 0x20 || (u >= 0x7f && u <= 0x9f)))
            result += c;
        else if (u < 0x80)
            result += QStringLiteral("\\x%1").arg(uint(u), 2, 16, QLatin1Char('0'));
        else
            result += QStringLiteral("\\u{%1}").arg(uint(u), 4, 16, QLatin1Char('0'));
    }
    return result;
}

void out(const QString &text)
{
    std::fputs(printable(text, true).toLocal8Bit().constData(), stdout);
    std::fputc('\n', stdout);
}

int fail(const QString &sentence, int code = exitFailure)
{
    std::fputs((printable(sentence, false) + '\n').toLocal8Bit().constData(), stderr);
    return code;
}

QString helpText(const QString &storePath)
{
    return QStringLiteral(
        "Usage: brivanta-dns <command>\n"
        "\n"
        "Switches Brivanta's ad blocking on and off for this whole computer.\n"
        "\n"
        "Commands:\n"
        "  status         Say whether blocking is really on right now, and if not, why (exit 0 only when "
        "on).\n"
        "  enable         Route every lookup of this computer through brivanta-dohd to the saved\n"
        "                 DNS-over-HTTPS address (asks for an administrator's password).\n"
        "  disable        Put this computer's DNS back exactly as it was.\n"
        "  pause <time>   Use the computer's own DNS for a while, e.g. for a captive portal: 90s, 5m, 1h.\n"
        "  --help         Show this text.\n"
        "\n"
        "Brivanta saves its DNS settings when you press \"Add Network Settings\"; they are kept in\n"
        "  %1\n"
        "\n"
        "Exit status: 0 on success, 1 when the command could not be carried out (or, for status, when\n"
        "blocking is not on), 2 on a usage error.")
        .arg(QDir::toNativeSeparators(storePath));
}

QString describe(const DnsSlot &slot)
{
    if (!slot.dnsSettings)
        return QStringLiteral("none");
    QString text;
    QStringList servers;
    if (const auto *https = std::get_if<NEDNSOverHTTPSSettings>(&*slot.dnsSettings)) {
        text = QStringLiteral("DNS-over-HTTPS, server URL ")
            + (https->serverURL ? https->serverURL->toDisplayString() : QStringLiteral("(none)"));
        servers = https->servers;
    } else {
        const auto &tls = std::get<NEDNSOverTLSSettings>(*slot.dnsSettings);
        text = QStringLiteral("DNS-over-TLS, server name ")
            + tls.serverName.value_or(QStringLiteral("(none)"));
        servers = tls.servers;
    }
    if (!servers.isEmpty())
        text += QStringLiteral(", servers ") + servers.join(QStringLiteral(", "));
    return text;
}

QString ago(qint64 ms)
{
    if (ms == 0)
        return QStringLiteral("never");
    const qint64 seconds = (QDateTime::currentMSecsSinceEpoch() - ms) / 1000;
    if (seconds < 120)
        return QStringLiteral("%1 s ago").arg(seconds);
    if (seconds < 7200)
        return QStringLiteral("%1 min ago").arg(seconds / 60);
    return QStringLiteral("at %1").arg(QDateTime::fromMSecsSinceEpoch(ms).toString(Qt::ISODate));
}

// Which resolver the helper would change, found as it finds it.
QString resolverStack()
{
    if (QFileInfo::exists(QStringLiteral("/run/systemd/resolve/io.systemd.Resolve")))
        return QStringLiteral("systemd-resolved");
    if (QFileInfo::exists(QStringLiteral("/run/NetworkManager")))
        return QStringLiteral("NetworkManager");
    return QStringLiteral("/etc/resolv.conf");
}

int status(const DnsSlotStore &store)
{
    DnsSlot slot;
    if (auto error = store.read(slot))
        return fail(error->localizedDescription);
    const QString endpoint = LinuxDNSSettingsManager::savedEndpoint(slot);
    out(QStringLiteral("Saved DNS settings: ") + describe(slot));

    const SystemDnsObservation seen = SystemDnsProbe().observe(true);
    using Canary = SystemDnsObservation::Canary;
    if (seen.phase == QLatin1String("applied"))
        out(QStringLiteral("Applied: yes, through %1, to %2").arg(seen.stack, seen.appliedEndpoint));
    else if (seen.phase == QLatin1String("paused"))
        out(QStringLiteral("Applied: paused until %1")
                .arg(QDateTime::fromMSecsSinceEpoch(seen.pausedUntilMs).toString(Qt::ISODate)));
    else
        out(QStringLiteral("Applied: no (this computer's resolver: %1)").arg(resolverStack()));
    if (!seen.routingKnown)
        out(QStringLiteral("Routing: unknown (%1)").arg(seen.routingProblem));
    else if (seen.otherServers.isEmpty())
        out(QStringLiteral("Routing: every lookup goes to brivanta-dohd (127.0.0.153)"));
    else
        out(QStringLiteral("Routing: lookups can also reach %1")
                .arg(seen.otherServers.join(QLatin1String(", "))));
    out(QStringLiteral("Forwarder: %1; last upstream answer %2; last failure %3%4")
            .arg(seen.forwarderRunning ? QStringLiteral("running, to ") + seen.forwarderEndpoint
                                       : QStringLiteral("not running"),
                ago(seen.lastSuccessMs), ago(seen.lastFailureMs),
                seen.lastError.isEmpty() ? QString()
                                         : QStringLiteral(" (") + seen.lastError + QLatin1Char(')')));
    switch (seen.direct) {
    case Canary::Answered:
        out(QStringLiteral("Forwarder answers on %1: yes").arg(seen.forwarderListen));
        break;
    case Canary::WrongAddress:
        out(QStringLiteral("Forwarder answers on %1: something else answers there")
                .arg(seen.forwarderListen));
        break;
    case Canary::NoAnswer:
        out(QStringLiteral("Forwarder answers on %1: no").arg(seen.forwarderListen));
        break;
    case Canary::NotTried:
        break;
    }
    switch (seen.canary) {
    case Canary::Answered:
        out(QStringLiteral(
            "Test lookup: a fresh test name came back through the system resolver from brivanta-dohd"));
        break;
    case Canary::WrongAddress:
        out(QStringLiteral("Test lookup: a fresh test name came back as %1, not from brivanta-dohd")
                .arg(seen.canaryAddress));
        break;
    case Canary::NoAnswer:
        out(QStringLiteral("Test lookup: a fresh test name did not resolve through the system resolver"));
        break;
    case Canary::NotTried:
        break;
    }
    const SystemDnsVerdict verdict = decideStatus(seen, endpoint, QDateTime::currentMSecsSinceEpoch());
    out(verdict.enabled ? QStringLiteral("Blocking: on")
                        : QStringLiteral("Blocking: off. ") + verdict.reason);
    return verdict.enabled ? EXIT_SUCCESS : exitFailure;
}

int runHelper(const QStringList &arguments, const QString &done)
{
    if (auto error = LinuxDNSSettingsManager::runHelper(arguments))
        return fail(*error);
    out(done);
    return EXIT_SUCCESS;
}

int enable(const DnsSlotStore &store)
{
    DnsSlot slot;
    if (auto error = store.read(slot))
        return fail(error->localizedDescription);
    const QString endpoint = LinuxDNSSettingsManager::savedEndpoint(slot);
    if (endpoint.isEmpty())
        return fail(
            QStringLiteral("Nothing to enable: open Brivanta and press “Add Network Settings” first."));
    return runHelper({ QStringLiteral("enable"), endpoint },
        QStringLiteral("Every lookup of this computer now goes through Brivanta to %1.").arg(endpoint));
}

// "90", "90s", "5m", "1h" to seconds; nothing when it is not one of those.
std::optional<int> parseDuration(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,6})([smh]?)$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 unit = match.captured(2) == QLatin1String("h") ? 3600
        : match.captured(2) == QLatin1String("m")               ? 60
                                                                : 1;
    const qint64 seconds = match.captured(1).toLongLong() * unit;
    if (seconds < 1 || seconds > 86400)
        return std::nullopt;
    return int(seconds);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    DnsSlotStore store(DnsSlotStore::defaultPath());

    if (arguments.size() == 1
        && (arguments[0] == QLatin1String("--help") || arguments[0] == QLatin1String("-h"))) {
        out(helpText(store.path()));
        return EXIT_SUCCESS;
    }
    const QString command = arguments.value(0);
    if (command == QLatin1String("pause") && arguments.size() == 2) {
        const std::optional<int> seconds = parseDuration(arguments[1]);
        if (!seconds)
            return fail(QStringLiteral("Pause for how long? Give 1 second to 24 hours, e.g. 90s, 5m or 1h."),
                exitUsage);
        return runHelper({ QStringLiteral("pause"), QString::number(*seconds) },
            QStringLiteral("Paused: this computer uses its own DNS for %1 s, then Brivanta again.")
                .arg(*seconds));
    }
    if (arguments.size() != 1)
        return fail(
            QStringLiteral("Expected one command: status, enable, disable or pause <time> (see --help)."),
            exitUsage);
    if (command == QLatin1String("status"))
        return status(store);
    if (command == QLatin1String("enable"))
        return enable(store);
    if (command == QLatin1String("disable"))
        return runHelper({ QStringLiteral("disable") },
            QStringLiteral("This computer's DNS is as it was before Brivanta."));
    return fail(QStringLiteral("Unknown command “%1”: use status, enable, disable or pause (see --help).")
                    .arg(command),
        exitUsage);
}
