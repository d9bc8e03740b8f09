#pragma once

#include <QString>

namespace brivanta {

// An error as the phone platform reports it, carried across a seam.
struct PlatformError
{
    QString domain;
    qint64 code = 0;
    QString localizedDescription;

    friend bool operator==(const PlatformError &, const PlatformError &) = default;
};

inline constexpr const char *neConfigurationErrorDomain = "NEConfigurationErrorDomain";

} // namespace brivanta
