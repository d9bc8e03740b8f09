#pragma once

#include "platform/device.h"

namespace brivanta::testing {

// A phone by default, reporting what the phone platform reports.
class FakeDevice final : public Device
{
public:
    int idiom = phoneIdiom;
    QString modelName = QStringLiteral("iPhone");
    QString osName = QStringLiteral("iOS");
    QString osVersion = QStringLiteral("17.2");

    int userInterfaceIdiom() const override { return idiom; }
    QString model() const override { return modelName; }
    QString systemName() const override { return osName; }
    QString systemVersion() const override { return osVersion; }
};

} // namespace brivanta::testing
