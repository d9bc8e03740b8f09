#include "platform/linux/dns_slot_store.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brivanta {

namespace {

constexpr int formatVersion = 1;
// Long enough for any writer we know of (they hold the lock for one small file write), short enough
// that a stuck one does not hang the caller for good. A holder that dies releases the lock at once.
constexpr int lockTimeoutMs = 10000;
// Whole-number values beyond this do not survive a double.
constexpr double maxExactInteger = 9007199254740992.0;

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

QString errnoText(int error)
{
    return qt_error_string(error);
}

// Closes its descriptor when it goes.
class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1)
        : m_fd(fd)
    { }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor() { reset(); }
    int get() const { return m_fd; }
    void reset(int fd = -1)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }
    // Closes now and reports the error close itself may carry (a delayed write error on some file
    // systems); 0 when it went well.
    int close()
    {
        const int fd = std::exchange(m_fd, -1);
        return fd >= 0 && ::close(fd) != 0 ? errno : 0;
    }

private:
    int m_fd;
};

QByteArray nativePath(const QString &path)
{
    return QFile::encodeName(path);
}

// What kind of thing other than a regular file sits at a path, for the error text.
QString fileKind(mode_t mode)
{
    if (S_ISDIR(mode))
        return tr("it is a folder, not a file");
    if (S_ISFIFO(mode))
        return tr("it is a FIFO, not a regular file");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return tr("it is a device, not a regular file");
    if (S_ISSOCK(mode))
        return tr("it is a socket, not a regular file");
    return tr("it is not a regular file");
}

// Why an open with O_NOFOLLOW failed, in words.
QString openFailure(int error)
{
    return error == ELOOP ? tr("it is a symbolic link, which is not followed") : errnoText(error);
}

// The sync step, with a way for the tests to make it fail as a failing disk would.
int syncFile(int fd)
{
#ifdef BRIVANTA_TEST_HOOKS
    if (const int injected = qEnvironmentVariableIntValue("BRIVANTA_DNS_SLOT_SYNC_ERRNO")) {
        errno = injected;
        return -1;
    }
#endif
    return ::fsync(fd);
}

