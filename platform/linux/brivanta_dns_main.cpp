// brivanta-dns: the on/off switch of Brivanta's DNS settings on Linux, standing in for the system
// settings of a phone. It works on the same store, under the same lock, as the application.

#include "platform/linux/dns_slot_store.h"

#include <QCoreApplication>
#include <QDir>
#include <QStringList>
#include <cstdio>
#include <cstdlib>
#include <string>

using brivanta::DnsSlot;
using brivanta::DnsSlotStore;
using brivanta::NEDNSOverHTTPSSettings;
using brivanta::NEDNSOverTLSSettings;

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

void out(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fputc('\n', stdout);
}

int fail(const QString &sentence, int code = exitFailure)
{
    std::fputs((sentence + '\n').toLocal8Bit().constData(), stderr);
    return code;
}

QString helpText(const QString &storePath)
{
    return QStringLiteral(
        "Usage: brivanta-dns <command>\n"
        "\n"
        "Switches Brivanta's DNS settings on and off, as the system settings do on a phone.\n"
        "\n"
        "Commands:\n"
        "  status     Show the DNS settings Brivanta has saved and whether they are switched on.\n"
        "  enable     Switch the saved DNS settings on (Brivanta then shows protection as \"Enabled\").\n"
        "  disable    Switch the saved DNS settings off.\n"
        "  --help     Show this text.\n"
        "\n"
        "Brivanta saves its DNS settings when you press \"Add Network Settings\"; they are kept in\n"
        "  %1\n"
        "\n"
        "What enable does NOT do: it does not change how this computer resolves names. It only sets\n"
        "the switch in that file. systemd-resolved, NetworkManager and /etc/resolv.conf are left\n"
        "untouched, so switching on does not yet block ads system-wide on Linux. To use the filtering\n"
        "resolver now, enter its DNS-over-HTTPS address (shown by \"status\") in your system's DNS "
        "settings.\n"
        "\n"
        "Exit status: 0 on success, 1 when the command could not be carried out, 2 on a usage error.")
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

int status(const DnsSlotStore &store)
{
    DnsSlot slot;
    if (auto error = store.read(slot))
        return fail(error->localizedDescription);
    out(QStringLiteral("Saved DNS settings: ") + describe(slot));
    if (slot.dnsSettings)
        out(QStringLiteral("On-demand rules: %1").arg(slot.onDemandRules.size()));
    out(QStringLiteral("Switched on: ") + (slot.enabled ? QStringLiteral("yes") : QStringLiteral("no")));
    out(QStringLiteral("Store: ") + QDir::toNativeSeparators(store.path()));
    return EXIT_SUCCESS;
}

int setEnabled(DnsSlotStore &store, bool enabled)
{
    const DnsSlotStore::SwitchResult result = store.setEnabled(enabled);
    if (result.error)
        return fail(result.error->localizedDescription);
    switch (result.outcome) {
    case DnsSlotStore::SwitchOutcome::NothingSaved:
        return fail(
            QStringLiteral("Nothing to enable: open Brivanta and press “Add Network Settings” first."));
    case DnsSlotStore::SwitchOutcome::AlreadySo:
        out(enabled ? QStringLiteral("Brivanta's DNS settings were already switched on.")
                    : QStringLiteral("Brivanta's DNS settings were already switched off."));
        break;
    case DnsSlotStore::SwitchOutcome::Switched:
        out(enabled ? QStringLiteral("Brivanta's DNS settings are switched on.")
                    : QStringLiteral("Brivanta's DNS settings are switched off."));
        break;
    }
    return EXIT_SUCCESS;
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
    if (arguments.size() != 1)
        return fail(
            QStringLiteral("Expected one command: status, enable or disable (see --help)."), exitUsage);

    const QString &command = arguments[0];
    if (command == QLatin1String("status"))
        return status(store);
    if (command == QLatin1String("enable"))
        return setEnabled(store, true);
    if (command == QLatin1String("disable"))
        return setEnabled(store, false);
    return fail(
        QStringLiteral("Unknown command “%1”: use status, enable or disable (see --help).").arg(command),
        exitUsage);
}
