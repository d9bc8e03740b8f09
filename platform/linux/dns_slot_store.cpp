#include "platform/linux/dns_slot_store.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <array>
#include <utility>

namespace brivanta {

namespace {

constexpr int formatVersion = 1;
// Long enough for any writer we know of (they hold the lock for one small file write), short enough
// that a stuck one does not hang the caller for good.
constexpr int lockTimeoutMs = 10000;

constexpr std::array<std::pair<NEOnDemandRule::Kind, const char *>, 4> ruleKindNames { {
    { NEOnDemandRule::Kind::Connect, "connect" },
    { NEOnDemandRule::Kind::Disconnect, "disconnect" },
    { NEOnDemandRule::Kind::EvaluateConnection, "evaluateConnection" },
    { NEOnDemandRule::Kind::Ignore, "ignore" },
} };

QString tr(const char *text)
{
    return QCoreApplication::translate("DnsSlotStore", text);
}

QJsonArray toJson(const QStringList &list)
{
    return QJsonArray::fromStringList(list);
}

QJsonObject toJson(const NEDNSSettings &settings)
{
    QJsonObject object;
    if (const auto *tls = std::get_if<NEDNSOverTLSSettings>(&settings)) {
        object.insert(QStringLiteral("protocol"), QStringLiteral("dnsOverTLS"));
        object.insert(QStringLiteral("servers"), toJson(tls->servers));
        if (tls->serverName)
            object.insert(QStringLiteral("serverName"), *tls->serverName);
    } else {
        const auto &https = std::get<NEDNSOverHTTPSSettings>(settings);
        object.insert(QStringLiteral("protocol"), QStringLiteral("dnsOverHTTPS"));
        object.insert(QStringLiteral("servers"), toJson(https.servers));
        if (https.serverURL)
            object.insert(QStringLiteral("serverURL"), QString::fromUtf8(https.serverURL->toEncoded()));
    }
    return object;
}

QJsonObject toJson(const NEOnDemandRule &rule)
{
    QJsonObject object;
    for (const auto &[kind, name] : ruleKindNames) {
        if (kind == rule.kind)
            object.insert(QStringLiteral("action"), QString::fromLatin1(name));
    }
    object.insert(QStringLiteral("interfaceTypeMatch"), rule.interfaceTypeMatch);
    if (rule.ssidMatch)
        object.insert(QStringLiteral("ssidMatch"), toJson(*rule.ssidMatch));
    object.insert(QStringLiteral("dnsSearchDomainMatch"), toJson(rule.dnsSearchDomainMatch));
    object.insert(QStringLiteral("dnsServerAddressMatch"), toJson(rule.dnsServerAddressMatch));
    if (rule.probeURL)
        object.insert(QStringLiteral("probeURL"), QString::fromUtf8(rule.probeURL->toEncoded()));
    return object;
}

QJsonObject configurationObject(const DnsSlot &slot)
{
    QJsonObject object;
    if (slot.dnsSettings)
        object.insert(QStringLiteral("dnsSettings"), toJson(*slot.dnsSettings));
    QJsonArray rules;
    for (const NEOnDemandRule &rule : slot.onDemandRules)
        rules.append(toJson(rule));
    object.insert(QStringLiteral("onDemandRules"), rules);
    return object;
}

// Decoding is strict: a field of the wrong type means the file is not ours or was damaged, and it is
// reported rather than guessed at.
bool readStrings(const QJsonValue &value, QStringList &out)
{
    if (!value.isArray())
        return false;
    out.clear();
    for (const QJsonValue &item : value.toArray()) {
        if (!item.isString())
            return false;
        out.append(item.toString());
    }
    return true;
}

bool readUrl(const QJsonValue &value, std::optional<QUrl> &out)
{
    if (value.isUndefined()) {
        out.reset();
        return true;
    }
    if (!value.isString())
        return false;
    out = QUrl::fromEncoded(value.toString().toUtf8(), QUrl::StrictMode);
    return true;
}

bool readSettings(const QJsonValue &value, NEDNSSettings &out)
{
    if (!value.isObject())
        return false;
    const QJsonObject object = value.toObject();
    const QString protocol = object.value(QStringLiteral("protocol")).toString();
    QStringList servers;
    if (!readStrings(object.value(QStringLiteral("servers")), servers))
        return false;
    if (protocol == QLatin1String("dnsOverHTTPS")) {
        NEDNSOverHTTPSSettings https { servers, std::nullopt };
        if (!readUrl(object.value(QStringLiteral("serverURL")), https.serverURL))
            return false;
        out = https;
        return true;
    }
    if (protocol == QLatin1String("dnsOverTLS")) {
        NEDNSOverTLSSettings tls { servers, std::nullopt };
        const QJsonValue name = object.value(QStringLiteral("serverName"));
        if (name.isString())
            tls.serverName = name.toString();
        else if (!name.isUndefined())
            return false;
        out = tls;
        return true;
    }
    return false;
}

bool readRule(const QJsonValue &value, NEOnDemandRule &out)
{
    if (!value.isObject())
        return false;
    const QJsonObject object = value.toObject();
    const QString action = object.value(QStringLiteral("action")).toString();
    bool known = false;
    for (const auto &[kind, name] : ruleKindNames) {
        if (action == QLatin1String(name)) {
            out.kind = kind;
            known = true;
        }
    }
    const QJsonValue interfaceType = object.value(QStringLiteral("interfaceTypeMatch"));
    if (!known || !interfaceType.isDouble())
        return false;
    out.interfaceTypeMatch = interfaceType.toInteger();
    const QJsonValue ssids = object.value(QStringLiteral("ssidMatch"));
    if (ssids.isUndefined()) {
        out.ssidMatch.reset();
    } else {
        QStringList list;
        if (!readStrings(ssids, list))
            return false;
        out.ssidMatch = list;
    }
    return readStrings(object.value(QStringLiteral("dnsSearchDomainMatch")), out.dnsSearchDomainMatch)
        && readStrings(object.value(QStringLiteral("dnsServerAddressMatch")), out.dnsServerAddressMatch)
        && readUrl(object.value(QStringLiteral("probeURL")), out.probeURL);
}

// Empty when the document is a slot; otherwise what is wrong with it, for the error text.
QString parseSlot(const QByteArray &data, DnsSlot &slot)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return parseError.errorString();
    if (!document.isObject())
        return tr("not a JSON object");
    const QJsonObject object = document.object();
    if (object.value(QStringLiteral("format")).toInt(-1) != formatVersion)
        return tr("unknown format");

