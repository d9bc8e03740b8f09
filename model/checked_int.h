#pragma once

#include "model/fatal.h"

#include <concepts>
#include <limits>
#include <type_traits>

namespace brivanta {

// Integer arithmetic that stops the process instead of overflowing. Used where an overflow would mean a
// counter or index has gone past anything the app can reach, so carrying on would hide a broken state.
template <std::integral T> [[nodiscard]] constexpr T checkedAdd(T a, T b)
{
    using Limits = std::numeric_limits<T>;
    bool overflows = false;
    if constexpr (std::is_signed_v<T>)
        overflows = b > 0 ? a > Limits::max() - b : a < Limits::min() - b;
    else
        overflows = a > Limits::max() - b;
    if (overflows)
        fatal("integer overflow in an addition");
    return static_cast<T>(a + b);
}

template <std::integral T> [[nodiscard]] constexpr T checkedSubtract(T a, T b)
{
    using Limits = std::numeric_limits<T>;
    bool overflows = false;
    if constexpr (std::is_signed_v<T>)
        overflows = b < 0 ? a > Limits::max() + b : a < Limits::min() + b;
    else
        overflows = a < b;
    if (overflows)
        fatal("integer overflow in a subtraction");
    return static_cast<T>(a - b);
}

} // namespace brivanta
