// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_VEC3_H
#define GENTRA_UTIL_VEC3_H

namespace Math {

/// Three 32-bit floats in world units; `y` is the vertical axis. Occupies 12 bytes in a member record.
struct Vec3 {
    float x = 0.0f; ///< Horizontal.
    float y = 0.0f; ///< Vertical.
    float z = 0.0f; ///< Horizontal.

    constexpr Vec3() noexcept = default;
    /// In world units.
    constexpr Vec3(float newX, float newY, float newZ) noexcept : x(newX), y(newY), z(newZ) {}
};

} // namespace Math

#endif
