#pragma once

#include "ui/onboarding_page.h"

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace brivanta {

// The onboarding's table and the rules of its one button, for the views.
class OnboardingPages : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    // The built-in table, as a list of onboardingPage values.
    Q_PROPERTY(QVariantList pages READ pages CONSTANT)

public:
    using QObject::QObject;

    QVariantList pages() const;

    // The button's title, translated: "Get Started" on the last index, "Next" on any other (even past the
    // end).
    Q_INVOKABLE static QString buttonTitle(int currentPage, int pageCount);
    // What a press does: the next index while below the last one, else -1, which ends the onboarding.
    // Overflow of the index is fatal.
    Q_INVOKABLE static int pageAfterPress(int currentPage, int pageCount);
};

} // namespace brivanta
