// Usage: dns_slot_worker <store path> save|toggle <count>
// save: saves <count> different configurations through the application's manager; toggle: flips the
// switch <count> times as brivanta-dns does. Before each step it checks that its own previous update is
// still in the store, since the other process only ever changes the other half. Exit 0 when none was lost,
// 3 on a lost update, 4 on an error.

#include "platform/linux/dns_slot_store.h"
#include "platform/linux/linux_dns_settings_manager.h"

#include <QCoreApplication>
#include <cstdio>
#include <future>

using namespace brivanta;

namespace {

int report(int code, const QString &text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    return code;
}

NEDNSSettings settingsNumber(int i)
{
    return NEDNSOverHTTPSSettings { {}, QUrl(QStringLiteral("https://resolver.test/%1").arg(i)) };
}

int save(const QString &path, int count)
{
    LinuxDNSSettingsManager manager(path);
    DnsSlotStore store(path);
    for (int i = 1; i <= count; ++i) {
        DnsSlot slot;
        if (auto error = store.read(slot))
            return report(4, error->localizedDescription);
        if (i > 1 && slot.dnsSettings != settingsNumber(i - 1))
            return report(3, QStringLiteral("lost saved configuration %1").arg(i - 1));
        manager.setDnsSettings(settingsNumber(i));
        std::promise<std::optional<PlatformError>> done;
        manager.saveToPreferences(
            [&](std::optional<PlatformError> error) { done.set_value(std::move(error)); });
        if (auto error = done.get_future().get())
            return report(4, error->localizedDescription);
    }
    return 0;
}

int toggle(const QString &path, int count)
{
    DnsSlotStore store(path);
    for (int i = 1; i <= count; ++i) {
        DnsSlot slot;
        if (auto error = store.read(slot))
            return report(4, error->localizedDescription);
        if (i > 1 && slot.enabled != ((i - 1) % 2 == 1))
            return report(3, QStringLiteral("lost switch change %1").arg(i - 1));
        const DnsSlotStore::SwitchResult result = store.setEnabled(i % 2 == 1);
        if (result.error)
            return report(4, result.error->localizedDescription);
        if (result.outcome != DnsSlotStore::SwitchOutcome::Switched)
            return report(4, QStringLiteral("switch %1 was not made").arg(i));
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return report(2, QStringLiteral("usage: dns_slot_worker <store path> save|toggle <count>"));
    const int count = arguments[3].toInt();
    if (arguments[2] == QLatin1String("save"))
        return save(arguments[1], count);
    if (arguments[2] == QLatin1String("toggle"))
        return toggle(arguments[1], count);
    return report(2, QStringLiteral("unknown role"));
}
