// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef ESCAPE_BEHAVIOURS_H
#define ESCAPE_BEHAVIOURS_H

#include <cstdint>

namespace Escape {

// The room lies between (0, 0) and (SIDE, SIDE), in metres. The door is in the middle of the wall at x = SIDE.
constexpr float SIDE = 15.0f;
constexpr float DOOR_WIDTH = 1.0f;
constexpr float DOOR_LOW = 0.5f * (SIDE - DOOR_WIDTH);
constexpr float DOOR_HIGH = 0.5f * (SIDE + DOOR_WIDTH);

constexpr float SMALLEST_RADIUS = 0.25f;
constexpr float LARGEST_RADIUS = 0.35f;

/// Registers the factories of all behaviours of this example and starts their random numbers.
///
/// | Name  | Runs                | Visible parameters      |
/// |-------|---------------------|-------------------------|
/// | Enter | on each new person  |                         |
/// | Push  | first in each frame | DesiredSpeed, TimeStep  |
/// | Walk  | then                | TimeStep                |
///
/// Push works out everybody's force from where all are now, and only Walk moves them: so nobody's order counts. Push
/// also says, in the pool property "Damping", by what share of the velocity between bodies friction takes away in a
/// second, where it is highest: a time step must be well below its inverse.
void RegisterBehaviours(std::uint32_t seed);

} // namespace Escape

#endif
