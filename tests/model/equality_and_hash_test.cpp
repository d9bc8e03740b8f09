#include "model/resolver.h"

#include <QSet>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

const QUuid profileId(QStringLiteral("0f2b6a1e-3c4d-4e5f-8a9b-0c1d2e3f4a5b"));
const QUuid ruleId(QStringLiteral("a0000000-0000-4000-8000-000000000001"));

// "é" as one code point and as "e" followed by a combining acute accent.
const QString precomposed = QString::fromUtf8("caf\u00e9");
const QString decomposed = QString::fromUtf8("cafe\u0301");

OnDemandRule rule(const QString &text)
{
    return OnDemandRule(ruleId, text, NEOnDemandRuleAction::connect, NEOnDemandRuleInterfaceType::wiFi,
        { text }, { text }, { text }, QUrl(QStringLiteral("https://probe.example/ok")));
}

Resolver profile(const QString &text)
{
    return Resolver(
        profileId, text, Configuration::dnsOverTLS(DoTConfiguration({ text }, text)), { rule(text) });
}

TEST(RecordEquality, CanonicallyEquivalentStringsAreEqualAndHashAlike)
{
    ASSERT_NE(precomposed, decomposed);
    EXPECT_EQ(profile(precomposed), profile(decomposed));
    EXPECT_EQ(qHash(profile(precomposed)), qHash(profile(decomposed)));
    EXPECT_EQ(
        (QSet<Resolver> { profile(precomposed), profile(decomposed), profile(QStringLiteral("x")) }).size(),
        2);

    const auto doh
        = [](const QString &server) { return Configuration::dnsOverHTTPS(DoHConfiguration({ server })); };
    EXPECT_EQ(doh(precomposed), doh(decomposed));
    EXPECT_EQ(qHash(doh(precomposed)), qHash(doh(decomposed)));
    EXPECT_NE(doh(precomposed), doh(QStringLiteral("cafe")));
}

TEST(RecordEquality, EveryProfileFieldTakesPartAndRulesCompareByPositionAndCount)
{
    const QString a = QStringLiteral("a");
    const Resolver base(
        profileId, a, Configuration::dnsOverHTTPS(DoHConfiguration()), { rule(a), rule(precomposed) });
    std::vector<Resolver> variants(5, base);
    variants[0].id = QUuid::createUuid();
    variants[1].name = QStringLiteral("b");
    // The other protocol with the same (empty) server list.
    variants[2].configuration = Configuration::dnsOverTLS(DoTConfiguration());
    variants[3].onDemandRules = { rule(precomposed), rule(a) };
    variants[4].onDemandRules.push_back(rule(a));
    for (size_t i = 0; i < variants.size(); ++i)
        EXPECT_NE(base, variants[i]) << "variant " << i;
}

TEST(RecordEquality, EveryRuleFieldTakesPartAndAbsentNeverEqualsPresent)
{
    const OnDemandRule base = rule(QStringLiteral("x"));
    std::vector<OnDemandRule> variants(9, base);
    variants[0].id = QUuid::createUuid();
    variants[1].name = QStringLiteral("y");
    variants[2].action = NEOnDemandRuleAction(9);
    variants[3].interfaceType = NEOnDemandRuleInterfaceType::ethernet;
    variants[4].ssidMatch.append(QStringLiteral("y"));
    variants[5].dnsSearchDomainMatch.clear();
    variants[6].dnsServerAddressMatch = { QStringLiteral("y") };
    variants[7].probeURL = QUrl(QStringLiteral("https://probe.example/other"));
    variants[8].probeURL.reset();
    for (size_t i = 0; i < variants.size(); ++i)
        EXPECT_NE(base, variants[i]) << "field " << i;
}

TEST(RecordEquality, ServerListsCompareByPositionAndCountAndAbsentNeverEqualsEmpty)
{
    const QString a = QStringLiteral("a");
    EXPECT_NE(DoHConfiguration({ a, QStringLiteral("b") }), DoHConfiguration({ QStringLiteral("b"), a }));
    EXPECT_NE(DoHConfiguration({ a }), DoHConfiguration({ a, a }));
    EXPECT_NE(DoTConfiguration({}, std::nullopt), DoTConfiguration({}, QString()));
    EXPECT_NE(
        DoHConfiguration({}, std::nullopt), DoHConfiguration({}, QUrl(QStringLiteral("https://a.example"))));
}

} // namespace
} // namespace brivanta
