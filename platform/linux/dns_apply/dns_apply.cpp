#include "platform/linux/dns_apply/dns_apply.h"

#include "forwarder/forwarder_config.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <arpa/inet.h>
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

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

void syncDirectory(const QString &dir)
{
    const int fd = ::open(encoded(dir).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

std::optional<QString> makeDirectory(const QString &dir, mode_t mode)
{
    if (QFileInfo(dir).isDir())
        return std::nullopt;
    if (auto error = makeDirectory(QFileInfo(dir).absolutePath(), 0755))
        return error;
    if (::mkdir(encoded(dir).constData(), mode) != 0 && errno != EEXIST)
        return QStringLiteral("cannot create %1: %2").arg(dir, errnoText());
    return std::nullopt;
}

// Replaces path (a symlink itself, not its target) by a file with these bytes, durably: synced, renamed
// into place, directory synced.
std::optional<QString> writeAtomically(const QString &path, const QByteArray &bytes, mode_t mode)
{
    const QString dir = QFileInfo(path).absolutePath();
    if (auto error = makeDirectory(dir, 0755))
        return error;
    const QString temporary = path + QStringLiteral(".brivanta-new");
    const int fd = ::open(encoded(temporary).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (fd < 0)
        return QStringLiteral("cannot write %1: %2").arg(temporary, errnoText());
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            const QString error = QStringLiteral("cannot write %1: %2").arg(temporary, errnoText());
            ::close(fd);
            ::unlink(encoded(temporary).constData());
            return error;
        }
        written += n;
    }
    const bool ok = ::fchmod(fd, mode) == 0 && ::fsync(fd) == 0;
    ::close(fd);
    if (!ok || ::rename(encoded(temporary).constData(), encoded(path).constData()) != 0) {
        const QString error = QStringLiteral("cannot replace %1: %2").arg(path, errnoText());
        ::unlink(encoded(temporary).constData());
        return error;
    }
    syncDirectory(dir);
    return std::nullopt;
}

std::optional<QString> removeFile(const QString &path)
{
    if (::unlink(encoded(path).constData()) != 0 && errno != ENOENT)
        return QStringLiteral("cannot remove %1: %2").arg(path, errnoText());
    syncDirectory(QFileInfo(path).absolutePath());
    return std::nullopt;
}

QString readLink(const QString &path)
{
    char buffer[4096];
    const ssize_t n = ::readlink(encoded(path).constData(), buffer, sizeof buffer);
    return n < 0 || size_t(n) == sizeof buffer ? QString() : QFile::decodeName(QByteArray(buffer, n));
}

bool isSymlink(const QString &path)
{
    struct stat st
    {
    };
    return ::lstat(encoded(path).constData(), &st) == 0 && S_ISLNK(st.st_mode);
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isIpAddress(const QString &text)
{
    const QByteArray address = text.section(QLatin1Char('%'), 0, 0).toLatin1();
    unsigned char buffer[16];
    return ::inet_pton(AF_INET, address.constData(), buffer) == 1
        || ::inet_pton(AF_INET6, address.constData(), buffer) == 1;
}

// resolved's stub listeners and our own forwarder: never a server to bootstrap through.
bool isLocalStub(const QString &server)
{
    return server == QLatin1String("127.0.0.53") || server == QLatin1String("127.0.0.54")
        || server == QLatin1String(forwarderAddress);
}

const QString systemctl = QStringLiteral("systemctl");
const QString socketUnit = QStringLiteral("brivanta-dohd.socket");
const QString serviceUnit = QStringLiteral("brivanta-dohd.service");
const QString resumeUnit = QStringLiteral("brivanta-dns-resume");

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
    forwarderStateDir = at(QStringLiteral("/run/brivanta"));
    libDir = at(QStringLiteral("/var/lib/brivanta"));
    stateFile = libDir + QStringLiteral("/state.json");
    journalFile = libDir + QStringLiteral("/journal.json");
    backupDir = libDir + QStringLiteral("/backup");
    helperProgram = QStringLiteral("/usr/libexec/brivanta/brivanta-dns-apply");
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
    for (ResolverStack stack :
        { ResolverStack::Resolved, ResolverStack::NetworkManager, ResolverStack::ResolvConf }) {
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

QByteArray forwarderConfigText(const QString &endpoint, const QStringList &bootstrap)
{
    QByteArray text
        = "# Written by brivanta-dns-apply. Local settings belong in dohd.local.conf beside it.\n";
    text += "endpoint = " + endpoint.toUtf8() + "\n";
    text += "listen = 127.0.0.153:53\n";
    text += "bootstrap = " + bootstrap.join(QLatin1Char(' ')).toUtf8() + "\n";
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

DnsApply::DnsApply(DnsApplyPaths paths, SystemActions &system, StepLog log)
    : m_paths(std::move(paths))
    , m_system(system)
    , m_log(std::move(log))
{ }

void DnsApply::step(const QString &line)
{
    if (m_log)
        m_log(line);
}

bool DnsApply::systemd() const
{
    return QFileInfo::exists(m_paths.systemdRunDir);
}

QString DnsApply::routedFile(ResolverStack stack) const
{
    switch (stack) {
    case ResolverStack::Resolved:
        return m_paths.resolvedDropIn;
    case ResolverStack::NetworkManager:
        return m_paths.networkManagerDropIn;
    case ResolverStack::ResolvConf:
        break;
    }
    return m_paths.resolvConf;
}

ResolverStack DnsApply::detectStack() const
{
    const QByteArray resolvConf = readAll(m_paths.resolvConf);
    const QString link = readLink(m_paths.resolvConf);
    if (QFileInfo::exists(m_paths.resolvedRunDir + QStringLiteral("/io.systemd.Resolve"))
        || (QFileInfo::exists(m_paths.resolvedRunDir)
            && (nameservers(resolvConf).contains(QLatin1String("127.0.0.53"))
                || link.contains(QLatin1String("/run/systemd/resolve/")))))
        return ResolverStack::Resolved;
    if (QFileInfo::exists(m_paths.networkManagerRunDir)
        && (resolvConf.contains("Generated by NetworkManager")
            || link.contains(QLatin1String("NetworkManager"))))
        return ResolverStack::NetworkManager;
    return ResolverStack::ResolvConf;
}

QStringList DnsApply::previousServers(ResolverStack stack) const
{
    // resolved lists the servers it really uses in its own resolv.conf; the stub file names only itself.
    const QString source = stack == ResolverStack::Resolved
        ? m_paths.resolvedRunDir + QStringLiteral("/resolv.conf")
        : m_paths.resolvConf;
    QStringList servers;
    for (const QString &server : nameservers(readAll(source))) {
        if (isIpAddress(server) && !isLocalStub(server) && !servers.contains(server))
            servers << server;
    }
    return servers;
}

std::optional<QString> DnsApply::loadJournal(Journal &journal) const
{
    journal = Journal();
    QFile file(m_paths.journalFile);
    if (!file.exists())
        return std::nullopt;
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(
        file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(), &parseError);
    const auto stack = stackFromString(document.object().value(QLatin1String("stack")).toString());
    // Guessing here could lose the machine's own settings: a damaged journal stops everything.
    if (parseError.error != QJsonParseError::NoError || !stack)
        return QStringLiteral("the undo journal %1 is damaged; fix or remove it by hand")
            .arg(m_paths.journalFile);
    const QJsonObject object = document.object();
    journal.exists = true;
    journal.stack = *stack;
    journal.endpoint = object.value(QLatin1String("endpoint")).toString();
    journal.appliedAtMs = object.value(QLatin1String("appliedAtMs")).toInteger();
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
    return std::nullopt;
}

std::optional<QString> DnsApply::saveJournal(const Journal &journal)
{
    QJsonArray originals;
    for (const Original &o : journal.originals) {
        originals.append(QJsonObject { { QStringLiteral("path"), o.path },
            { QStringLiteral("existed"), o.existed }, { QStringLiteral("symlink"), o.symlinkTarget },
            { QStringLiteral("backup"), o.backup }, { QStringLiteral("mode"), o.mode } });
    }
    const QJsonObject object { { QStringLiteral("version"), 1 },
        { QStringLiteral("endpoint"), journal.endpoint },
        { QStringLiteral("stack"), toString(journal.stack) },
        { QStringLiteral("previousServers"), QJsonArray::fromStringList(journal.previousServers) },
        { QStringLiteral("appliedAtMs"), journal.appliedAtMs },
        { QStringLiteral("createdDirs"), QJsonArray::fromStringList(journal.createdDirs) },
        { QStringLiteral("originals"), originals } };
    return writeAtomically(m_paths.journalFile, QJsonDocument(object).toJson(), 0600);
}

std::optional<QString> DnsApply::remember(Journal &journal, const QString &path)
{
    for (const Original &o : journal.originals) {
        if (o.path == path)
            return std::nullopt;
    }
    Original original;
    original.path = path;
    struct stat st
    {
    };
    if (::lstat(encoded(path).constData(), &st) == 0) {
        original.existed = true;
        original.mode = int(st.st_mode & 07777);
        if (S_ISLNK(st.st_mode)) {
            original.symlinkTarget = readLink(path);
        } else if (S_ISREG(st.st_mode)) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                return QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
            // Named after the path, so that a copy left by a crash before the journal named it is reused.
            QString name = path.mid(m_paths.at(QStringLiteral("/")).size());
            original.backup
                = m_paths.backupDir + QLatin1Char('/') + name.replace(QLatin1Char('/'), QLatin1Char('_'));
            if (auto error = makeDirectory(m_paths.backupDir, 0700))
                return error;
            if (auto error = writeAtomically(original.backup, file.readAll(), 0600))
                return error;
        } else {
            return QStringLiteral("%1 is neither a file nor a link: left alone").arg(path);
        }
    }
    // Directories made for our files go again on disable.
    QStringList created;
    for (QString dir = QFileInfo(path).absolutePath(); !QFileInfo::exists(dir);
         dir = QFileInfo(dir).absolutePath())
        created.prepend(dir);
    for (const QString &dir : created) {
        if (!journal.createdDirs.contains(dir))
            journal.createdDirs << dir;
    }
    journal.originals.push_back(original);
    if (auto error = saveJournal(journal))
        return error;
    step(original.existed ? QStringLiteral("kept %1 as it was in the journal").arg(path)
                          : QStringLiteral("noted in the journal that %1 did not exist").arg(path));
    return std::nullopt;
}

std::optional<QString> DnsApply::restore(Journal &journal, const QString &path)
{
    const auto found = std::find_if(journal.originals.begin(), journal.originals.end(),
        [&](const Original &o) { return o.path == path; });
    if (found == journal.originals.end())
        return std::nullopt;
    const Original original = *found;
    const QByteArray name = encoded(path);
    if (!original.existed) {
        if (auto error = removeFile(path))
            return error;
    } else if (!original.symlinkTarget.isEmpty()) {
        if (!isSymlink(path) || readLink(path) != original.symlinkTarget) {
            const QByteArray temporary = name + ".brivanta-link";
            ::unlink(temporary.constData());
            if (::symlink(encoded(original.symlinkTarget).constData(), temporary.constData()) != 0
                || ::rename(temporary.constData(), name.constData()) != 0)
                return QStringLiteral("cannot restore the link %1: %2").arg(path, errnoText());
            syncDirectory(QFileInfo(path).absolutePath());
        }
    } else {
        QFile backup(original.backup);
        if (!backup.open(QIODevice::ReadOnly))
            return QStringLiteral("the copy of %1 is missing (%2)").arg(path, original.backup);
        if (auto error = writeAtomically(path, backup.readAll(), mode_t(original.mode)))
            return error;
    }
    // The copy goes only once the journal no longer names it: a crash in between restores again.
    journal.originals.erase(found);
    if (auto error = saveJournal(journal))
        return error;
    if (!original.backup.isEmpty())
        removeFile(original.backup);
    step(QStringLiteral("restored %1").arg(path));
    return std::nullopt;
}

std::optional<QString> DnsApply::replaceFile(
    Journal &journal, const QString &path, const QByteArray &contents)
{
    if (auto error = remember(journal, path))
        return error;
    if (!isSymlink(path) && readAll(path) == contents && QFileInfo(path).isFile())
        return std::nullopt;
    if (auto error = writeAtomically(path, contents, 0644))
        return error;
    step(QStringLiteral("wrote %1").arg(path));
    return std::nullopt;
}

std::optional<QString> DnsApply::reloadResolver(ResolverStack stack)
{
    QString error;
    switch (stack) {
    case ResolverStack::Resolved:
        if (systemd() ? m_system.run(
                { systemctl, QStringLiteral("try-reload-or-restart"), QStringLiteral("systemd-resolved") },
                error)
                      : m_system.reloadResolvedDirectly(error)) {
            step(QStringLiteral("systemd-resolved read its configuration again"));
            return std::nullopt;
        }
        break;
    case ResolverStack::NetworkManager:
        // "conf" makes NetworkManager read conf.d again, where the global DNS lives; dns-rc rewrites
        // resolv.conf.
        if (m_system.run({ QStringLiteral("nmcli"), QStringLiteral("general"), QStringLiteral("reload"),
                             QStringLiteral("conf"), QStringLiteral("dns-rc") },
                error)
            || (systemd()
                && m_system.run(
                    { systemctl, QStringLiteral("reload"), QStringLiteral("NetworkManager") }, error))) {
            step(QStringLiteral("NetworkManager read its configuration again"));
            return std::nullopt;
        }
        break;
    case ResolverStack::ResolvConf:
        return std::nullopt;
    }
    return QStringLiteral("could not reload the resolver: %1").arg(error);
}

std::optional<QString> DnsApply::route(Journal &journal)
{
    if (auto error = replaceFile(journal, routedFile(journal.stack), [&] {
            switch (journal.stack) {
            case ResolverStack::Resolved:
                return resolvedDropInText();
            case ResolverStack::NetworkManager:
                return networkManagerDropInText();
            case ResolverStack::ResolvConf:
                break;
            }
            return resolvConfText();
        }()))
        return error;
    return reloadResolver(journal.stack);
}

std::optional<QString> DnsApply::unroute(Journal &journal)
{
    std::optional<QString> firstError;
    QStringList routed;
    for (const Original &original : journal.originals) {
        if (original.path != m_paths.forwarderConfig)
            routed << original.path;
    }
    for (const QString &path : routed) {
        if (auto error = restore(journal, path); error && !firstError)
            firstError = error;
    }
    if (auto error = reloadResolver(journal.stack); error && !firstError)
        firstError = error;
    return firstError;
}

std::optional<QString> DnsApply::startForwarder()
{
    QString error;
    if (systemd()) {
        // Enabled, so that the sockets are there again after a reboot while the routing still points at them.
        if (!m_system.run({ systemctl, QStringLiteral("enable"), socketUnit }, error)
            || !m_system.run({ systemctl, QStringLiteral("restart"), socketUnit }, error)
            || !m_system.run({ systemctl, QStringLiteral("try-restart"), serviceUnit }, error))
            return QStringLiteral("could not start brivanta-dohd: %1").arg(error);
    } else {
        m_system.stopForwarder(m_paths);
        if (!m_system.startForwarder(m_paths, error))
            return QStringLiteral("could not start brivanta-dohd: %1").arg(error);
    }
    if (!m_system.waitForForwarder())
        return QStringLiteral("brivanta-dohd does not answer on %1:53").arg(QLatin1String(forwarderAddress));
    step(QStringLiteral("brivanta-dohd answers on %1:53").arg(QLatin1String(forwarderAddress)));
    return std::nullopt;
}

void DnsApply::stopForwarder()
{
    QString error;
    if (systemd()) {
        m_system.run({ systemctl, QStringLiteral("disable"), socketUnit }, error);
        m_system.run({ systemctl, QStringLiteral("stop"), socketUnit, serviceUnit }, error);
    } else {
        m_system.stopForwarder(m_paths);
    }
    step(QStringLiteral("stopped brivanta-dohd"));
}

std::optional<QString> DnsApply::scheduleResume(int seconds)
{
    QString error;
    if (!systemd()) {
        if (!m_system.scheduleResumeDetached(seconds, error))
            return QStringLiteral("could not schedule the resume: %1").arg(error);
        return std::nullopt;
    }
    // An earlier pause's timer would resume too early.
    m_system.run({ systemctl, QStringLiteral("stop"), resumeUnit + QStringLiteral(".timer") }, error);
    if (!m_system.run({ QStringLiteral("systemd-run"), QStringLiteral("--on-active=%1").arg(seconds),
                          QStringLiteral("--unit=%1").arg(resumeUnit), QStringLiteral("--collect"),
                          m_paths.helperProgram, QStringLiteral("resume") },
            error))
        return QStringLiteral("could not schedule the resume: %1").arg(error);
    return std::nullopt;
}

std::optional<QString> DnsApply::writeState(
    const QString &phase, const Journal *journal, qint64 pausedUntilMs)
{
    QJsonObject object { { QStringLiteral("version"), 1 }, { QStringLiteral("phase"), phase } };
    if (journal) {
        object.insert(QStringLiteral("endpoint"), journal->endpoint);
        object.insert(QStringLiteral("stack"), toString(journal->stack));
        object.insert(
            QStringLiteral("previousServers"), QJsonArray::fromStringList(journal->previousServers));
        object.insert(QStringLiteral("appliedAtMs"), journal->appliedAtMs);
        object.insert(QStringLiteral("pausedUntilMs"), pausedUntilMs);
    }
    if (auto error = writeAtomically(
            m_paths.stateFile, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n', 0644))
        return error;
    step(QStringLiteral("state: %1").arg(phase));
    return std::nullopt;
}

std::optional<QString> DnsApply::enable(const QString &endpoint)
{
    if (auto problem = validateEndpoint(endpoint))
        return *problem;
    Journal journal;
    if (auto error = loadJournal(journal))
        return error;
    // A journal left by an earlier enable already holds the machine's own servers: they are not read
    // again from files that may point at us by now.
    if (!journal.exists) {
        journal.stack = detectStack();
        journal.previousServers = previousServers(journal.stack);
    }
    journal.endpoint = endpoint;
    journal.appliedAtMs = m_system.nowMs();
    if (auto error = saveJournal(journal))
        return error;
    step(QStringLiteral("resolver: %1, the machine's servers: %2")
             .arg(toString(journal.stack),
                 journal.previousServers.isEmpty() ? QStringLiteral("none")
                                                   : journal.previousServers.join(QLatin1Char(' '))));
    std::optional<QString> error = replaceFile(
        journal, m_paths.forwarderConfig, forwarderConfigText(endpoint, journal.previousServers));
    if (!error)
        error = startForwarder();
    if (!error)
        error = route(journal);
    if (!error)
        error = writeState(QStringLiteral("applied"), &journal);
    if (error) {
        // Nothing half-done stays behind: the machine keeps the DNS it had.
        if (auto undoError = disable())
            return QStringLiteral("%1; undoing it failed too: %2").arg(*error, *undoError);
        return error;
    }
    return std::nullopt;
}

std::optional<QString> DnsApply::disable()
{
    Journal journal;
    if (auto error = loadJournal(journal))
        return error;
    if (journal.exists) {
        // First the machine's own DNS back, then the forwarder away: lookups never go unanswered.
        if (auto error = unroute(journal))
            return error; // the journal stays, so that disable can be run again
        stopForwarder();
        if (auto error = restore(journal, m_paths.forwarderConfig))
            return error;
        for (auto dir = journal.createdDirs.crbegin(); dir != journal.createdDirs.crend(); ++dir)
            ::rmdir(encoded(*dir).constData()); // only when empty
        if (auto error = removeFile(m_paths.journalFile))
            return error;
        QDir(m_paths.backupDir).removeRecursively();
        step(QStringLiteral("the machine's DNS is as it was before"));
    }
    if (state().value(QLatin1String("phase")).toString() == QLatin1String("disabled"))
        return std::nullopt;
    return writeState(QStringLiteral("disabled"), nullptr);
}

std::optional<QString> DnsApply::pause(int seconds)
{
    if (seconds < 1 || seconds > 86400)
        return QStringLiteral("pause takes a number of seconds from 1 to 86400");
    Journal journal;
    if (auto error = loadJournal(journal))
        return error;
    const QString phase = state().value(QLatin1String("phase")).toString();
    if (!journal.exists || (phase != QLatin1String("applied") && phase != QLatin1String("paused")))
        return QStringLiteral("Brivanta is not switched on: there is nothing to pause");
    if (auto error = unroute(journal))
        return error;
    if (auto error = scheduleResume(seconds)) {
        route(journal);
        return error;
    }
    return writeState(QStringLiteral("paused"), &journal, m_system.nowMs() + qint64(seconds) * 1000);
}

std::optional<QString> DnsApply::resume()
{
    Journal journal;
    if (auto error = loadJournal(journal))
        return error;
    if (!journal.exists || state().value(QLatin1String("phase")).toString() != QLatin1String("paused")) {
        step(QStringLiteral("not paused: nothing to resume"));
        return std::nullopt;
    }
    // After a reboot while paused nothing may listen any more.
    if (!m_system.waitForForwarder()) {
        if (auto error = startForwarder())
            return error;
    }
    if (auto error = route(journal))
        return error;
    return writeState(QStringLiteral("applied"), &journal);
}

QJsonObject DnsApply::state() const
{
    const QJsonObject object = QJsonDocument::fromJson(readAll(m_paths.stateFile)).object();
    if (!object.isEmpty())
        return object;
    return QJsonObject { { QStringLiteral("version"), 1 },
        { QStringLiteral("phase"), QStringLiteral("disabled") } };
}

} // namespace brivanta
