#include "model/resolver.h"

#include <QSet>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

// "é" as one code point and as "e" followed by a combining acute accent.
const QString precomposed = QString::fromUtf8("caf\u00e9");
const QString decomposed = QString::fromUtf8("cafe\u0301");

Resolver profile(const QString &text, const std::optional<QString> &serverName = QString())
{
    const QUuid id(QStringLiteral("0f2b6a1e-3c4d-4e5f-8a9b-0c1d2e3f4a5b"));
    return Resolver(id, text, Configuration::dnsOverTLS(DoTConfiguration({ text }, serverName)),
        { OnDemandRule(id, text, NEOnDemandRuleAction::connect, NEOnDemandRuleInterfaceType::wiFi, { text },
            { text }, { text }, QUrl(QStringLiteral("https://probe.example/ok"))) });
}

TEST(RecordEquality, CanonicallyEquivalentStringsAreEqualAndHashAlike)
{
    ASSERT_NE(precomposed, decomposed);
    EXPECT_EQ(profile(precomposed), profile(decomposed));
    EXPECT_EQ(qHash(profile(precomposed)), qHash(profile(decomposed)));
    EXPECT_EQ((QSet<Resolver> { profile(precomposed), profile(decomposed), profile(QStringLiteral("cafe")) })
                  .size(),
        2);
    const auto doh
        = [](const QString &server) { return Configuration::dnsOverHTTPS(DoHConfiguration({ server })); };
    EXPECT_EQ(qHash(doh(precomposed)), qHash(doh(decomposed)));
    EXPECT_NE(doh(precomposed), doh(QStringLiteral("cafe")));
}

// Order and count matter, and an absent value never equals an empty one.
TEST(RecordEquality, OrderCountAndAbsenceTellRecordsApart)
{
    const QString a = QStringLiteral("a");
    EXPECT_NE(profile(a), profile(a, std::nullopt));
    EXPECT_NE(DoHConfiguration({ a, QStringLiteral("b") }), DoHConfiguration({ QStringLiteral("b"), a }));
    EXPECT_NE(DoHConfiguration({ a }), DoHConfiguration({ a, a }));
    EXPECT_NE(
        DoHConfiguration({}, std::nullopt), DoHConfiguration({}, QUrl(QStringLiteral("https://a.example"))));
    // The other protocol with the same (empty) server list.
    EXPECT_NE(Configuration::dnsOverTLS(DoTConfiguration()), Configuration::dnsOverHTTPS(DoHConfiguration()));
}

} // namespace
} // namespace brivanta
