#pragma once

#include <QString>

namespace brivanta {

// An error as the platform reports it across its seam.
struct PlatformError
{
    QString domain;
    qint64 code = 0;
    QString localizedDescription;

    friend bool operator==(const PlatformError &, const PlatformError &) = default;
};

inline constexpr const char *neConfigurationErrorDomain = "NEConfigurationErrorDomain";

} // namespace brivanta
