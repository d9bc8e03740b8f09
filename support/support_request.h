#pragma once

#include <QString>

namespace brivanta {

class ApplicationServices;
class BundleInfo;
class Device;
class LocaleInfo;

// The values of one support request, read fresh at the moment of the tap, fallbacks applied.
struct SupportRequestDetails
{
    QString appName;
    QString version;
    QString model;
    QString osVersion; // system name, one space, system version: "iOS 17.2"
    QString languageName;
    QString countryName;
    QString flag;
};

SupportRequestDetails readSupportRequestDetails(
    const BundleInfo &bundle, const Device &device, const LocaleInfo &locale);

// A region code's flag: regional indicators for a 2-character code, else the white flag.
QString flagForRegionCode(const QString &regionCode);

QString supportSubject(const SupportRequestDetails &details);
QString supportBody(const SupportRequestDetails &details);

// "mailto:" + mailbox + "?subject=" + encoded subject + "&body=" + encoded body.
QString supportRequestLink(const SupportRequestDetails &details);

// "Contact Support": builds the request and opens its mailto: link; every failure is silent.
void contactSupport(const BundleInfo &bundle, const Device &device, const LocaleInfo &locale,
    ApplicationServices &application);

} // namespace brivanta
