#pragma once

#include "platform/locale_info.h"

namespace brivanta {

// Language and region from QLocale: the UI languages in order, the system locale's territory, and
// names from Qt's English tables.
class QtLocaleInfo final : public LocaleInfo
{
public:
    QStringList preferredLanguages() const override;
    std::optional<QString> regionCode() const override;
    std::optional<QString> englishNameForLanguage(const QString &languageIdentifier) const override;
    std::optional<QString> englishNameForRegion(const QString &regionCode) const override;
};

} // namespace brivanta
