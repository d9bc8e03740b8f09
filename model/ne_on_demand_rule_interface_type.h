#pragma once

#include "model/hasher.h"

#include <QString>
#include <array>
#include <functional>

namespace brivanta {

// The phone platform's on-demand interface type: an integer enumeration in which every integer is a value.
// Ethernet (1) is a valid stored value but is not offered as a choice and shows as "Unknown".
struct NEOnDemandRuleInterfaceType
{
    qint64 rawValue;

    constexpr explicit NEOnDemandRuleInterfaceType(qint64 value)
        : rawValue(value)
    { }

    static const NEOnDemandRuleInterfaceType any;
    static const NEOnDemandRuleInterfaceType ethernet;
    static const NEOnDemandRuleInterfaceType wiFi;
    static const NEOnDemandRuleInterfaceType cellular;

    // The selectable cases, in display order; Ethernet is deliberately not among them.
    static const std::array<NEOnDemandRuleInterfaceType, 3> allCases;

    QString description() const;
    void hash(Hasher &hasher) const { hasher.combine(rawValue); }

    friend constexpr bool operator==(NEOnDemandRuleInterfaceType, NEOnDemandRuleInterfaceType) = default;
};

inline constexpr NEOnDemandRuleInterfaceType NEOnDemandRuleInterfaceType::any { 0 };
inline constexpr NEOnDemandRuleInterfaceType NEOnDemandRuleInterfaceType::ethernet { 1 };
inline constexpr NEOnDemandRuleInterfaceType NEOnDemandRuleInterfaceType::wiFi { 2 };
inline constexpr NEOnDemandRuleInterfaceType NEOnDemandRuleInterfaceType::cellular { 3 };
inline constexpr std::array<NEOnDemandRuleInterfaceType, 3> NEOnDemandRuleInterfaceType::allCases {
    NEOnDemandRuleInterfaceType { 0 }, NEOnDemandRuleInterfaceType { 2 }, NEOnDemandRuleInterfaceType { 3 }
};

} // namespace brivanta

template <> struct std::hash<brivanta::NEOnDemandRuleInterfaceType>
{
    size_t operator()(const brivanta::NEOnDemandRuleInterfaceType &value) const
    {
        return brivanta::qHash(value);
    }
};
