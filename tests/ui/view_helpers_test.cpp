#include "ui/emoji_text.h"
#include "ui/instruction_steps.h"
#include "ui/onboarding_page.h"
#include "ui/onboarding_pages.h"
#include "ui/single_instance.h"
#include "ui/symbol_image_provider.h"
#include "ui/symbols.h"

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(StaticTableDeathTest, ReadingOutsideATableIsFatal)
{
    EXPECT_DEATH(onboardingPage(onboardingPages(), 9), "");
    EXPECT_DEATH(
        InstructionSteps::symbol(std::numeric_limits<int>::max()), "integer overflow in an addition");
}

TEST(SymbolTable, EverySymbolTheViewsNameHasAnImage)
{
    QStringList used { "hand.raised.fill", "shield.checkerboard", "shield.slash", "lock.shield.fill",
        "network", "checkmark.circle.fill", "envelope.fill", "envelope.open.fill", "apple.logo",
        "square.and.arrow.up.fill", "star.fill", "shield.lefthalf.filled", "xmark", "doc.on.doc" };
    for (const OnboardingPage &page : onboardingPages())
        used.append(page.imageName);
    for (int i = 0; i < InstructionSteps::count(); ++i)
        used.append(InstructionSteps::symbol(i));

    for (const QString &name : used) {
        const QUrl source = Symbols::source(name);
        ASSERT_TRUE(source.isValid()) << name.toStdString();
        EXPECT_TRUE(QFile::exists(QLatin1Char(':') + source.path())) << name.toStdString();
    }
    EXPECT_TRUE(Symbols::source(QStringLiteral("apple.logo")).path().contains(QLatin1String("storefront")));
}

TEST(SymbolImages, AnIdThatDoesNotParseGivesNoImage)
{
    SymbolImageProvider provider;
    QSize size;
    for (const char *id : { "zz/star.fill", "ff00ff00/no.such.symbol", "ff00ff00", "gggggggg/star.fill", "" })
        EXPECT_TRUE(provider.requestImage(QString::fromLatin1(id), &size, QSize(16, 16)).isNull()) << id;
}

TEST(EmojiRuns, EmojiRunsGetTheEmojiFontAndTheRestIsEscaped)
{
    const QString emoji = QStringLiteral("<span style=\"font-family:'Noto Color Emoji'\">%1</span>");
    EXPECT_EQ(EmojiText::richText(QStringLiteral("⚠️ Spam & <deals>")),
        emoji.arg(QStringLiteral("⚠️")) + QStringLiteral(" Spam &amp; &lt;deals&gt;"));
    EXPECT_EQ(EmojiText::richText(QStringLiteral("Hi 👋\n\nok")),
        QStringLiteral("Hi ") + emoji.arg(QStringLiteral("👋")) + QStringLiteral("<br><br>ok"));
    EXPECT_EQ(EmojiText::richText(QStringLiteral("plain - text")), QStringLiteral("plain - text"));
}

// A later launch finds the running one and asks it to come forward; the first launch finds nobody.
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
