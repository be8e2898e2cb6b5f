// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_DATUM_H
#define GENTRA_PROPERTIES_DATUM_H

#include <cstring>
#include <type_traits>

namespace Gentra::Datum {

/// Reads a value from any address. Member records are packed, so a datum may be unaligned for its type; the
/// copy compiles to a plain load where the machine allows one.
template<class T>
[[nodiscard]] inline T Read(void const* datum) noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, datum, sizeof value);
    return value;
}

/// Writes a value to any address.
template<class T>
inline void Write(void* datum, T const& value) noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(datum, &value, sizeof value);
}

} // namespace Gentra::Datum

#endif
