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
        return name(languageNames, identifier);
    }
    std::optional<QString> englishNameForRegion(const QString &code) const override
    {
        return name(regionNames, code);
    }

private:
    static std::optional<QString> name(const QHash<QString, QString> &names, const QString &key)
    {
        const auto it = names.find(key);
        return it == names.end() ? std::nullopt : std::optional(*it);
    }
};

} // namespace brivanta::testing
