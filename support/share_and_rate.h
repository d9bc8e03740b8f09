#pragma once

#include <QString>

namespace brivanta {

class ApplicationServices;
class BundleInfo;

// The promotional text handed to the share sheet: opening, name, one space, version, body.
// Missing or non-string bundle values fall back to "this app" and the empty string.
QString shareText(const BundleInfo &bundle);

// "Share App": presents the share sheet with the text and the store page link. Silent when there is
// no window scene, window or root controller. The link must parse; otherwise the process stops.
void shareApp(const BundleInfo &bundle, ApplicationServices &application);
void shareApp(const BundleInfo &bundle, ApplicationServices &application, const QString &storePageLink);

// "Rate App": opens the write-a-review page. A link that does not parse is ignored.
void rateApp(ApplicationServices &application);
void rateApp(ApplicationServices &application, const QString &reviewLink);

} // namespace brivanta
