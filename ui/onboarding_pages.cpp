#include "ui/onboarding_pages.h"

#include <QVariant>
#include <cstdlib>

namespace brivanta {

QVariantList OnboardingPages::pages() const
{
    QVariantList list;
    for (const OnboardingPage &page : onboardingPages())
        list.append(QVariant::fromValue(page));
    return list;
}

QString OnboardingPages::buttonTitle(int currentPage, int pageCount)
{
    return currentPage == pageCount - 1 ? QStringLiteral("Get Started") : QStringLiteral("Next");
}

int OnboardingPages::pageAfterPress(int currentPage, int pageCount)
{
    // Equality labels the button, "below" advances: a selection past the end ends the onboarding.
    if (currentPage < pageCount - 1) {
        int next = 0;
        if (__builtin_add_overflow(currentPage, 1, &next))
            std::abort();
        return next;
    }
    return -1;
}

} // namespace brivanta
