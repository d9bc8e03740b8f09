#include "platform/linux/dns_apply/dns_apply.h"

#include "forwarder/forwarder_config.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brivanta {

namespace {

QString errnoText()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool syncPath(const QString &path, int flags = O_RDONLY)
{
    const int fd = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

// Replaces path (a symlink included, not its target) by a new file with these bytes, durably.
std::optional<QString> writeAtomically(const QString &path, const QByteArray &bytes, mode_t mode = 0644)
{
    const QString dir = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(dir))
        return QStringLiteral("cannot create %1").arg(dir);
    const QString temporary = path + QStringLiteral(".brivanta-new");
    const int fd = ::open(QFile::encodeName(temporary).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (fd < 0)
        return QStringLiteral("cannot write %1: %2").arg(temporary, errnoText());
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n <= 0) {
            ::close(fd);
            return QStringLiteral("cannot write %1: %2").arg(temporary, errnoText());
        }
        written += n;
    }
    ::fchmod(fd, mode);
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    if (!synced || ::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()) != 0)
        return QStringLiteral("cannot replace %1: %2").arg(path, errnoText());
    syncPath(dir, O_RDONLY | O_DIRECTORY);
    return std::nullopt;
}

QString readLink(const QString &path)
{
    char buffer[4096];
    const ssize_t n = ::readlink(QFile::encodeName(path).constData(), buffer, sizeof buffer - 1);
    return n < 0 ? QString() : QFile::decodeName(QByteArray(buffer, n));
}

bool isLoopbackForwarder(const QString &server)
{
    return server == QLatin1String("127.0.0.53") || server == QLatin1String("127.0.0.54")
        || server == QLatin1String(forwarderAddress);
}

} // namespace

DnsApplyPaths::DnsApplyPaths(QString rootDir)
    : root(std::move(rootDir))
{
    resolvConf = at(QStringLiteral("/etc/resolv.conf"));
    resolvedRunDir = at(QStringLiteral("/run/systemd/resolve"));
    resolvedDropIn = at(QStringLiteral("/etc/systemd/resolved.conf.d/90-brivanta.conf"));
    networkManagerRunDir = at(QStringLiteral("/run/NetworkManager"));
    networkManagerDropIn = at(QStringLiteral("/etc/NetworkManager/conf.d/90-brivanta.conf"));
    systemdRunDir = at(QStringLiteral("/run/systemd/system"));
    forwarderConfig = at(QStringLiteral("/etc/brivanta/dohd.conf"));
    stateDir = at(QStringLiteral("/run/brivanta"));
    libDir = at(QStringLiteral("/var/lib/brivanta"));
    stateFile = libDir + QStringLiteral("/state.json");
    journalFile = libDir + QStringLiteral("/journal.json");
    backupDir = libDir + QStringLiteral("/backup");
}

QString DnsApplyPaths::at(const QString &absolute) const
{
    return root == QLatin1String("/") ? absolute : QDir::cleanPath(root + absolute);
}

QString toString(ResolverStack stack)
{
    switch (stack) {
    case ResolverStack::Resolved:
        return QStringLiteral("resolved");
    case ResolverStack::NetworkManager:
        return QStringLiteral("networkmanager");
    case ResolverStack::ResolvConf:
        break;
    }
    return QStringLiteral("resolvconf");
}

std::optional<ResolverStack> stackFromString(const QString &text)
{
    for (ResolverStack stack : { ResolverStack::Resolved, ResolverStack::NetworkManager, ResolverStack::ResolvConf }) {
        if (toString(stack) == text)
            return stack;
    }
    return std::nullopt;
}

QByteArray resolvedDropInText()
{
    // The empty assignments clear what other files set: an admin's DNS= would otherwise stay in the same
    // global list and win queries. "~." makes the global scope the route for every name.
    return "# Written by brivanta-dns-apply: every lookup goes to brivanta-dohd. Removed on disable.\n"
           "[Resolve]\nDNS=\nDNS=127.0.0.153\nDomains=\nDomains=~.\nDNSOverTLS=no\n";
}

