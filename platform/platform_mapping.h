#pragma once

#include "model/configuration.h"
#include "model/on_demand_rule.h"
#include "platform/ne_dns_settings.h"
#include "platform/ne_on_demand_rule.h"

#include <vector>

namespace brivanta {

// The phone platform's DNS settings for a configuration. Whatever the record holds is passed on; it is the
// phone platform's save that judges it.
NEDNSSettings makeDNSSettings(const Configuration &configuration);

// The phone platform's rule for an on-demand rule. The id and name stay behind. An action outside 1 to 4
// stops the process.
NEOnDemandRule makeOnDemandRule(const OnDemandRule &rule);

// One platform rule per rule, in order; an empty list gives an empty list.
std::vector<NEOnDemandRule> makeOnDemandRules(const std::vector<OnDemandRule> &rules);

} // namespace brivanta
