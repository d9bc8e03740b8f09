#include "model/configuration.h"
#include "model/ne_on_demand_rule_action.h"
#include "model/ne_on_demand_rule_interface_type.h"

#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <vector>

namespace brivanta {
namespace {

struct Described
{
    qint64 rawValue;
    const char *description;
};

void PrintTo(const Described &value, std::ostream *out)
{
    *out << value.rawValue << " \"" << value.description << '"';
}

class ActionDescription : public ::testing::TestWithParam<Described>
{
};

TEST_P(ActionDescription, IsTheDisplayStringOfTheRawValue)
{
    EXPECT_EQ(
        NEOnDemandRuleAction(GetParam().rawValue).description(), QString::fromUtf8(GetParam().description));
}

INSTANTIATE_TEST_SUITE_P(KnownAndUnknown, ActionDescription,
    ::testing::Values(Described { 1, "Apply settings" }, Described { 2, "Do not apply settings" },
        Described { 3, "Apply with excluded domains" }, Described { 4, "As is" }, Described { 0, "Unknown" },
        Described { 5, "Unknown" }, Described { 9, "Unknown" }, Described { -1, "Unknown" },
        Described { std::numeric_limits<qint64>::min(), "Unknown" }));

class InterfaceTypeDescription : public ::testing::TestWithParam<Described>
{
};

TEST_P(InterfaceTypeDescription, IsTheDisplayStringOfTheRawValue)
{
    EXPECT_EQ(NEOnDemandRuleInterfaceType(GetParam().rawValue).description(),
        QString::fromUtf8(GetParam().description));
}

INSTANTIATE_TEST_SUITE_P(KnownAndUnknown, InterfaceTypeDescription,
    ::testing::Values(Described { 0, "Any" }, Described { 1, "Unknown" }, Described { 2, "Wi-Fi" },
        Described { 3, "Cellular" }, Described { 4, "Unknown" }, Described { -3, "Unknown" }));

template <typename Enumeration, size_t N>
std::vector<qint64> rawValues(const std::array<Enumeration, N> &cases)
{
    std::vector<qint64> values;
    for (const Enumeration &value : cases)
        values.push_back(value.rawValue);
    return values;
}

TEST(Enumerations, CaseListsAreFixedAndLeaveEthernetOut)
{
    EXPECT_EQ(rawValues(NEOnDemandRuleAction::allCases), (std::vector<qint64> { 1, 2, 3, 4 }));
    EXPECT_EQ(rawValues(NEOnDemandRuleInterfaceType::allCases), (std::vector<qint64> { 0, 2, 3 }));
}

TEST(ConfigurationBase, IsMadeOnlyFromItsExactRawValues)
{
    ASSERT_TRUE(Configuration::Base::fromRawValue(u"dnsOverTLS"));
    EXPECT_EQ(*Configuration::Base::fromRawValue(u"dnsOverTLS"), Configuration::Base::dnsOverTLS);
    ASSERT_TRUE(Configuration::Base::fromRawValue(u"dnsOverHTTPS"));
    EXPECT_EQ(*Configuration::Base::fromRawValue(u"dnsOverHTTPS"), Configuration::Base::dnsOverHTTPS);
    for (const char16_t *text : { u"dot", u"doh", u"DNSOverTLS", u"dnsoverhttps", u"", u"dnsOverHTTPS " })
        EXPECT_FALSE(Configuration::Base::fromRawValue(text)) << QString::fromUtf16(text).toStdString();
    EXPECT_EQ(
        Configuration::Base(Configuration::Base::dnsOverHTTPS).rawValue(), QStringLiteral("dnsOverHTTPS"));
}

TEST(ConfigurationCodingKeys, AreMadeOnlyFromTheThreeKeyTexts)
{
    EXPECT_EQ(*Configuration::CodingKeys::fromRawValue(u"base"), Configuration::CodingKeys::base);
    EXPECT_EQ(*Configuration::CodingKeys::fromRawValue(u"dotConfiguration"),
        Configuration::CodingKeys::dotConfiguration);
    EXPECT_EQ(*Configuration::CodingKeys::fromRawValue(u"dohConfiguration"),
        Configuration::CodingKeys::dohConfiguration);
    EXPECT_FALSE(Configuration::CodingKeys::fromRawValue(u"servers"));
    EXPECT_FALSE(Configuration::CodingKeys::fromRawValue(u"Base"));
    EXPECT_EQ(Configuration::CodingKeys(Configuration::CodingKeys::dotConfiguration).rawValue(),
        QStringLiteral("dotConfiguration"));
}

TEST(ConfigurationDescription, NamesTheProtocol)
{
    EXPECT_EQ(Configuration::dnsOverTLS(DoTConfiguration()).description(), QStringLiteral("DNS-over-TLS"));
    EXPECT_EQ(
        Configuration::dnsOverHTTPS(DoHConfiguration()).description(), QStringLiteral("DNS-over-HTTPS"));
}

} // namespace
} // namespace brivanta
