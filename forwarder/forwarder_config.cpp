#include "forwarder/forwarder_config.h"

#include <QFile>
#include <QRegularExpression>

namespace brivanta {

namespace {

std::optional<size_t> parseCount(const QString &value)
{
    bool ok = false;
    const qulonglong n = value.toULongLong(&ok);
    if (!ok || n > (1ULL << 32))
        return std::nullopt;
    return size_t(n);
}

std::optional<std::vector<HostPort>> parseServers(const QString &value)
{
    std::vector<HostPort> servers;
    for (const QString &item :
        value.split(QRegularExpression(QStringLiteral("[\\s,]+")), Qt::SkipEmptyParts)) {
        const auto server = parseHostPort(item, 53);
        if (!server)
            return std::nullopt;
        servers.push_back(*server);
    }
    return servers;
}

} // namespace

std::optional<QString> validateEndpoint(const QString &text)
{
    // Checked on the text, not on QUrl's reading of it, which forgives too much (empty ports, "@host").
    static const QRegularExpression rule(
        QStringLiteral("^https://"
                       "(?:(?:[A-Za-z0-9](?:[A-Za-z0-9-]{0,61}[A-Za-z0-9])?\\.)*[A-Za-z0-9](?:[A-Za-z0-9-]{0,"
                       "61}[A-Za-z0-9])?"
                       "|\\[[0-9A-Fa-f:.]+\\])(?::([0-9]{1,5}))?(/[A-Za-z0-9._~!$&'()*+,;=:@%/-]*)?$"));
    const QString usage = QStringLiteral("the endpoint must be https://host[:port][/path], without user, "
                                         "query or fragment");
    if (text.size() > 2048)
        return QStringLiteral("the endpoint is too long");
    const QRegularExpressionMatch match = rule.match(text);
    if (!match.hasMatch())
        return usage;
    if (match.hasCaptured(1)) {
        const int port = match.captured(1).toInt();
        if (port < 1 || port > 65535)
            return QStringLiteral("the endpoint's port must be from 1 to 65535");
    }
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return usage;
    return std::nullopt;
}

std::optional<HostPort> parseHostPort(const QString &text, quint16 defaultPort)
{
    QString host = text;
    QString port;
    if (text.startsWith(QLatin1Char('['))) {
        const qsizetype close = text.indexOf(QLatin1Char(']'));
        if (close < 0)
            return std::nullopt;
        host = text.mid(1, close - 1);
        const QString rest = text.mid(close + 1);
        if (!rest.isEmpty()) {
            if (!rest.startsWith(QLatin1Char(':')))
                return std::nullopt;
            port = rest.mid(1);
        }
    } else if (text.count(QLatin1Char(':')) == 1) {
        host = text.section(QLatin1Char(':'), 0, 0);
        port = text.section(QLatin1Char(':'), 1);
    }
    const QHostAddress address(host);
    if (address.isNull())
        return std::nullopt;
    HostPort result { address, defaultPort };
    if (!port.isNull()) {
        bool ok = false;
        const uint n = port.toUInt(&ok);
        if (!ok || n == 0 || n > 65535)
            return std::nullopt;
        result.port = quint16(n);
    }
    return result;
}

ForwarderConfig::ForwarderConfig()
    : fallbackBootstrap(*parseServers(QStringLiteral("9.9.9.9 149.112.112.112 1.1.1.1 1.0.0.1")))
{ }

std::optional<QString> ForwarderConfig::set(const QString &key, const QString &value)
{
    if (key == QLatin1String("endpoint")) {
        if (auto problem = validateEndpoint(value))
            return *problem;
        endpoint = QUrl(value, QUrl::StrictMode);
        endpointText = value;
    } else if (key == QLatin1String("listen")) {
        const auto parsed = parseHostPort(value, 53);
        if (!parsed)
            return QStringLiteral("listen must be an address and port, such as 127.0.0.153:53");
        listen = *parsed;
    } else if (key == QLatin1String("bootstrap") || key == QLatin1String("fallback-bootstrap")) {
        const auto parsed = parseServers(value);
        if (!parsed)
            return QStringLiteral("%1 must be a list of IP addresses, each with an optional :port").arg(key);
        (key == QLatin1String("bootstrap") ? bootstrap : fallbackBootstrap) = *parsed;
    } else if (key == QLatin1String("cache-entries") || key == QLatin1String("cache-bytes")) {
        const auto parsed = parseCount(value);
        if (!parsed)
            return QStringLiteral("%1 must be a whole number").arg(key);
        (key == QLatin1String("cache-entries") ? cacheEntries : cacheBytes) = *parsed;
    } else if (key == QLatin1String("state-dir")) {
        stateDir = value;
    } else if (key == QLatin1String("ca-file")) {
        caFile = value;
    } else if (key == QLatin1String("resolve")) {
        static const QRegularExpression pin(QStringLiteral("^[^:\\s]+:\\d{1,5}:\\S+$"));
        for (const QString &item : value.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            if (!pin.match(item).hasMatch())
                return QStringLiteral("resolve must be host:port:address");
            pins << item;
        }
    } else {
        return QStringLiteral("unknown setting \"%1\"").arg(key);
    }
    return std::nullopt;
}

std::optional<QString> ForwarderConfig::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QStringLiteral("%1: %2").arg(path, file.errorString());
    int number = 0;
    while (!file.atEnd()) {
        ++number;
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0)
            return QStringLiteral("%1:%2: expected key = value").arg(path).arg(number);
        if (auto error = set(line.left(equals).trimmed(), line.mid(equals + 1).trimmed()))
            return QStringLiteral("%1:%2: %3").arg(path).arg(number).arg(*error);
    }
    return std::nullopt;
}

std::optional<QString> ForwarderConfig::check() const
{
    if (endpoint.isEmpty())
        return QStringLiteral(
            "no endpoint: give --upstream https://host/path or endpoint = in the configuration");
    if (cacheEntries > 0 && cacheBytes < 4096)
        return QStringLiteral("cache-bytes is too small to hold an answer");
    return std::nullopt;
}

} // namespace brivanta