// Syncs a folder so that a rename or unlink in it survives a power cut; 0 or the errno.
int syncDirectory(const QString &directory)
{
    const FileDescriptor fd(::open(nativePath(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.get() < 0)
        return errno;
    return syncFile(fd.get()) == 0 ? 0 : errno;
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
    // An address that does not parse could only be written back empty.
    out = QUrl::fromEncoded(value.toString().toUtf8(), QUrl::StrictMode);
    return out->isValid();
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
    // Only a whole number is stored back as it was read.
    const QJsonValue interfaceType = object.value(QStringLiteral("interfaceTypeMatch"));
    const double number = interfaceType.toDouble(0.5);
    if (!known || !interfaceType.isDouble() || std::trunc(number) != number
        || std::abs(number) > maxExactInteger)
        return false;
    out.interfaceTypeMatch = static_cast<qint64>(number);
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
QString parseSlot(const QByteArray &data, DnsSlot &slot, QJsonObject &stored)
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
    stored = object;
    return {};
}

} // namespace

DnsSlotStore::DnsSlotStore(QString path)
    : m_path(std::move(path))
{ }

QString DnsSlotStore::defaultPath()
{
    // Relative values are ignored, as the XDG base directory rules ask.
    QString configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (!QDir::isAbsolutePath(configHome)) {
        QString home = qEnvironmentVariable("HOME");
        if (!QDir::isAbsolutePath(home)) {
            const passwd *account = ::getpwuid(::geteuid());
            home = account ? QFile::decodeName(account->pw_dir) : QString();
        }
        if (!QDir::isAbsolutePath(home))
            return {};
        configHome = home + QStringLiteral("/.config");
    }
    return QDir::cleanPath(configHome) + QStringLiteral("/brivanta/dns-slot.json");
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

std::optional<PlatformError> DnsSlotStore::checkDirectory(bool create) const
{
    if (!QDir::isAbsolutePath(m_path))
        return storeError(tr("There is no place for the DNS configuration: neither XDG_CONFIG_HOME nor HOME "
                             "is an absolute path, and the account has no home folder."));
    const QString directory = QFileInfo(m_path).absolutePath();
    const auto unusable = [&](int error) {
        return storeError(tr("The folder of the DNS configuration (%1) could not be used: %2.")
                              .arg(directory, errnoText(error)));
    };
    const auto unsafe = [&](const QString &why) {
        return storeError(
            tr("The folder of the DNS configuration (%1) is not safe to use: %2.").arg(directory, why));
    };
    struct stat info
    {
    };
    if (::stat(nativePath(directory).constData(), &info) != 0) {
        if (errno != ENOENT || !create)
            return errno == ENOENT ? std::nullopt : std::optional(unusable(errno));
        // Missing folders are made private, as the XDG rules ask (mkdir's mode goes through the umask).
        QString path;
        for (const QString &part : directory.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
            path += QLatin1Char('/') + part;
            if (::mkdir(nativePath(path).constData(), 0700) != 0 && errno != EEXIST)
                return unusable(errno);
        }
        if (::chmod(nativePath(directory).constData(), 0700) != 0
            || ::stat(nativePath(directory).constData(), &info) != 0)
            return unusable(errno);
    }
    // Whoever can write to the folder can swap the configuration, and with it where every lookup goes.
    if (!S_ISDIR(info.st_mode))
        return unusable(ENOTDIR);
    if (info.st_uid != ::geteuid())
        return unsafe(tr("it belongs to user %1, not to this user (%2)").arg(info.st_uid).arg(::geteuid()));
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return unsafe(tr("other users can write to it (mode %1); run “chmod go-w” on it")
                          .arg(info.st_mode & 07777, 4, 8, QLatin1Char('0')));
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::load(DnsSlot &slot, QJsonObject &stored) const
{
    slot = DnsSlot {};
    stored = QJsonObject {};
    if (auto error = checkDirectory(false))
        return error;
    const auto unreadable = [&](const QString &why) {
        return storeError(tr("The saved DNS configuration (%1) could not be read: %2.").arg(m_path, why));
    };
    // Never blocks on a FIFO and never follows a link; what it opened is checked before a byte is read.
    const FileDescriptor fd(
        ::open(nativePath(m_path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (fd.get() < 0)
        return errno == ENOENT ? std::nullopt : std::optional(unreadable(openFailure(errno)));
    struct stat info
    {
    };
    if (::fstat(fd.get(), &info) != 0)
        return unreadable(errnoText(errno));
    if (!S_ISREG(info.st_mode))
        return unreadable(fileKind(info.st_mode));
    const QString tooLarge = tr("it is too large (more than %1 bytes)").arg(maxFileSize);
    if (info.st_size > maxFileSize)
        return unreadable(tooLarge);

    QByteArray data;
    char buffer[16384];
    for (;;) {
        const ssize_t count = ::read(fd.get(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return unreadable(errnoText(errno));
        if (count == 0)
            break;
        data.append(buffer, count);
        // It may have grown since fstat.
        if (data.size() > maxFileSize)
            return unreadable(tooLarge);
    }
    const QString problem = parseSlot(data, slot, stored);
    if (!problem.isEmpty()) {
        return storeError(tr("The saved DNS configuration (%1) is damaged (%2); fix or delete the file.")
                              .arg(m_path, problem));
    }
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::read(DnsSlot &slot) const
{
    QJsonObject stored;
    return load(slot, stored);
}

std::optional<PlatformError> DnsSlotStore::write(const DnsSlot &slot, QJsonObject document) const
{
    // Keys this version does not know stay, for the version that wrote them.
    const QJsonObject configuration = configurationObject(slot);
    document.remove(QStringLiteral("dnsSettings"));
    for (auto it = configuration.begin(); it != configuration.end(); ++it)
        document.insert(it.key(), it.value());
    document.insert(QStringLiteral("format"), formatVersion);
    const QByteArray bytes = QJsonDocument(document).toJson(QJsonDocument::Indented);

    const auto failed = [&](int error) {
        return storeError(
            tr("The DNS configuration could not be written to %1: %2.").arg(m_path, errnoText(error)));
    };
    QByteArray temporary = nativePath(m_path) + ".XXXXXX";
    FileDescriptor fd(::mkostemp(temporary.data(), O_CLOEXEC));
    if (fd.get() < 0)
        return failed(errno);
    const auto discard = [&](int error) {
        fd.reset();
        ::unlink(temporary.constData());
        return failed(error);
    };
    // Private before the first byte goes in, whatever the umask.
    if (::fchmod(fd.get(), 0600) != 0)
        return discard(errno);
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t count = ::write(fd.get(), bytes.constData() + done, size_t(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return discard(count < 0 ? errno : ENOSPC);
        done += count;
    }
    if (syncFile(fd.get()) != 0)
        return discard(errno);
    if (const int error = fd.close())
        return discard(error);
    if (::rename(temporary.constData(), nativePath(m_path).constData()) != 0)
        return discard(errno);
    if (const int error = syncDirectory(QFileInfo(m_path).absolutePath()))
        return storeError(tr("The DNS configuration was written to %1 but may not survive a power cut: %2.")
                              .arg(m_path, errnoText(error)));
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::remove() const
{
    if (::unlink(nativePath(m_path).constData()) != 0 && errno != ENOENT)
        return storeError(
            tr("The DNS configuration (%1) could not be removed: %2.").arg(m_path, errnoText(errno)));
    if (const int error = syncDirectory(QFileInfo(m_path).absolutePath()))
        return storeError(
            tr("The DNS configuration (%1) could not be removed: %2.").arg(m_path, errnoText(error)));
    return std::nullopt;
}

std::optional<PlatformError> DnsSlotStore::update(const std::function<Change(DnsSlot &)> &change)
{
    if (auto error = checkDirectory(true))
        return error;

    // A kernel lock on a file that is never deleted: it goes with the process that held it, however that
    // process ends, and no two holders can ever hold it on different files.
    const QString lockPath = m_path + QStringLiteral(".lock");
    const auto lockError = [&](const QString &why) {
        return storeError(
            tr("The lock file of the DNS configuration (%1) cannot be used: %2.").arg(lockPath, why));
    };
    FileDescriptor lock(::open(
        nativePath(lockPath).constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (lock.get() < 0)
        return lockError(openFailure(errno));
    struct stat info
    {
    };
    if (::fstat(lock.get(), &info) != 0)
        return lockError(errnoText(errno));
    if (!S_ISREG(info.st_mode))
        return lockError(fileKind(info.st_mode));
    if (info.st_uid != ::geteuid())
        return lockError(
            tr("it belongs to user %1, not to this user (%2)").arg(info.st_uid).arg(::geteuid()));
    // Created under a strict umask, it could not be opened again.
    if ((info.st_mode & 0600) != 0600 && ::fchmod(lock.get(), 0600) != 0)
        return lockError(errnoText(errno));
    const QDeadlineTimer deadline(lockTimeoutMs);
    while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return lockError(errnoText(errno));
        if (deadline.hasExpired())
            return storeError(
                tr("The DNS configuration (%1) is locked by another program; try again.").arg(m_path));
        QThread::msleep(10);
    }

    DnsSlot slot;
    QJsonObject stored;
    if (auto error = load(slot, stored))
        return error;
    switch (change(slot)) {
    case Change::Keep:
        return std::nullopt;
    case Change::Write:
        return write(slot, stored);
    case Change::Delete:
        return remove();
    }
    return std::nullopt;
}

} // namespace brivanta
