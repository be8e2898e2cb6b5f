// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SPATIAL_BOUNDINGRECT_H
#define GENTRA_SPATIAL_BOUNDINGRECT_H

#include <utility>

namespace Gentra {

/// A rectangle in the horizontal plane that grows around points. All arithmetic is in single precision.
struct BoundingRect {
    /// @{
    /// The sides, in world units.
    float minX = 0.0f;
    float minZ = 0.0f;
    float maxX = 0.0f;
    float maxZ = 0.0f;
    /// @}
    bool empty = true; ///< Whether there was no point yet; all sides are 0 then.

    /// Forgets all points.
    void Reset() noexcept { *this = BoundingRect(); }

    /// Includes a point. A coordinate that is not a number is ignored, but in the first point, where it stays.
    void Extend(float x, float z) noexcept {
        if (empty) {
            minX = maxX = x;
            minZ = maxZ = z;
            empty = false;
            return;
        }
        minX = x < minX ? x : minX;
        minZ = z < minZ ? z : minZ;
        maxX = x > maxX ? x : maxX;
        maxZ = z > maxZ ? z : maxZ;
    }

    /// The place of a point relative to the rectangle: (0, 0) at the minima, (1, 1) at the maxima, below 0
    /// and above 1 outside. (0, 0) for every point when the rectangle has no width or no depth.
    [[nodiscard]] std::pair<float, float> Normalize(float x, float z) const noexcept {
        float const width = maxX - minX;
        float const depth = maxZ - minZ;
        if (width == 0.0f || depth == 0.0f) {
            return {0.0f, 0.0f};
        }
        return {(x - minX) / width, (z - minZ) / depth};
    }
};

} // namespace Gentra

#endif