QByteArray networkManagerDropInText()
{
    return "# Written by brivanta-dns-apply: every lookup goes to brivanta-dohd. Removed on disable.\n"
           "[global-dns-domain-*]\nservers=127.0.0.153\n";
}

QByteArray resolvConfText()
{
    return "# Written by brivanta-dns-apply: every lookup goes to brivanta-dohd.\n"
           "# The original file comes back on \"brivanta-dns disable\".\n"
           "nameserver 127.0.0.153\noptions edns0 trust-ad\n";
}

QByteArray forwarderConfigText(const QString &endpoint, const QStringList &bootstrap, const QString &stateDir)
{
    QByteArray text = "# Written by brivanta-dns-apply. Local settings belong in dohd.local.conf beside it.\n";
    text += "endpoint = " + endpoint.toUtf8() + "\n";
    text += "listen = 127.0.0.153:53\n";
    text += "bootstrap = " + bootstrap.join(QLatin1Char(' ')).toUtf8() + "\n";
    text += "state-dir = " + stateDir.toUtf8() + "\n";
    return text;
}

QStringList nameservers(const QByteArray &resolvConf)
{
    QStringList servers;
    for (const QByteArray &raw : resolvConf.split('\n')) {
        const QList<QByteArray> fields = raw.simplified().split(' ');
        if (fields.size() >= 2 && fields[0] == "nameserver")
            servers << QString::fromLatin1(fields[1]);
    }
    return servers;
}

struct DnsApply::Journal
{
    struct Original
    {
        QString path;
        bool existed = false;
        QString symlinkTarget;
        QString backup;
        int mode = 0644;
    };

    bool exists = false;
    QString endpoint;
    ResolverStack stack = ResolverStack::ResolvConf;
    QStringList previousServers;
    std::vector<Original> originals;
    QStringList createdDirs;

    static Journal load(const DnsApplyPaths &paths)
    {
        Journal journal;
        QFile file(paths.journalFile);
        if (!file.open(QIODevice::ReadOnly))
            return journal;
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        journal.exists = true;
        journal.endpoint = object.value(QLatin1String("endpoint")).toString();
        journal.stack = stackFromString(object.value(QLatin1String("stack")).toString()).value_or(ResolverStack::ResolvConf);
        for (const QJsonValue &server : object.value(QLatin1String("previousServers")).toArray())
            journal.previousServers << server.toString();
        for (const QJsonValue &dir : object.value(QLatin1String("createdDirs")).toArray())
            journal.createdDirs << dir.toString();
        for (const QJsonValue &value : object.value(QLatin1String("originals")).toArray()) {
            const QJsonObject o = value.toObject();
            journal.originals.push_back({ o.value(QLatin1String("path")).toString(),
                o.value(QLatin1String("existed")).toBool(), o.value(QLatin1String("symlink")).toString(),
                o.value(QLatin1String("backup")).toString(), o.value(QLatin1String("mode")).toInt(0644) });
        }
        return journal;
    }

    std::optional<QString> save(const DnsApplyPaths &paths)
    {
        QJsonArray originalsJson;
        for (const Original &o : originals) {
            originalsJson.append(QJsonObject { { QStringLiteral("path"), o.path }, { QStringLiteral("existed"), o.existed },
                { QStringLiteral("symlink"), o.symlinkTarget }, { QStringLiteral("backup"), o.backup },
                { QStringLiteral("mode"), o.mode } });
        }
        const QJsonObject object { { QStringLiteral("version"), 1 }, { QStringLiteral("endpoint"), endpoint },
            { QStringLiteral("stack"), toString(stack) },
            { QStringLiteral("previousServers"), QJsonArray::fromStringList(previousServers) },
            { QStringLiteral("createdDirs"), QJsonArray::fromStringList(createdDirs) },
            { QStringLiteral("originals"), originalsJson } };
        exists = true;
        return writeAtomically(paths.journalFile, QJsonDocument(object).toJson(), 0600);
    }

