#include "ui/emoji_text.h"
#include "ui/instruction_steps.h"
#include "ui/onboarding_page.h"
#include "ui/onboarding_pages.h"
#include "ui/single_instance.h"
#include "ui/symbols.h"

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(SymbolTable, EverySymbolTheViewsNameHasAnImage)
{
    QStringList used { "hand.raised.fill", "shield.checkerboard", "shield.slash", "lock.shield.fill",
        "network", "checkmark.circle.fill", "envelope.fill", "envelope.open.fill", "apple.logo",
        "square.and.arrow.up.fill", "star.fill", "shield.lefthalf.filled", "xmark", "doc.on.doc" };
    for (const OnboardingPage &page : onboardingPages())
        used.append(page.imageName);
    for (int i = 0; i < InstructionSteps::count(); ++i)
        used.append(InstructionSteps::symbol(i));

    for (const QString &name : used)
        EXPECT_TRUE(QFile::exists(QLatin1Char(':') + Symbols::source(name).path())) << name.toStdString();
}

TEST(EmojiRuns, EmojiRunsGetTheEmojiFontAndTheRestIsEscaped)
{
    const QString emoji = "<span style=\"font-family:'Noto Color Emoji'\">%1</span>";
    EXPECT_EQ(EmojiText::richText("⚠️ Spam & <ads>"), emoji.arg("⚠️") + " Spam &amp; &lt;ads&gt;");
    EXPECT_EQ(EmojiText::richText("Hi 👋\n\nok"), "Hi " + emoji.arg("👋") + "<br><br>ok");
}

TEST(SingleInstance, ASecondLaunchAsksTheRunningOneToComeForward)
{
    const QString name = QStringLiteral("brivanta-test-%1.socket").arg(QCoreApplication::applicationPid());
    SingleInstance first(name);
    EXPECT_FALSE(first.askRunningToActivate());
    ASSERT_TRUE(first.listen());
    QSignalSpy activations(&first, &SingleInstance::activationRequested);

    EXPECT_TRUE(SingleInstance(name).askRunningToActivate());
    EXPECT_TRUE(activations.wait(5000));
}

} // namespace
} // namespace brivanta
