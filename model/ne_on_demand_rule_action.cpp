#include "model/ne_on_demand_rule_action.h"

namespace brivanta {

QString NEOnDemandRuleAction::description() const
{
    switch (rawValue) {
    case 1:
        return QStringLiteral("Apply settings");
    case 2:
        return QStringLiteral("Do not apply settings");
    case 3:
        return QStringLiteral("Apply with excluded domains");
    case 4:
        return QStringLiteral("As is");
    default:
        return QStringLiteral("Unknown");
    }
}

} // namespace brivanta
