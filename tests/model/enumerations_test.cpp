#include "model/configuration.h"
#include "model/ne_on_demand_rule_action.h"
#include "model/ne_on_demand_rule_interface_type.h"

#include <gtest/gtest.h>
#include <limits>

namespace brivanta {
namespace {

TEST(Enumerations, DescriptionsAreTheDisplayStringsOfTheRawValues)
{
    const std::pair<qint64, const char *> actions[] = { { 1, "Apply settings" },
        { 2, "Do not apply settings" }, { 3, "Apply with excluded domains" }, { 4, "As is" },
        { 0, "Unknown" }, { 5, "Unknown" }, { std::numeric_limits<qint64>::min(), "Unknown" } };
    for (const auto &[rawValue, description] : actions)
        EXPECT_EQ(NEOnDemandRuleAction(rawValue).description(), QString::fromUtf8(description)) << rawValue;

    const std::pair<qint64, const char *> interfaceTypes[] = { { 0, "Any" }, { 1, "Unknown" }, { 2, "Wi-Fi" },
        { 3, "Cellular" }, { 4, "Unknown" }, { -3, "Unknown" } };
    for (const auto &[rawValue, description] : interfaceTypes)
        EXPECT_EQ(NEOnDemandRuleInterfaceType(rawValue).description(), QString::fromUtf8(description))
            << rawValue;

    EXPECT_EQ(Configuration::dnsOverTLS(DoTConfiguration()).description(), QStringLiteral("DNS-over-TLS"));
}

} // namespace
} // namespace brivanta
