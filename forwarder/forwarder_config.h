#pragma once

#include "forwarder/bootstrap_resolver.h"

#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>
#include <vector>

namespace brivanta {

// The endpoint rule shared by the forwarder and the privileged helper: https://host[:port][/path] and
// nothing else (no user name, query or fragment). Returns why not, or nothing when valid. QtCore only.
std::optional<QString> validateEndpoint(const QString &text);
inline std::optional<QString> endpointProblem(const QString &text)
{
    return validateEndpoint(text);
}

std::optional<HostPort> parseHostPort(const QString &text, quint16 defaultPort);

struct ForwarderConfig
{
    QUrl endpoint;
    QString endpointText; // as written: health.json reports it for comparison with the user's
    HostPort listen { QHostAddress(QStringLiteral("127.0.0.153")), 53 };
    std::vector<HostPort> bootstrap;
    std::vector<HostPort> fallbackBootstrap;
    size_t cacheEntries = 10000;
    size_t cacheBytes = 4 * 1024 * 1024;
    QString stateDir = QStringLiteral("/run/brivanta");
    QString caFile;
    QStringList pins;

    ForwarderConfig();
    // Reads "key = value" lines; an error is "<file>:<line>: <what>".
    std::optional<QString> readFile(const QString &path);
    // One key as the file or the command line gives it.
    std::optional<QString> set(const QString &key, const QString &value);
    std::optional<QString> check() const;
};

} // namespace brivanta
