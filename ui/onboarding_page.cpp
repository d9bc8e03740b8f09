#include "ui/onboarding_page.h"

#include "model/fatal.h"

#include <QHashFunctions>

namespace brivanta {

size_t qHash(const OnboardingPage &page, size_t seed) noexcept
{
    return qHashMulti(seed, page.title, page.description, page.imageName);
}

const std::vector<OnboardingPage> &onboardingPages()
{
    // A function-local static: built by the first caller, thread-safely, exactly once.
    static const std::vector<OnboardingPage> pages {
        { QStringLiteral("Ad Blocking Like No Other"),
            QStringLiteral(
                "Brivanta filters ads at the network level, blocking them in every browser and most "
                "apps. Unlike Safari extensions, ads and trackers never even load!"),
            QStringLiteral("shield.lefthalf.filled") },
        { QStringLiteral("Works in All Apps & Browsers"),
            QStringLiteral(
                "No matter which browser or app you use, Brivanta stops intrusive ads and trackers "
                "system-wide, ensuring a seamless ad-free experience."),
            QStringLiteral("network") },
        { QStringLiteral("Faster Browsing"),
            QStringLiteral("Web pages load significantly faster by blocking ad-related scripts and trackers "
                           "before they even reach your device."),
            QStringLiteral("hare") },
        { QStringLiteral("Save Battery Life"),
            QStringLiteral(
                "Blocking resource-heavy ads and trackers reduces CPU and network usage, helping your "
                "battery last longer."),
            QStringLiteral("battery.100") },
        { QStringLiteral("Save Mobile Data"),
            QStringLiteral(
                "Ads and trackers consume a significant amount of data. By blocking them, Brivanta "
                "helps you save data every month."),
            QStringLiteral("antenna.radiowaves.left.and.right") },
        { QStringLiteral("No Subscriptions, One-Time Purchase"),
            QStringLiteral(
                "Unlike other ad blockers that charge monthly fees, Brivanta is a one-time purchase. "
                "Pay once, enjoy premium ad blocking forever!"),
            QStringLiteral("checkmark.seal.fill") },
        { QStringLiteral("Encrypted DNS Queries"),
            QStringLiteral("Brivanta uses DNS-over-HTTPS (DoH) to encrypt your DNS requests, preventing ISPs "
                           "from tracking your browsing."),
            QStringLiteral("lock.shield") },
        { QStringLiteral("No IP Logging, Full Privacy"),
            QStringLiteral("Your privacy is our priority. Brivanta never logs your IP address or browsing "
                           "history\u2014your data stays yours."),
            QStringLiteral("eye.slash.fill") },
        { QStringLiteral("Always Up to Date"),
            QStringLiteral(
                "Brivanta automatically updates its ad-blocking filters via the cloud, keeping you "
                "protected against new ads and trackers."),
            QStringLiteral("icloud.and.arrow.down") },
    };
    return pages;
}

const OnboardingPage &onboardingPage(const std::vector<OnboardingPage> &pages, qsizetype index)
{
    if (index < 0 || static_cast<size_t>(index) >= pages.size())
        fatal("onboarding page index out of range");
    return pages[static_cast<size_t>(index)];
}

} // namespace brivanta
