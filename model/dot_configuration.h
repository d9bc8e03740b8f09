#pragma once

#include "model/hasher.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace brivanta {

// DNS-over-TLS settings of a resolver profile.
struct DoTConfiguration
{
    QStringList servers;
    std::optional<QString> serverName;

    explicit DoTConfiguration(QStringList servers = {}, std::optional<QString> serverName = std::nullopt);

    void hash(Hasher &hasher) const;
    friend bool operator==(const DoTConfiguration &a, const DoTConfiguration &b);
};

} // namespace brivanta

template <> struct std::hash<brivanta::DoTConfiguration>
{
    size_t operator()(const brivanta::DoTConfiguration &value) const { return brivanta::qHash(value); }
};
