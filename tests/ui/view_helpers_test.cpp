#include "dns/main_view_model.h"
#include "fakes/fake_application_services.h"
#include "fakes/fake_bundle_info.h"
#include "fakes/fake_device.h"
#include "fakes/fake_locale_info.h"
#include "ui/brivanta_app.h"
#include "ui/emoji_text.h"
#include "ui/instruction_steps.h"
#include "ui/onboarding_page.h"
#include "ui/onboarding_pages.h"
#include "ui/single_instance.h"
#include "ui/support_actions.h"
#include "ui/symbol_image_provider.h"
#include "ui/symbols.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocale>
#include <QSignalSpy>
#include <QTranslator>
#include <QUrlQuery>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(OnboardingPageTableDeathTest, ReadingOutsideTheTableIsFatal)
{
    EXPECT_DEATH(onboardingPage(onboardingPages(), 9), "");
    EXPECT_DEATH(onboardingPage(onboardingPages(), -1), "");
}

TEST(OnboardingButtonRule, TitleAndPress)
{
    const struct
    {
        int currentPage;
        int pageCount;
        const char *title;
        int pageAfterPress; // -1: the onboarding ends
    } cases[] = { { 0, 9, "Next", 1 }, { 7, 9, "Next", 8 }, { 8, 9, "Get Started", -1 },
        // Past the end (the pager never gets there): labelled "Next", yet a press ends the onboarding.
        { 9, 9, "Next", -1 },
        // A one-page table starts on its last page.
        { 0, 1, "Get Started", -1 } };
    for (const auto &c : cases) {
        SCOPED_TRACE(::testing::Message() << "page " << c.currentPage << " of " << c.pageCount);
        EXPECT_EQ(OnboardingPages::buttonTitle(c.currentPage, c.pageCount), QLatin1String(c.title));
        EXPECT_EQ(OnboardingPages::pageAfterPress(c.currentPage, c.pageCount), c.pageAfterPress);
    }
}

TEST(InstructionStepsTableDeathTest, AnIndexAboveThreeIsFatal)
{
    EXPECT_DEATH(InstructionSteps::text(4), "");
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
    EXPECT_EQ(EmojiText::richText(QString::fromUtf8("\xE2\x9A\xA0\xEF\xB8\x8F Spam & <deals>")),
        QString::fromUtf8("<span style=\"font-family:'Noto Color Emoji'\">\xE2\x9A\xA0\xEF\xB8\x8F</span> "
                          "Spam &amp; &lt;deals&gt;"));
    EXPECT_EQ(EmojiText::richText(QString::fromUtf8("Hi \xF0\x9F\x91\x8B\n\nok")),
        QString::fromUtf8(
            "Hi <span style=\"font-family:'Noto Color Emoji'\">\xF0\x9F\x91\x8B</span><br><br>ok"));
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

struct SupportActionsTest : ::testing::Test
{
    testing::FakeBundleInfo bundle;
    testing::FakeDevice device;
    testing::FakeLocaleInfo locale;
    testing::FakeApplicationServices application;
    SupportActions actions { { bundle, device, locale, application } };
};

// The store pages are checked through the promotion badges in the main view test.
TEST_F(SupportActionsTest, RateAppOpensTheReviewLinkOnce)
{
    actions.rateApp();

    ASSERT_EQ(application.openedURLs.size(), 1u);
    EXPECT_EQ(application.openedURLs[0], QUrl("https://apps.apple.com/app/id6742517203?action=write-review"));
}

// Every entry of the shipped German catalogue is finished: a German locale never falls back to English.
TEST(GermanTranslation, EveryLabelIsTranslated)
{
    QFile file(QStringLiteral(BRIVANTA_GERMAN_TS));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    int messages = 0;
    QString source;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("source")) {
            source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            ++messages;
            const QString type = xml.attributes().value(QLatin1String("type")).toString();
            EXPECT_TRUE(type.isEmpty()) << source.toStdString() << " is " << type.toStdString();
            EXPECT_FALSE(xml.readElementText().isEmpty()) << source.toStdString();
        }
    }
    EXPECT_FALSE(xml.hasError());
    EXPECT_GE(messages, 39);

    // The percent sign and the argument's place differ in German.
    QTranslator translator;
    ASSERT_TRUE(BrivantaApp::installTranslator(
        *QCoreApplication::instance(), translator, QLocale(QLocale::German, QLocale::Germany)));
    EXPECT_EQ(MainViewModel::scoreTextFor(85), "Blockierquote: 85 %");
    QCoreApplication::removeTranslator(&translator);

    QTranslator english;
    EXPECT_FALSE(BrivantaApp::installTranslator(
        *QCoreApplication::instance(), english, QLocale(QLocale::English, QLocale::UnitedStates)));
}

} // namespace
} // namespace brivanta
