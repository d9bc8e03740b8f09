#pragma once

#include "model/hasher.h"

#include <QString>
#include <array>
#include <functional>

namespace brivanta {

// The phone platform's on-demand rule action: an integer enumeration in which every integer is a value.
// Values outside the known four are kept as they are and show as "Unknown".
struct NEOnDemandRuleAction
{
    qint64 rawValue;

    constexpr explicit NEOnDemandRuleAction(qint64 value)
        : rawValue(value)
    { }

    static const NEOnDemandRuleAction connect;
    static const NEOnDemandRuleAction disconnect;
    static const NEOnDemandRuleAction evaluateConnection;
    static const NEOnDemandRuleAction ignore;

    // The selectable cases, in display order.
    static const std::array<NEOnDemandRuleAction, 4> allCases;

    QString description() const;
    void hash(Hasher &hasher) const { hasher.combine(rawValue); }

    friend constexpr bool operator==(NEOnDemandRuleAction, NEOnDemandRuleAction) = default;
};

inline constexpr NEOnDemandRuleAction NEOnDemandRuleAction::connect { 1 };
inline constexpr NEOnDemandRuleAction NEOnDemandRuleAction::disconnect { 2 };
inline constexpr NEOnDemandRuleAction NEOnDemandRuleAction::evaluateConnection { 3 };
inline constexpr NEOnDemandRuleAction NEOnDemandRuleAction::ignore { 4 };
inline constexpr std::array<NEOnDemandRuleAction, 4> NEOnDemandRuleAction::allCases { NEOnDemandRuleAction {
                                                                                          1 },
    NEOnDemandRuleAction { 2 }, NEOnDemandRuleAction { 3 }, NEOnDemandRuleAction { 4 } };

} // namespace brivanta

template <> struct std::hash<brivanta::NEOnDemandRuleAction>
{
    size_t operator()(const brivanta::NEOnDemandRuleAction &value) const { return brivanta::qHash(value); }
};
