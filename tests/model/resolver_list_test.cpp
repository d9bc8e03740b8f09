#include "model/resolver_list.h"

#include <QSet>
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

TEST(ResolverListText, ListSurvivesARoundTripAndAnUnencodableOneGivesTheEmptyArray)
{
    const std::vector<Resolver> list {
        Resolver(QString::fromUtf8("\u2693 Caf\u00e9"),
            Configuration::dnsOverHTTPS(DoHConfiguration(
                { QStringLiteral("::1") }, QUrl(QStringLiteral("https://dns.example/q?x=%2F#f"))))),
        Resolver(
            QStringLiteral("b"), Configuration::dnsOverTLS(DoTConfiguration({ QStringLiteral("1.1.1.1") })))
    };
    const QString text = rawValue(list);
    EXPECT_TRUE(text.contains(QString::fromUtf8("\"name\":\"\u2693 Caf\u00e9\""))) << text.toStdString();
    EXPECT_EQ(resolversFromRawValue(text), list);
    // Nothing, or a list that cannot be written, is the empty array.
    EXPECT_EQ(rawValue({}), QStringLiteral("[]"));
    EXPECT_EQ(rawValue({ Resolver(QString(QChar(0xdc00)), list[1].configuration) }), QStringLiteral("[]"));
    const DoHConfiguration badURL({}, QUrl(QStringLiteral("http://a b/")));
    EXPECT_EQ(rawValue({ Resolver(QStringLiteral("a"), Configuration::dnsOverHTTPS(badURL)) }),
        QStringLiteral("[]"));
}

Resolver profile(const QString &text, const std::optional<QString> &serverName = QString())
{
    const QUuid id(QStringLiteral("0f2b6a1e-3c4d-4e5f-8a9b-0c1d2e3f4a5b"));
    return Resolver(id, text, Configuration::dnsOverTLS(DoTConfiguration({ text }, serverName)),
        { OnDemandRule(id, text, NEOnDemandRuleAction::connect, NEOnDemandRuleInterfaceType::wiFi, { text },
            { text }, { text }, QUrl(QStringLiteral("https://probe.example/ok"))) });
}

// Canonically equivalent strings compare and hash alike; order, count, absence and protocol still count.
TEST(RecordEquality, CanonicallyEquivalentStringsAreEqualButOrderCountAndAbsenceAreNot)
{
    // "é" as one code point and as "e" followed by a combining acute accent.
    const QString precomposed = QString::fromUtf8("caf\u00e9");
    const QString decomposed = QString::fromUtf8("cafe\u0301");
    EXPECT_EQ((QSet<Resolver> { profile(precomposed), profile(decomposed), profile(QStringLiteral("cafe")) })
                  .size(),
        2);
    const auto doh
        = [](const QStringList &servers) { return Configuration::dnsOverHTTPS(DoHConfiguration(servers)); };
    EXPECT_EQ(qHash(doh({ precomposed })), qHash(doh({ decomposed })));
    EXPECT_EQ(doh({ precomposed }), doh({ decomposed }));

    const QString a = QStringLiteral("a");
    EXPECT_NE(profile(a), profile(a, std::nullopt));
    EXPECT_NE(doh({ a, QStringLiteral("b") }), doh({ QStringLiteral("b"), a }));
    EXPECT_NE(doh({ a }), doh({ a, a }));
    EXPECT_NE(Configuration::dnsOverTLS(DoTConfiguration()), doh({}));
}

} // namespace
} // namespace brivanta
