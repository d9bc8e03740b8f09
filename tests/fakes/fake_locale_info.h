#pragma once

#include "platform/locale_info.h"

#include <QHash>

namespace brivanta::testing {

// Names come from small tables the test fills; an identifier not in them has no name.
class FakeLocaleInfo final : public LocaleInfo
{
public:
    QStringList languages;
    std::optional<QString> region;
    QHash<QString, QString> languageNames;
    QHash<QString, QString> regionNames;

    QStringList preferredLanguages() const override { return languages; }
    std::optional<QString> regionCode() const override { return region; }
    std::optional<QString> englishNameForLanguage(const QString &identifier) const override
    {
        if (!languageNames.contains(identifier))
            return std::nullopt;
        return languageNames.value(identifier);
    }
    std::optional<QString> englishNameForRegion(const QString &regionCode) const override
    {
        if (!regionNames.contains(regionCode))
            return std::nullopt;
        return regionNames.value(regionCode);
    }
};

} // namespace brivanta::testing
