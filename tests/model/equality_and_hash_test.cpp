#include "model/resolver.h"

#include <QSet>
#include <gtest/gtest.h>
#include <unordered_set>

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
    EXPECT_EQ(std::hash<Resolver>()(profile(precomposed)), std::hash<Resolver>()(profile(decomposed)));

    const auto doh
        = [](const QString &server) { return Configuration::dnsOverHTTPS(DoHConfiguration({ server })); };
    EXPECT_EQ(doh(precomposed), doh(decomposed));
    EXPECT_EQ(qHash(doh(precomposed)), qHash(doh(decomposed)));
    EXPECT_NE(doh(precomposed), doh(QStringLiteral("cafe")));
}

TEST(RecordEquality, EqualProfilesCollapseInHashedSets)
{
    QSet<Resolver> qset { profile(precomposed), profile(decomposed), profile(QStringLiteral("other")) };
    EXPECT_EQ(qset.size(), 2);
    std::unordered_set<OnDemandRule> stdset { rule(precomposed), rule(decomposed) };
    EXPECT_EQ(stdset.size(), 1u);
}

TEST(RecordEquality, ProfilesDifferingOnlyInIdOrOnlyInNameAreNotEqual)
{
    const Configuration configuration = Configuration::dnsOverHTTPS(DoHConfiguration());
    const Resolver base(profileId, QStringLiteral("a"), configuration);
    EXPECT_NE(base, Resolver(QUuid::createUuid(), QStringLiteral("a"), configuration));
    EXPECT_NE(base, Resolver(QStringLiteral("a"), configuration));
    EXPECT_NE(base, Resolver(profileId, QStringLiteral("b"), configuration));
    EXPECT_EQ(base, Resolver(profileId, QStringLiteral("a"), configuration));
}

TEST(RecordEquality, AlternativesWithTheSameServersAreNotEqual)
{
    const QStringList servers { QStringLiteral("9.9.9.9") };
    EXPECT_NE(Configuration::dnsOverTLS(DoTConfiguration(servers)),
        Configuration::dnsOverHTTPS(DoHConfiguration(servers)));
    EXPECT_NE(Configuration::dnsOverTLS(DoTConfiguration()), Configuration::dnsOverHTTPS(DoHConfiguration()));
}

TEST(RecordEquality, AbsentNeverEqualsPresentEvenWhenEmpty)
{
    EXPECT_NE(DoTConfiguration({}, std::nullopt), DoTConfiguration({}, QString()));
    EXPECT_NE(
        DoHConfiguration({}, std::nullopt), DoHConfiguration({}, QUrl(QStringLiteral("https://a.example"))));
    OnDemandRule withProbe = rule(QStringLiteral("x"));
    OnDemandRule withoutProbe = withProbe;
    withoutProbe.probeURL.reset();
    EXPECT_NE(withProbe, withoutProbe);
    EXPECT_EQ(DoTConfiguration({}, QString()), DoTConfiguration({}, QStringLiteral("")));
}

TEST(RecordEquality, ListsCompareByPositionAndCount)
{
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    EXPECT_NE(DoHConfiguration({ a, b }), DoHConfiguration({ b, a }));
    EXPECT_NE(DoHConfiguration({ a }), DoHConfiguration({ a, a }));

    OnDemandRule first = rule(a);
    OnDemandRule second = rule(b);
    const Configuration configuration = Configuration::dnsOverHTTPS(DoHConfiguration());
    EXPECT_NE(Resolver(profileId, a, configuration, { first, second }),
        Resolver(profileId, a, configuration, { second, first }));
}

TEST(RecordEquality, EveryRuleFieldTakesPart)
{
    const OnDemandRule base = rule(QStringLiteral("x"));
    std::vector<OnDemandRule> variants(8, base);
    variants[0].id = QUuid::createUuid();
    variants[1].name = QStringLiteral("y");
    variants[2].action = NEOnDemandRuleAction(9);
    variants[3].interfaceType = NEOnDemandRuleInterfaceType::ethernet;
    variants[4].ssidMatch.append(QStringLiteral("y"));
    variants[5].dnsSearchDomainMatch.clear();
    variants[6].dnsServerAddressMatch = { QStringLiteral("y") };
    variants[7].probeURL = QUrl(QStringLiteral("https://probe.example/other"));
    for (size_t i = 0; i < variants.size(); ++i)
        EXPECT_NE(base, variants[i]) << "field " << i;
}

TEST(RecordDefaults, RuleIgnoresOnAnyInterfaceWithANewId)
{
    const OnDemandRule first(QStringLiteral("r"));
    const OnDemandRule second(QStringLiteral("r"));
    EXPECT_EQ(first.action.rawValue, 4);
    EXPECT_EQ(first.interfaceType.rawValue, 0);
    EXPECT_FALSE(first.id.isNull());
    EXPECT_NE(first.id, second.id);
}

} // namespace
} // namespace brivanta
