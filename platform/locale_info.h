#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace brivanta {

// The user's language and region settings.
class LocaleInfo
{
public:
    virtual ~LocaleInfo() = default;
    // Language identifiers in the user's order of preference ("de-DE", "en"); may be empty.
    virtual QStringList preferredLanguages() const = 0;
    // The current locale's region code ("DE", "US", "419"), nothing when the locale has no region.
    virtual std::optional<QString> regionCode() const = 0;
    // Display names in English; nothing when the phone platform (or Qt) has no name.
    virtual std::optional<QString> englishNameForLanguage(const QString &languageIdentifier) const = 0;
    virtual std::optional<QString> englishNameForRegion(const QString &regionCode) const = 0;
};

} // namespace brivanta
