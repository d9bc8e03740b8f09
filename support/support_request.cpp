#include "support/support_request.h"

#include "brivanta_build_config.h"
#include "platform/device.h"
#include "platform/locale_info.h"
#include "support/bundle_string.h"
#include "support/open_link.h"
#include "support/percent_encoding.h"

#include <QTextBoundaryFinder>

namespace brivanta {

namespace {

// Counted as the user sees characters: "de" is two, so is a letter with a combining accent.
qsizetype characterCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

} // namespace

QString flagForRegionCode(const QString &regionCode)
{
    if (characterCount(regionCode) != 2)
        return QStringLiteral(u"\U0001F3F3\uFE0F"); // the white flag
    constexpr char32_t regionalIndicatorOffset = 0x1F1A5; // 'A' + this is REGIONAL INDICATOR SYMBOL LETTER A
    QString flag;
    for (const char32_t scalar : regionCode.toUpper().toUcs4()) {
        const char32_t indicator = scalar + regionalIndicatorOffset;
        if (indicator > 0x10FFFF)
            continue;
        flag.append(QString::fromUcs4(&indicator, 1));
    }
    return flag;
}

SupportRequestDetails readSupportRequestDetails(
    const BundleInfo &bundle, const Device &device, const LocaleInfo &locale)
{
    const QString unknown = QStringLiteral("Unknown");
    SupportRequestDetails details;
    details.appName = bundleString(bundle, QStringLiteral("CFBundleName"), QStringLiteral("Unknown App"));
    details.version = bundleString(
        bundle, QStringLiteral("CFBundleShortVersionString"), QStringLiteral("Unknown Version"));
    details.model = device.model();
    details.osVersion = device.systemName() + u' ' + device.systemVersion();

    const QStringList languages = locale.preferredLanguages();
    const QString languageCode = languages.isEmpty() ? unknown : languages.front();
    details.languageName = locale.englishNameForLanguage(languageCode).value_or(unknown);

    const QString regionCode = locale.regionCode().value_or(unknown);
    details.countryName = locale.englishNameForRegion(regionCode).value_or(unknown);
    details.flag = flagForRegionCode(regionCode);
    return details;
}

QString supportSubject(const SupportRequestDetails &details)
{
    return QStringLiteral(u"🚀 Support Request - ") + details.appName;
}

QString supportBody(const SupportRequestDetails &details)
{
    return QStringLiteral(u"Hello Support Team, 👋\n\nI need assistance with ") + details.appName
        + QStringLiteral(u". Below are my app and device details:\n\n📱 App Info\n- App Name: ")
        + details.appName + QStringLiteral(u"\n- Version: ") + details.version
        + QStringLiteral(u"\n\n🔧 Device Info\n- Model: ") + details.model
        + QStringLiteral(u"\n- OS Version: ") + details.osVersion
        + QStringLiteral(u"\n\n🌍 Locale\n- Language: ") + details.languageName
        + QStringLiteral(u"\n- Country: ") + details.countryName + u' ' + details.flag
        + QStringLiteral(
            u"\n\n📝 Issue Description:\n(Please describe your issue here...)\n\nThanks for your help! 🙏");
}

QString supportRequestLink(const SupportRequestDetails &details)
{
    return QStringLiteral("mailto:") + QString::fromUtf8(build::supportMailbox) + QStringLiteral("?subject=")
        + percentEncodedForURLQuery(supportSubject(details)) + QStringLiteral("&body=")
        + percentEncodedForURLQuery(supportBody(details));
}

void contactSupport(const BundleInfo &bundle, const Device &device, const LocaleInfo &locale,
    ApplicationServices &application)
{
    openLink(application, supportRequestLink(readSupportRequestDetails(bundle, device, locale)));
}

} // namespace brivanta
