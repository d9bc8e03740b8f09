#include "platform/qt/qt_locale_info.h"

#include <QLocale>
#include <QRegularExpression>

namespace brivanta {

QStringList QtLocaleInfo::preferredLanguages() const
{
    // The C/POSIX locale names no language at all.
    QStringList languages = QLocale().uiLanguages();
    languages.removeIf([](const QString &language) {
        return language == QLatin1String("C") || language == QLatin1String("POSIX");
    });
    return languages;
}

std::optional<QString> QtLocaleInfo::regionCode() const
{
    const QLocale::Territory territory = QLocale::system().territory();
    if (territory == QLocale::AnyTerritory)
        return std::nullopt;
    return QLocale::territoryToCode(territory);
}

std::optional<QString> QtLocaleInfo::englishNameForLanguage(const QString &languageIdentifier) const
{
    // "de", "de-DE", "zh-Hans-CN", "pt_BR": a language, then an optional script and region, named
    // like "German (Germany)" or "Chinese (Simplified Han, China)".
    const QStringList parts = languageIdentifier.split(QRegularExpression(QStringLiteral("[-_]")));
    const QLocale::Language language = QLocale::codeToLanguage(parts.front());
    if (language == QLocale::AnyLanguage || language == QLocale::C)
        return std::nullopt;
    QStringList qualifiers;
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const QString &part = parts[i];
        if (part.size() == 4) {
            const QLocale::Script script = QLocale::codeToScript(part);
            if (script == QLocale::AnyScript)
                return std::nullopt;
            qualifiers.append(QLocale::scriptToString(script));
        } else if (part.size() == 2 || part.size() == 3) {
            const QLocale::Territory territory = QLocale::codeToTerritory(part.toUpper());
            if (territory == QLocale::AnyTerritory)
                return std::nullopt;
            qualifiers.append(QLocale::territoryToString(territory));
        } else {
            return std::nullopt;
        }
    }
    QString name = QLocale::languageToString(language);
    if (!qualifiers.isEmpty())
        name += QStringLiteral(" (") + qualifiers.join(QStringLiteral(", ")) + u')';
    return name;
}

std::optional<QString> QtLocaleInfo::englishNameForRegion(const QString &regionCode) const
{
    const QLocale::Territory territory = QLocale::codeToTerritory(regionCode.toUpper());
    if (territory == QLocale::AnyTerritory)
        return std::nullopt;
    return QLocale::territoryToString(territory);
}

} // namespace brivanta
