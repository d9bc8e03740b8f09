#pragma once

#include "model/hasher.h"

#include <QStringList>
#include <QUrl>
#include <functional>
#include <optional>

namespace brivanta {

// DNS-over-HTTPS settings of a resolver profile.
struct DoHConfiguration
{
    QStringList servers;
    std::optional<QUrl> serverURL;

    explicit DoHConfiguration(QStringList servers = {}, std::optional<QUrl> serverURL = std::nullopt);

    void hash(Hasher &hasher) const;
    friend bool operator==(const DoHConfiguration &a, const DoHConfiguration &b);
};

} // namespace brivanta

template <> struct std::hash<brivanta::DoHConfiguration>
{
    size_t operator()(const brivanta::DoHConfiguration &value) const { return brivanta::qHash(value); }
};