    // Notes what path is now, before it first changes.
    std::optional<QString> remember(const DnsApplyPaths &paths, const QString &path)
    {
        for (const Original &o : originals) {
            if (o.path == path)
                return std::nullopt;
        }
        Original original;
        original.path = path;
        struct stat st {};
        if (::lstat(QFile::encodeName(path).constData(), &st) == 0) {
            original.existed = true;
            original.mode = int(st.st_mode & 07777);
            if (S_ISLNK(st.st_mode)) {
                original.symlinkTarget = readLink(path);
            } else {
                QFile file(path);
                if (!file.open(QIODevice::ReadOnly))
                    return QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
                original.backup = QStringLiteral("%1/%2").arg(paths.backupDir).arg(originals.size());
                if (auto error = writeAtomically(original.backup, file.readAll(), 0600))
                    return error;
            }
        }
        // Directories we create for our files go again on disable.
        for (QString dir = QFileInfo(path).absolutePath(); !QFileInfo::exists(dir); dir = QFileInfo(dir).absolutePath())
            createdDirs.prepend(dir);
        originals.push_back(original);
        return save(paths);
    }

    static std::optional<QString> restore(const Original &o)
    {
        const QByteArray path = QFile::encodeName(o.path);
        if (!o.existed) {
            if (::unlink(path.constData()) != 0 && errno != ENOENT)
                return QStringLiteral("cannot remove %1: %2").arg(o.path, errnoText());
            return std::nullopt;
        }
        if (!o.symlinkTarget.isEmpty()) {
            if (readLink(o.path) == o.symlinkTarget)
                return std::nullopt;
            const QByteArray temporary = path + ".brivanta-link";
            ::unlink(temporary.constData());
            if (::symlink(QFile::encodeName(o.symlinkTarget).constData(), temporary.constData()) != 0
                || ::rename(temporary.constData(), path.constData()) != 0)
                return QStringLiteral("cannot restore the link %1: %2").arg(o.path, errnoText());
            return std::nullopt;
        }
        QFile backup(o.backup);
        if (!backup.open(QIODevice::ReadOnly))
            return QStringLiteral("the copy of %1 is missing (%2)").arg(o.path, o.backup);
        return writeAtomically(o.path, backup.readAll(), mode_t(o.mode));
    }
};

DnsApply::DnsApply(DnsApplyPaths paths, SystemActions &system)
    : m_paths(std::move(paths))
    , m_system(system)
{
}

ResolverStack DnsApply::detectStack() const
{
    QFile file(m_paths.resolvConf);
    const QByteArray resolvConf = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QString link = readLink(m_paths.resolvConf);
    if (QFileInfo::exists(m_paths.resolvedRunDir + QStringLiteral("/io.systemd.Resolve"))
        || nameservers(resolvConf).contains(QLatin1String("127.0.0.53")))
        return ResolverStack::Resolved;
    if (QFileInfo::exists(m_paths.networkManagerRunDir)
        && (resolvConf.contains("Generated by NetworkManager") || link.contains(QLatin1String("NetworkManager"))))
        return ResolverStack::NetworkManager;
    return ResolverStack::ResolvConf;
}

QStringList DnsApply::previousServers(ResolverStack stack) const
{
    // resolved keeps the servers it really uses in its own resolv.conf; the stub file only names itself.
    const QString source = stack == ResolverStack::Resolved
        ? m_paths.resolvedRunDir + QStringLiteral("/resolv.conf")
        : m_paths.resolvConf;
    QFile file(source);
    QStringList servers;
    if (!file.open(QIODevice::ReadOnly))
        return servers;
    for (const QString &server : nameservers(file.readAll())) {
        if (!QHostAddress(server.section(QLatin1Char('%'), 0, 0)).isNull() && !isLoopbackForwarder(server)
            && !servers.contains(server))
            servers << server.section(QLatin1Char('%'), 0, 0);
    }
    return servers;
}

std::optional<QString> DnsApply::replaceFile(Journal &journal, const QString &path, const QByteArray &contents)
{
    if (auto error = journal.remember(m_paths, path))
        return error;
    return writeAtomically(path, contents);
}

