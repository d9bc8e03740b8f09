#include "platform/linux/linux_dns_settings_manager.h"

#include "brivanta_build_config.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QHostAddress>
#include <QProcess>
#include <QStandardPaths>

namespace brivanta {

namespace {

PlatformError invalid(const QString &why)
{
    return PlatformError { QString::fromLatin1(neConfigurationErrorDomain), neConfigurationError::invalid,
        QCoreApplication::translate("LinuxDNSSettingsManager", "The DNS configuration is invalid: %1")
            .arg(why) };
}

std::optional<PlatformError> judgeServers(const QStringList &servers)
{
    for (const QString &server : servers) {
        if (QHostAddress(server).isNull())
            return invalid(
                QCoreApplication::translate("LinuxDNSSettingsManager", "“%1” is not an IP address.")
                    .arg(server));
    }
    return std::nullopt;
}

} // namespace

LinuxDNSSettingsManager::LinuxDNSSettingsManager(
    QString storePath, std::shared_ptr<const SystemDnsProbe> probe)
    : m_store(std::move(storePath))
    , m_probe(std::move(probe))
{
    m_worker.setMaxThreadCount(1);
}

LinuxDNSSettingsManager::~LinuxDNSSettingsManager()
{
    m_worker.waitForDone();
}

std::optional<PlatformError> LinuxDNSSettingsManager::judge(
    const std::optional<NEDNSSettings> &settings, const std::vector<NEOnDemandRule> &rules)
{
    if (!settings)
        return invalid(QCoreApplication::translate("LinuxDNSSettingsManager", "it has no DNS settings."));
    if (const auto *https = std::get_if<NEDNSOverHTTPSSettings>(&*settings)) {
        const bool goodUrl = https->serverURL && https->serverURL->isValid()
            && https->serverURL->scheme() == QLatin1String("https") && !https->serverURL->host().isEmpty();
        if (!goodUrl)
            return invalid(QCoreApplication::translate(
                "LinuxDNSSettingsManager", "DNS-over-HTTPS needs an https server URL with a host name."));
        if (auto error = judgeServers(https->servers))
            return error;
    } else {
        const auto &tls = std::get<NEDNSOverTLSSettings>(*settings);
        if (tls.servers.isEmpty() && tls.serverName.value_or(QString()).isEmpty())
            return invalid(QCoreApplication::translate("LinuxDNSSettingsManager",
                "DNS-over-TLS needs a server name or at least one server address."));
        if (auto error = judgeServers(tls.servers))
            return error;
    }
    for (const NEOnDemandRule &rule : rules) {
        if (rule.interfaceTypeMatch < 0 || rule.interfaceTypeMatch > 3)
            return invalid(QCoreApplication::translate(
                "LinuxDNSSettingsManager", "an on-demand rule has the unknown interface type %1.")
                               .arg(rule.interfaceTypeMatch));
        if (rule.probeURL) {
            const QString scheme = rule.probeURL->scheme();
            if (!rule.probeURL->isValid()
                || (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
                return invalid(QCoreApplication::translate("LinuxDNSSettingsManager",
                    "an on-demand rule's probe URL must be an http or https URL."));
        }
    }
    return std::nullopt;
}

void LinuxDNSSettingsManager::run(
    std::function<std::optional<PlatformError>()> operation, DNSSettingsManager::Completion completion)
{
    m_worker.start([operation = std::move(operation), completion = std::move(completion)] {
        const std::optional<PlatformError> error = operation();
        if (completion)
            completion(error);
    });
}

void LinuxDNSSettingsManager::loadFromPreferences(DNSSettingsManager::Completion completion)
{
    run([this] { return load(); }, std::move(completion));
}

void LinuxDNSSettingsManager::saveToPreferences(DNSSettingsManager::Completion completion)
{
    // What is saved is what was set when the save was asked for, even if a load started earlier
    // replaces the properties before the save gets its turn.
    DnsSlot wanted;
    {
        std::lock_guard lock(m_mutex);
        wanted = m_slot;
    }
    run([this, wanted = std::move(wanted)] { return save(wanted); }, std::move(completion));
}

void LinuxDNSSettingsManager::removeFromPreferences(DNSSettingsManager::Completion completion)
{
    run([this] { return remove(); }, std::move(completion));
}

std::optional<PlatformError> LinuxDNSSettingsManager::load()
{
    DnsSlot stored;
    if (auto error = m_store.read(stored))
        return error;
    const SystemDnsVerdict verdict
        = decideStatus(m_probe->observe(), savedEndpoint(stored), QDateTime::currentMSecsSinceEpoch());
    std::lock_guard lock(m_mutex);
    m_slot = std::move(stored);
    m_enabled = verdict.enabled;
    m_reason = verdict.reason;
    return std::nullopt;
}

QString LinuxDNSSettingsManager::savedEndpoint(const DnsSlot &slot)
{
    if (!slot.dnsSettings)
        return {};
    const auto *https = std::get_if<NEDNSOverHTTPSSettings>(&*slot.dnsSettings);
    return https && https->serverURL ? https->serverURL->toString() : QString();
}

QString LinuxDNSSettingsManager::statusReason() const
{
    std::lock_guard lock(m_mutex);
    return m_reason;
}

QStringList LinuxDNSSettingsManager::helperCommand()
{
#ifdef BRIVANTA_TEST_HOOKS
    const QString overridden = qEnvironmentVariable("BRIVANTA_DNS_APPLY_COMMAND");
    if (!overridden.isEmpty())
        return QProcess::splitCommand(overridden);
#endif
    return { QStringLiteral("pkexec"),
        QString::fromUtf8(build::libexecDir) + QStringLiteral("/brivanta-dns-apply") };
}

bool LinuxDNSSettingsManager::canSwitchOn() const
{
    const QStringList command = helperCommand();
    if (command.first() != QLatin1String("pkexec"))
        return true;
    return !QStandardPaths::findExecutable(command.first()).isEmpty()
        && QFileInfo(command.at(1)).isExecutable();
}

std::optional<QString> LinuxDNSSettingsManager::runHelper(const QStringList &arguments)
{
    const QStringList command = helperCommand() + arguments;
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(command.first(), command.mid(1));
    // The password prompt may take the user a while.
    if (!process.waitForStarted() || !process.waitForFinished(10 * 60 * 1000)) {
        process.kill();
        return QCoreApplication::translate("LinuxDNSSettingsManager", "Could not run %1.")
            .arg(command.first());
    }
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return std::nullopt;
    // pkexec: 126 the authorisation was dismissed or refused, 127 it could not authenticate. Either way
    // the helper did not run and nothing changed.
    if (QFileInfo(command.first()).fileName() == QLatin1String("pkexec")
        && (process.exitCode() == 126 || process.exitCode() == 127)) {
        return arguments.first() == QLatin1String("enable")
            ? QCoreApplication::translate("LinuxDNSSettingsManager", "Switching on was cancelled.")
            : QCoreApplication::translate("LinuxDNSSettingsManager", "Cancelled: nothing was changed.");
    }
    const QStringList lines
        = QString::fromLocal8Bit(process.readAllStandardError()).trimmed().split(QLatin1Char('\n'));
    QString last = lines.last();
    last.remove(QStringLiteral("brivanta-dns-apply: "));
    return last.isEmpty()
        ? QCoreApplication::translate("LinuxDNSSettingsManager", "The helper failed (exit status %1).")
              .arg(process.exitCode())
        : last;
}

void LinuxDNSSettingsManager::switchOn(SwitchCompletion completion)
{
    m_worker.start([this, completion = std::move(completion)] {
        DnsSlot stored;
        std::optional<QString> error;
        if (auto readError = m_store.read(stored))
            error = readError->localizedDescription;
        else if (savedEndpoint(stored).isEmpty())
            error = QCoreApplication::translate(
                "LinuxDNSSettingsManager", "Press “Add Network Settings” first.");
        else
            error = runHelper({ QStringLiteral("enable"), savedEndpoint(stored) });
        if (completion)
            completion(error);
    });
}

void LinuxDNSSettingsManager::switchOff(SwitchCompletion completion)
{
    m_worker.start([completion = std::move(completion)] {
        const std::optional<QString> error = runHelper({ QStringLiteral("disable") });
        if (completion)
            completion(error);
    });
}

std::optional<PlatformError> LinuxDNSSettingsManager::save(const DnsSlot &wanted)
{
    if (auto error = judge(wanted.dnsSettings, wanted.onDemandRules))
        return error;

    // Saving what the slot already holds succeeds and writes nothing. The phone platform answers
    // "unchanged" (code 9) here, which the app ignores, so the add button would never confirm the save.
    const QByteArray wantedJson = DnsSlotStore::configurationJson(wanted);
    return m_store.update([&](DnsSlot &slot) {
        if (DnsSlotStore::configurationJson(slot) == wantedJson)
            return DnsSlotStore::Change::Keep;
        slot.dnsSettings = wanted.dnsSettings;
        slot.onDemandRules = wanted.onDemandRules;
        return DnsSlotStore::Change::Write;
    });
}

std::optional<PlatformError> LinuxDNSSettingsManager::remove()
{
    if (auto error = m_store.update([](DnsSlot &) { return DnsSlotStore::Change::Delete; }))
        return error;
    std::lock_guard lock(m_mutex);
    m_slot = DnsSlot {};
    m_enabled = false;
    return std::nullopt;
}

bool LinuxDNSSettingsManager::isEnabled() const
{
    std::lock_guard lock(m_mutex);
    return m_enabled;
}

std::optional<NEDNSSettings> LinuxDNSSettingsManager::dnsSettings() const
{
    std::lock_guard lock(m_mutex);
    return m_slot.dnsSettings;
}

void LinuxDNSSettingsManager::setDnsSettings(std::optional<NEDNSSettings> settings)
{
    std::lock_guard lock(m_mutex);
    m_slot.dnsSettings = std::move(settings);
}

std::vector<NEOnDemandRule> LinuxDNSSettingsManager::onDemandRules() const
{
    std::lock_guard lock(m_mutex);
    return m_slot.onDemandRules;
}

void LinuxDNSSettingsManager::setOnDemandRules(std::vector<NEOnDemandRule> rules)
{
    std::lock_guard lock(m_mutex);
    m_slot.onDemandRules = std::move(rules);
}

} // namespace brivanta
