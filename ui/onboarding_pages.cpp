#include "ui/onboarding_pages.h"

#include "model/checked_int.h"

#include <QVariant>

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
    return currentPage == pageCount - 1 ? tr("Get Started") : tr("Next");
}

int OnboardingPages::pageAfterPress(int currentPage, int pageCount)
{
    // Equality labels the button, "below" advances: a selection past the end ends the onboarding.
    if (currentPage < pageCount - 1)
        return checkedAdd(currentPage, 1);
    return -1;
}

} // namespace brivanta