std::optional<QString> DnsApply::reloadResolver(ResolverStack stack)
{
    QString error;
    const bool systemd = QFileInfo::exists(m_paths.systemdRunDir);
    switch (stack) {
    case ResolverStack::Resolved:
        if (systemd ? m_system.run({ QStringLiteral("systemctl"), QStringLiteral("try-reload-or-restart"),
                                       QStringLiteral("systemd-resolved.service") },
                          error)
                    : m_system.reloadResolvedDirectly(error))
            return std::nullopt;
        break;
    case ResolverStack::NetworkManager:
        if (m_system.run({ QStringLiteral("nmcli"), QStringLiteral("general"), QStringLiteral("reload"),
                             QStringLiteral("conf"), QStringLiteral("dns-rc") },
                error)
            || (systemd
                && m_system.run({ QStringLiteral("systemctl"), QStringLiteral("reload"), QStringLiteral("NetworkManager.service") },
                    error)))
            return std::nullopt;
        break;
    case ResolverStack::ResolvConf:
        return std::nullopt;
    }
    return QStringLiteral("could not reload the resolver: %1").arg(error);
}

std::optional<QString> DnsApply::route(Journal &journal)
{
    std::optional<QString> error;
    switch (journal.stack) {
    case ResolverStack::Resolved:
        error = replaceFile(journal, m_paths.resolvedDropIn, resolvedDropInText());
        break;
    case ResolverStack::NetworkManager:
        error = replaceFile(journal, m_paths.networkManagerDropIn, networkManagerDropInText());
        break;
    case ResolverStack::ResolvConf:
        error = replaceFile(journal, m_paths.resolvConf, resolvConfText());
        break;
    }
    if (error)
        return error;
    return reloadResolver(journal.stack);
}

std::optional<QString> DnsApply::unroute(Journal &journal)
{
    std::optional<QString> firstError;
    for (const Journal::Original &original : journal.originals) {
        if (original.path == m_paths.forwarderConfig)
            continue;
        if (auto error = Journal::restore(original); error && !firstError)
            firstError = error;
    }
    if (auto error = reloadResolver(journal.stack); error && !firstError)
        firstError = error;
    return firstError;
}

std::optional<QString> DnsApply::startForwarder()
{
    QString error;
    if (QFileInfo::exists(m_paths.systemdRunDir)) {
        // Stopping the service first makes the new configuration count.
        m_system.run({ QStringLiteral("systemctl"), QStringLiteral("stop"), QStringLiteral("brivanta-dohd.service") }, error);
        if (!m_system.run(
                { QStringLiteral("systemctl"), QStringLiteral("restart"), QStringLiteral("brivanta-dohd.socket") }, error))
            return QStringLiteral("could not start brivanta-dohd: %1").arg(error);
    } else {
        m_system.stopForwarder(m_paths);
        if (!m_system.startForwarder(m_paths, error))
            return QStringLiteral("could not start brivanta-dohd: %1").arg(error);
    }
    if (!m_system.waitForForwarder())
        return QStringLiteral("brivanta-dohd does not answer on %1").arg(QLatin1String(forwarderAddress));
    return std::nullopt;
}

void DnsApply::stopForwarder()
{
    QString error;
    if (QFileInfo::exists(m_paths.systemdRunDir)) {
        m_system.run({ QStringLiteral("systemctl"), QStringLiteral("stop"), QStringLiteral("brivanta-dohd.socket"),
                         QStringLiteral("brivanta-dohd.service") },
            error);
    } else {
        m_system.stopForwarder(m_paths);
    }
}

