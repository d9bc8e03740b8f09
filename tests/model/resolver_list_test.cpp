#include "model/resolver_list.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

const QString goodElement = QStringLiteral(
    R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"a","configuration":{"base":"dnsOverHTTPS",)"
    R"("dohConfiguration":{"servers":[]}}})");
const QString badElement = QStringLiteral(
    R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"b","configuration":{"base":"doh",)"
    R"("dohConfiguration":{"servers":[]}}})");

TEST(ResolverListText, EmptyListIsTheEmptyArrayBothWays)
{
    EXPECT_EQ(rawValue({}), QStringLiteral("[]"));
    const auto decoded = resolversFromRawValue(QStringLiteral(" \n[ ]\t"));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->empty());
}

TEST(ResolverListText, TextsThatAreNotAnArrayOfGoodProfilesGiveNoList)
{
    const QString good = goodElement;
    const QString bad = badElement;
    ASSERT_EQ(resolversFromRawValue("[" + good + "," + good + "]")->size(), 2u);
    for (const QString &text : { QString(), QStringLiteral("{}"), goodElement, QStringLiteral("null"),
             QStringLiteral("[1]"), QStringLiteral("[null]"), QStringLiteral("[[]]"), QStringLiteral("[] []"),
             QStringLiteral("[,]"), "[" + bad + "," + good + "]", "[" + good + "," + bad + "," + good + "]",
             "[" + good + "," + bad + "]" })
        EXPECT_FALSE(resolversFromRawValue(text)) << text.toStdString();
}

TEST(ResolverListText, ListSurvivesARoundTripAndKeepsUnicodeAsUTF8)
{
    const std::vector<Resolver> list { Resolver(QString::fromUtf8("\u2693 Caf\u00e9"),
                                           Configuration::dnsOverHTTPS(DoHConfiguration())),
        Resolver(QStringLiteral("b"),
            Configuration::dnsOverTLS(DoTConfiguration({ QStringLiteral("1.1.1.1") }))) };
    const QString text = rawValue(list);
    EXPECT_TRUE(text.startsWith(QStringLiteral("[{"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QString::fromUtf8("\"name\":\"\u2693 Caf\u00e9\""))) << text.toStdString();
    EXPECT_EQ(resolversFromRawValue(text), list);
}

TEST(ResolverListText, UnencodableListGivesTheEmptyArrayText)
{
    const std::vector<Resolver> list { Resolver(
        QString(QChar(0xdc00)), Configuration::dnsOverHTTPS(DoHConfiguration())) };
    EXPECT_EQ(rawValue(list), QStringLiteral("[]"));
    const std::vector<Resolver> invalidURL { Resolver(QStringLiteral("a"),
        Configuration::dnsOverHTTPS(DoHConfiguration({}, QUrl(QStringLiteral("http://a b/"))))) };
    EXPECT_EQ(rawValue(invalidURL), QStringLiteral("[]"));
    QString loneSurrogate = goodElement;
    loneSurrogate.replace(QStringLiteral("\"a\""), "\"" + QString(QChar(0xd800)) + "\"");
    EXPECT_FALSE(resolversFromRawValue("[" + loneSurrogate + "]"));
}

} // namespace
} // namespace brivanta
