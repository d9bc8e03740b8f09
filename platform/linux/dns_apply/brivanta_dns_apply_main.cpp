// brivanta-dns-apply: the only part of Brivanta that runs as root, through pkexec (polkit action
// app.brivanta.dns.apply). It routes this computer's DNS through brivanta-dohd and undoes that exactly.

#include "brivanta_build_config.h"
#include "forwarder/canary.h"
#include "forwarder/forwarder_config.h"
#include "platform/linux/dns_apply/dns_apply.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThread>
#include <QUdpSocket>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace brivanta;

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

// Test hooks, honoured only when not started through pkexec.
QString testSetting(const char *name)
{
    return qEnvironmentVariableIsSet("PKEXEC_UID") ? QString() : qEnvironmentVariable(name);
}

QString forwarderProgram()
{
    const QString overridden = testSetting("BRIVANTA_DOHD");
    return overridden.isEmpty() ? QString::fromUtf8(build::libexecDir) + QStringLiteral("/brivanta-dohd")
                                : overridden;
}

// Processes whose command name is `comm` and whose arguments contain `argument`.
QList<pid_t> processes(const QByteArray &comm, const QByteArray &argument = QByteArray())
{
    QList<pid_t> found;
    QDirIterator it(QStringLiteral("/proc"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QString dir = it.next();
        bool numeric = false;
        const pid_t pid = pid_t(it.fileName().toInt(&numeric));
        if (!numeric)
            continue;
        QFile commFile(dir + QStringLiteral("/comm"));
        QFile cmdline(dir + QStringLiteral("/cmdline"));
        if (!commFile.open(QIODevice::ReadOnly) || commFile.readAll().trimmed() != comm)
            continue;
        if (!argument.isEmpty()
            && (!cmdline.open(QIODevice::ReadOnly) || !cmdline.readAll().contains(argument)))
            continue;
        found << pid;
    }
    return found;
}

// A live brivanta-dohd (a zombie has no command line left).
bool isForwarder(pid_t pid)
{
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
    QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
    return comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == "brivanta-dohd"
        && cmdline.open(QIODevice::ReadOnly) && !cmdline.read(1).isEmpty();
}

class LinuxSystemActions final : public SystemActions
{
public:
    bool run(const QStringList &command, QString &error) override
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(command.first(), command.mid(1));
        if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit
            || process.exitCode() != 0) {
            error = QStringLiteral("%1: %2").arg(command.join(QLatin1Char(' ')),
                process.error() == QProcess::FailedToStart
                    ? QStringLiteral("not found")
                    : QString::fromLocal8Bit(process.readAll()).trimmed());
            return false;
        }
        return true;
    }

    bool startForwarder(const DnsApplyPaths &paths, QString &error) override
    {
        // Without systemd nobody holds port 53 for the forwarder: it binds as root, then becomes nobody.
        QDir().mkpath(paths.forwarderStateDir);
        QProcess process;
        process.setProgram(QStringLiteral("setsid"));
        process.setArguments({ forwarderProgram(), QStringLiteral("--config"), paths.forwarderConfig,
            QStringLiteral("--user"), QStringLiteral("nobody") });
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(paths.forwarderStateDir + QStringLiteral("/dohd.log"));
        if (!process.startDetached()) {
            error = process.errorString();
            return false;
        }
        return true;
    }

    void stopForwarder(const DnsApplyPaths &paths) override
    {
        // The pid the forwarder wrote, if it is still that program, and any started with our configuration
        // before it got to write one.
        QList<pid_t> running = processes("brivanta-dohd", QFile::encodeName(paths.forwarderConfig));
        QFile health(paths.forwarderStateDir + QStringLiteral("/health.json"));
        if (health.open(QIODevice::ReadOnly)) {
            const auto pid = pid_t(
                QJsonDocument::fromJson(health.readAll()).object().value(QLatin1String("pid")).toInteger());
            if (pid > 1 && !running.contains(pid) && isForwarder(pid))
                running << pid;
        }
        for (pid_t pid : running)
            ::kill(pid, SIGTERM);
        QElapsedTimer waited;
        waited.start();
        while (std::any_of(running.cbegin(), running.cend(), isForwarder)) {
            if (waited.elapsed() > 3000) {
                for (pid_t pid : running)
                    ::kill(pid, SIGKILL);
                break;
            }
            QThread::msleep(20);
        }
    }

    bool waitForForwarder() override
    {
        // Any answer will do (a SERVFAIL too, while the endpoint is still unreachable): it listens.
        const QByteArray nonce = QByteArray::number(QRandomGenerator::system()->generate(), 16);
        QByteArray query("\x12\x34\x01\x00\x00\x01\x00\x00\x00\x00\x00\x00", 12);
        for (const QByteArray &label : (nonce + '.' + canarySuffix).split('.'))
            query += char(label.size()) + label;
        query += QByteArray("\x00\x00\x01\x00\x01", 5);
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < 8000) {
            QUdpSocket socket;
            socket.writeDatagram(query, QHostAddress(QLatin1String(forwarderAddress)), 53);
            if (socket.waitForReadyRead(300) && socket.hasPendingDatagrams())
                return true;
            QThread::msleep(100);
        }
        return false;
    }

    bool reloadResolvedDirectly(QString &error) override
    {
        // systemd-resolved 252 has no reload of its own (SIGHUP ends it), and without systemd nothing
        // would start it again: better refuse than leave the machine without its resolver.
        error = processes("systemd-resolve").isEmpty()
            ? QStringLiteral("systemd-resolved is not running")
            : QStringLiteral(
                "systemd-resolved runs without systemd, which could restart it with the new settings");
        return false;
    }

    bool scheduleResumeDetached(int seconds, QString &error) override
    {
        QProcess process;
        process.setProgram(QStringLiteral("setsid"));
        process.setArguments(
            { QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("sleep \"$0\"; exec \"$1\" resume"),
                QString::number(seconds), QCoreApplication::applicationFilePath() });
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        if (!process.startDetached()) {
            error = process.errorString();
            return false;
        }
        return true;
    }

    qint64 nowMs() const override { return QDateTime::currentMSecsSinceEpoch(); }
};