std::optional<QString> DnsApply::writeState(const QString &phase, const Journal *journal, qint64 pausedUntilMs)
{
    QJsonObject object { { QStringLiteral("version"), 1 }, { QStringLiteral("phase"), phase } };
    if (journal) {
        object.insert(QStringLiteral("endpoint"), journal->endpoint);
        object.insert(QStringLiteral("stack"), toString(journal->stack));
        object.insert(QStringLiteral("previousServers"), QJsonArray::fromStringList(journal->previousServers));
        object.insert(QStringLiteral("appliedAtMs"), m_system.nowMs());
        object.insert(QStringLiteral("pausedUntilMs"), pausedUntilMs);
    }
    return writeAtomically(m_paths.stateFile, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n', 0644);
}

std::optional<QString> DnsApply::enable(const QString &endpoint)
{
    if (auto problem = endpointProblem(endpoint))
        return *problem;
    Journal journal = Journal::load(m_paths);
    if (!journal.exists) {
        journal.stack = detectStack();
        journal.previousServers = previousServers(journal.stack);
    }
    journal.endpoint = endpoint;
    if (auto error = journal.save(m_paths))
        return error;
    std::optional<QString> error
        = replaceFile(journal, m_paths.forwarderConfig, forwarderConfigText(endpoint, journal.previousServers, m_paths.stateDir));
    if (!error)
        error = startForwarder();
    if (!error)
        error = route(journal);
    if (error) {
        // Nothing half-done stays behind: the machine keeps the DNS it had.
        disable();
        return error;
    }
    m_notes << QStringLiteral("Every lookup now goes through brivanta-dohd to %1 (%2).").arg(endpoint, toString(journal.stack));
    return writeState(QStringLiteral("applied"), &journal);
}

std::optional<QString> DnsApply::disable()
{
    Journal journal = Journal::load(m_paths);
    if (!journal.exists) {
        m_notes << QStringLiteral("Nothing to undo: Brivanta had not changed this computer's DNS.");
        return writeState(QStringLiteral("disabled"), nullptr);
    }
    // First the machine's own DNS back, then the forwarder away: lookups never go unanswered.
    std::optional<QString> error = unroute(journal);
    stopForwarder();
    for (const Journal::Original &original : journal.originals) {
        if (original.path == m_paths.forwarderConfig) {
            if (auto restoreError = Journal::restore(original); restoreError && !error)
                error = restoreError;
        }
    }
    if (error)
        return error; // the journal stays, so that disable can be run again
    for (auto dir = journal.createdDirs.crbegin(); dir != journal.createdDirs.crend(); ++dir)
        QDir().rmdir(*dir);
    QDir(m_paths.backupDir).removeRecursively();
    QFile::remove(m_paths.journalFile);
    m_notes << QStringLiteral("This computer's DNS is as it was before Brivanta.");
    return writeState(QStringLiteral("disabled"), nullptr);
}

std::optional<QString> DnsApply::pause(int seconds)
{
    Journal journal = Journal::load(m_paths);
    if (!journal.exists || state().value(QLatin1String("phase")).toString() != QLatin1String("applied"))
        return QStringLiteral("Brivanta is not switched on: there is nothing to pause.");
    if (auto error = unroute(journal))
        return error;
    QString error;
    if (!m_system.scheduleResume(seconds, error)) {
        route(journal);
        return QStringLiteral("could not schedule the resume: %1").arg(error);
    }
    m_notes << QStringLiteral("Paused for %1 s: lookups use this computer's own DNS until then.").arg(seconds);
    return writeState(QStringLiteral("paused"), &journal, m_system.nowMs() + qint64(seconds) * 1000);
}

std::optional<QString> DnsApply::resume()
{
    Journal journal = Journal::load(m_paths);
    if (!journal.exists || state().value(QLatin1String("phase")).toString() != QLatin1String("paused")) {
        m_notes << QStringLiteral("Not paused: nothing to resume.");
        return std::nullopt;
    }
    if (auto error = route(journal))
        return error;
    m_notes << QStringLiteral("Resumed: every lookup goes through brivanta-dohd again.");
    return writeState(QStringLiteral("applied"), &journal);
}

QJsonObject DnsApply::state() const
{
    QFile file(m_paths.stateFile);
    if (file.open(QIODevice::ReadOnly)) {
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        if (!object.isEmpty())
            return object;
    }
    return QJsonObject { { QStringLiteral("version"), 1 }, { QStringLiteral("phase"), QStringLiteral("disabled") } };
}

} // namespace brivanta
