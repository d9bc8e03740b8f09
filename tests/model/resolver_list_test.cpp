#include "model/resolver_list.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

const QString good
    = QStringLiteral(R"({"id":"0F2B6A1E-3C4D-4E5F-8A9B-0C1D2E3F4A5B","name":"a",)"
                     R"("configuration":{"base":"dnsOverHTTPS","dohConfiguration":{"servers":[]}}})");

TEST(ResolverListText, TextsThatAreNotAnArrayOfGoodProfilesGiveNoList)
{
    EXPECT_EQ(resolversFromRawValue(" \n[ ]\t"), std::vector<Resolver> {});
    ASSERT_EQ(resolversFromRawValue("[" + good + "," + good + "]")->size(), 2u);
    const QString bad = QString(good).replace(QStringLiteral("dnsOverHTTPS"), QStringLiteral("doh"));
    const QString loneSurrogate
        = QString(good).replace(QStringLiteral("\"a\""), "\"" + QString(QChar(0xd800)) + "\"");
    for (const QString &text :
        { QString(), QStringLiteral("{}"), good, QStringLiteral("null"), QStringLiteral("[1]"),
            QStringLiteral("[null]"), QStringLiteral("[[]]"), QStringLiteral("[] []"), QStringLiteral("[,]"),
            "[" + bad + "," + good + "]", "[" + good + "," + bad + "]", "[" + loneSurrogate + "]" })
        EXPECT_FALSE(resolversFromRawValue(text)) << text.toStdString();
}

TEST(ResolverListText, ListSurvivesARoundTripAndKeepsUnicodeAsUTF8)
{
    const std::vector<Resolver> list { Resolver(QString::fromUtf8("\u2693 Caf\u00e9"),
                                           Configuration::dnsOverHTTPS(DoHConfiguration())),
        Resolver(QStringLiteral("b"),
            Configuration::dnsOverTLS(DoTConfiguration({ QStringLiteral("1.1.1.1") }))) };
    const QString text = rawValue(list);
    EXPECT_TRUE(text.contains(QString::fromUtf8("\"name\":\"\u2693 Caf\u00e9\""))) << text.toStdString();
    EXPECT_EQ(resolversFromRawValue(text), list);
    EXPECT_EQ(rawValue({}), QStringLiteral("[]"));
}

TEST(ResolverListText, UnencodableListGivesTheEmptyArrayText)
{
    const auto named = [](const QString &name, const std::optional<QUrl> &url) {
        return std::vector { Resolver(name, Configuration::dnsOverHTTPS(DoHConfiguration({}, url))) };
    };
    EXPECT_EQ(rawValue(named(QString(QChar(0xdc00)), std::nullopt)), QStringLiteral("[]"));
    EXPECT_EQ(
        rawValue(named(QStringLiteral("a"), QUrl(QStringLiteral("http://a b/")))), QStringLiteral("[]"));
}

} // namespace
} // namespace brivanta
