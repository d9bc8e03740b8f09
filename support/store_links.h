#pragma once

#include <QString>

namespace brivanta {

class ApplicationServices;

// "https://" + store host + "/app/id" + the app's numeric store identifier; no query.
QString storePageLink(const QString &appId);

// Brivanta's own store page, and its write-a-review page (the page plus "?action=write-review").
QString appStorePageLink();
QString appReviewLink();

// The promoted apps' store pages (VelloquinPromoCard, OrvindoPromoCard).
QString velloquinStorePageLink();
QString orvindoStorePageLink();

// The promotion cards' badge actions.
void openVelloquinStorePage(ApplicationServices &application);
void openOrvindoStorePage(ApplicationServices &application);

} // namespace brivanta
