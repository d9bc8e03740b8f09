#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace brivanta {

// Stand-in for the phone platform's NEOnDemandRule and its four kinds.
struct NEOnDemandRule
{
    enum class Kind { Connect, Disconnect, EvaluateConnection, Ignore };

    Kind kind = Kind::Ignore;
    qint64 interfaceTypeMatch = 0;
    // Never set is not the same as set to an empty list: only the SSID list may stay unset.
    std::optional<QStringList> ssidMatch;
    QStringList dnsSearchDomainMatch;
    QStringList dnsServerAddressMatch;
    std::optional<QUrl> probeURL;

    friend bool operator==(const NEOnDemandRule &, const NEOnDemandRule &) = default;
};

} // namespace brivanta
