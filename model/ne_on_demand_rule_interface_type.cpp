#include "model/ne_on_demand_rule_interface_type.h"

namespace brivanta {

QString NEOnDemandRuleInterfaceType::description() const
{
    switch (rawValue) {
    case 0:
        return QStringLiteral("Any");
    case 2:
        return QStringLiteral("Wi-Fi");
    case 3:
        return QStringLiteral("Cellular");
    default:
        return QStringLiteral("Unknown");
    }
}

} // namespace brivanta