    // Older files also hold an "enabled" switch; whether blocking is on is now read off the machine.
    DnsSlot parsed;

    const QJsonValue settings = object.value(QStringLiteral("dnsSettings"));
    if (!settings.isUndefined()) {
        NEDNSSettings value;
        if (!readSettings(settings, value))
            return tr("invalid “dnsSettings”");
        parsed.dnsSettings = value;
    }

    const QJsonValue rules = object.value(QStringLiteral("onDemandRules"));
    if (!rules.isUndefined()) {
        if (!rules.isArray())
            return tr("invalid “onDemandRules”");
        for (const QJsonValue &item : rules.toArray()) {
            NEOnDemandRule rule;
            if (!readRule(item, rule))
                return tr("invalid “onDemandRules”");
            parsed.onDemandRules.push_back(rule);
        }
    }
    slot = std::move(parsed);
    return {};
}

} // namespace

DnsSlotStore::DnsSlotStore(QString path)
    : m_path(std::move(path))
{ }

QString DnsSlotStore::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/brivanta/dns-slot.json");
}

QByteArray DnsSlotStore::configurationJson(const DnsSlot &slot)
{
    return QJsonDocument(configurationObject(slot)).toJson(QJsonDocument::Compact);
}

PlatformError DnsSlotStore::storeError(const QString &description) const
{
    return PlatformError { QString::fromLatin1(neConfigurationErrorDomain),
        neConfigurationError::readWriteFailed, description };
}

std::optional<PlatformError> DnsSlotStore::read(DnsSlot &slot) const
{
    QFile file(m_path);
    if (!QFileInfo::exists(m_path)) {
        slot = DnsSlot {};
        return std::nullopt;
    }
    if (!file.open(QIODevice::ReadOnly))
        return storeError(
            tr("The saved DNS configuration (%1) could not be read: %2.").arg(m_path, file.errorString()));
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return storeError(
            tr("The saved DNS configuration (%1) could not be read: %2.").arg(m_path, file.errorString()));
    const QString problem = parseSlot(data, slot);
    if (!problem.isEmpty()) {
        return storeError(tr("The saved DNS configuration (%1) is damaged (%2); fix or delete the file.")
                              .arg(m_path, problem));
    }
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::ensureDirectory() const
{
    const QFileInfo info(m_path);
    const QString directory = info.absolutePath();
    if (QFileInfo(directory).isDir())
        return std::nullopt;
    // Only the folder we create is made private; the parents are the user's own configuration folders.
    const QString parent = QFileInfo(directory).absolutePath();
    if (!QDir().mkpath(parent)
        || !QDir().mkdir(directory, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)) {
        if (!QFileInfo(directory).isDir())
            return storeError(
                tr("The folder of the DNS configuration (%1) could not be created.").arg(directory));
    }
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::write(const DnsSlot &slot) const
{
    QJsonObject object = configurationObject(slot);
    object.insert(QStringLiteral("format"), formatVersion);

    QSaveFile file(m_path);
    // Private before the first byte goes in: the temporary file would otherwise follow the umask.
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)
        || file.write(QJsonDocument(object).toJson(QJsonDocument::Indented)) < 0 || !file.commit()) {
        return storeError(
            tr("The DNS configuration could not be written to %1: %2.").arg(m_path, file.errorString()));
    }
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::update(const std::function<Change(DnsSlot &)> &change)
{
    if (auto error = ensureDirectory())
        return error;
    QLockFile lock(m_path + QStringLiteral(".lock"));
    if (!lock.tryLock(lockTimeoutMs))
        return storeError(
            tr("The DNS configuration (%1) is locked by another program; try again.").arg(m_path));

    DnsSlot slot;
    if (auto error = read(slot))
        return error;
    switch (change(slot)) {
    case Change::Keep:
        return std::nullopt;
    case Change::Write:
        return write(slot);
    case Change::Delete:
        if (!QFile::remove(m_path) && QFileInfo::exists(m_path))
            return storeError(tr("The DNS configuration (%1) could not be removed.").arg(m_path));
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace brivanta
