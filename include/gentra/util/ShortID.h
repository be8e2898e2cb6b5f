// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_SHORTID_H
#define GENTRA_UTIL_SHORTID_H

#include "gentra/gentra_export.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace Util {

/// A signed 32-bit identifier of a pool, a property or a path. Every bit pattern is a legal ID.
///
/// Where an operation says so, 0 stands for "no ID given"; here it is an ordinary value. IDs are ordered as
/// signed numbers.
class ShortID {
public:
    /// Draws a fresh value from the library-wide random source, see Generate().
    ShortID() : value(Generate()) {}
    /// @{
    /// Implicit, so that numbers and IDs stand for each other.
    constexpr ShortID(int id) noexcept : value(id) {}

    constexpr operator int() const noexcept { return value; }
    /// @}

    /// @{
    /// As signed numbers.
    [[nodiscard]] friend constexpr bool operator==(ShortID const& a, ShortID const& b) noexcept = default;
    [[nodiscard]] friend constexpr auto operator<=>(ShortID const& a, ShortID const& b) noexcept = default;
    /// @}
    /// @{
    /// With a number by the language's own conversions, so that an unsigned hash compares bit by bit.
    template<std::integral I>
    [[nodiscard]] friend constexpr bool operator==(ShortID const& a, I b) noexcept {
        using Common = std::common_type_t<std::int32_t, I>;
        return static_cast<Common>(a.value) == static_cast<Common>(b);
    }
    template<std::integral I>
    [[nodiscard]] friend constexpr auto operator<=>(ShortID const& a, I b) noexcept {
        using Common = std::common_type_t<std::int32_t, I>;
        return static_cast<Common>(a.value) <=> static_cast<Common>(b);
    }
    /// @}

    /// The next value of the library-wide random source.
    ///
    /// The source is a Mersenne Twister state (M. Matsumoto, T. Nishimura, ACM TOMACS 8, 1998) that hands out
    /// its words untempered. The first request of a process seeds it through the C library's `srand` and
    /// `rand`, so IDs differ from run to run. Not for cryptography.
    [[nodiscard]] GENTRA_EXPORT static int Generate();

private:
    std::int32_t value;
};

} // namespace Util

#endif
