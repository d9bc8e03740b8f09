#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>
#include <cstddef>
#include <vector>

namespace brivanta {

// One feature page of the onboarding. The texts are shown verbatim, never translated.
struct OnboardingPage
{
    Q_GADGET
    QML_VALUE_TYPE(onboardingPage)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString description MEMBER description CONSTANT)
    Q_PROPERTY(QString imageName MEMBER imageName CONSTANT)

public:
    QString title;
    QString description;
    QString imageName; // a system symbol name

    friend bool operator==(const OnboardingPage &, const OnboardingPage &) = default;
};

size_t qHash(const OnboardingPage &page, size_t seed = 0) noexcept;

// The nine built-in pages, in order; built on first use, once, and never changed.
const std::vector<OnboardingPage> &onboardingPages();

// Page `index` of the table; an index outside it is fatal.
const OnboardingPage &onboardingPage(const std::vector<OnboardingPage> &pages, qsizetype index);

} // namespace brivanta