int usage(const QString &why)
{
    // The reason last: the app shows the last line.
    std::fputs(
        "Usage: brivanta-dns-apply enable <https://host[:port][/path]> | disable | pause <seconds> | resume "
        "| state\n",
        stderr);
    std::fprintf(stderr, "brivanta-dns-apply: %s\n", qPrintable(why));
    return exitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty())
        return usage(QStringLiteral("no command given"));
    const QString &verb = args[0];
    static const QStringList verbs { QStringLiteral("enable"), QStringLiteral("disable"),
        QStringLiteral("pause"), QStringLiteral("resume"), QStringLiteral("state") };
    if (!verbs.contains(verb))
        return usage(QStringLiteral("unknown command \"%1\"").arg(verb));
    const qsizetype expected = (verb == QLatin1String("enable") || verb == QLatin1String("pause")) ? 2 : 1;
    if (args.size() != expected)
        return usage(QStringLiteral("wrong number of arguments for \"%1\"").arg(verb));
    int seconds = 0;
    if (verb == QLatin1String("enable")) {
        if (auto problem = validateEndpoint(args[1]))
            return usage(*problem);
    } else if (verb == QLatin1String("pause")) {
        static const QRegularExpression digits(QStringLiteral("^[0-9]{1,5}$"));
        seconds = digits.match(args[1]).hasMatch() ? args[1].toInt() : 0;
        if (seconds < 1 || seconds > 86400)
            return usage(QStringLiteral("pause takes a number of seconds from 1 to 86400"));
    }

    const QString root = testSetting("BRIVANTA_APPLY_ROOT");
    DnsApplyPaths paths(root.isEmpty() ? QStringLiteral("/") : root);
    paths.helperProgram = QCoreApplication::applicationFilePath();
    // Tests stop the helper after that many steps, as a crash would.
    const int crashAfter = testSetting("BRIVANTA_APPLY_CRASH_AFTER").toInt();
    int steps = 0;
    LinuxSystemActions system;
    DnsApply apply(paths, system, [&](const QString &line) {
        std::fprintf(stderr, "brivanta-dns-apply: %s\n", qPrintable(line));
        if (++steps == crashAfter)
            ::_exit(86);
    });
    if (verb == QLatin1String("state")) {
        std::fputs(QJsonDocument(apply.state()).toJson(QJsonDocument::Compact).constData(), stdout);
        std::fputc('\n', stdout);
        return 0;
    }
    if (::geteuid() != 0) {
        std::fputs("brivanta-dns-apply: must run as root (through pkexec)\n", stderr);
        return exitFailure;
    }
    // What pkexec leaves of the caller's environment decides nothing here.
    if (qEnvironmentVariableIsSet("PKEXEC_UID"))
        qputenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");
    ::umask(022);

    std::optional<QString> error;
    if (verb == QLatin1String("enable"))
        error = apply.enable(args[1]);
    else if (verb == QLatin1String("disable"))
        error = apply.disable();
    else if (verb == QLatin1String("pause"))
        error = apply.pause(seconds);
    else
        error = apply.resume();
    if (error) {
        std::fprintf(stderr, "brivanta-dns-apply: %s\n", qPrintable(*error));
        return exitFailure;
    }
    return 0;
}
