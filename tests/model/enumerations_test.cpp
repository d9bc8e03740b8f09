#include "model/configuration.h"
#include "model/ne_on_demand_rule_action.h"
#include "model/ne_on_demand_rule_interface_type.h"

#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(Enumerations, DescriptionsAreTheDisplayStringsOfTheRawValues)
{
    // Raw value, the action's description, the interface type's.
    const std::tuple<qint64, const char *, const char *> cases[]
        = { { 0, "Unknown", "Any" }, { 1, "Apply settings", "Unknown" },
              { 2, "Do not apply settings", "Wi-Fi" }, { 3, "Apply with excluded domains", "Cellular" },
              { 4, "As is", "Unknown" }, { 5, "Unknown", "Unknown" }, { INT64_MIN, "Unknown", "Unknown" } };
    for (const auto &[rawValue, action, interfaceType] : cases) {
        EXPECT_EQ(NEOnDemandRuleAction(rawValue).description(), QString::fromUtf8(action)) << rawValue;
        EXPECT_EQ(NEOnDemandRuleInterfaceType(rawValue).description(), QString::fromUtf8(interfaceType))
            << rawValue;
    }
    EXPECT_EQ(Configuration::dnsOverTLS(DoTConfiguration()).description(), QStringLiteral("DNS-over-TLS"));
}

} // namespace
} // namespace brivanta
