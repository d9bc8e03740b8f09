#include "support/store_links.h"

#include "brivanta_build_config.h"
#include "support/open_link.h"

namespace brivanta {

QString storePageLink(const QString &appId)
{
    return QStringLiteral("https://") + QString::fromUtf8(build::storeHost) + QStringLiteral("/app/id")
        + appId;
}

QString appStorePageLink()
{
    return storePageLink(QString::fromUtf8(build::storeAppId));
}

QString appReviewLink()
{
    return appStorePageLink() + QStringLiteral("?action=write-review");
}

QString velloquinStorePageLink()
{
    return storePageLink(QString::fromUtf8(build::velloquinAppId));
}

QString orvindoStorePageLink()
{
    return storePageLink(QString::fromUtf8(build::orvindoAppId));
}

void openVelloquinStorePage(ApplicationServices &application)
{
    openLink(application, velloquinStorePageLink());
}

void openOrvindoStorePage(ApplicationServices &application)
{
    openLink(application, orvindoStorePageLink());
}

} // namespace brivanta
