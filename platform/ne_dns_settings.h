#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>
#include <variant>

namespace brivanta {

// Stand-ins for the phone platform's DNS settings classes: exactly what is handed to the DNS slot.
struct NEDNSOverTLSSettings
{
    QStringList servers;
    std::optional<QString> serverName;

    friend bool operator==(const NEDNSOverTLSSettings &, const NEDNSOverTLSSettings &) = default;
};

struct NEDNSOverHTTPSSettings
{
    QStringList servers;
    std::optional<QUrl> serverURL;

    friend bool operator==(const NEDNSOverHTTPSSettings &, const NEDNSOverHTTPSSettings &) = default;
};

// The phone platform's NEDNSSettings base: one of the two kinds.
using NEDNSSettings = std::variant<NEDNSOverTLSSettings, NEDNSOverHTTPSSettings>;

} // namespace brivanta
