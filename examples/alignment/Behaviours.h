// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef ALIGNMENT_BEHAVIOURS_H
#define ALIGNMENT_BEHAVIOURS_H

#include <cstdint>

namespace Alignment {

/// Registers the factories of all behaviours of this example and starts their random numbers.
///
/// | Name    | Runs                 | Visible parameters            |
/// |---------|----------------------|-------------------------------|
/// | Scatter | on each new particle | Side                          |
/// | Align   | first in each frame  | Side, Radius, Noise, TimeStep |
/// | Move    | then                 | Side, Speed, TimeStep         |
///
/// Align reads everybody's heading and writes the new one to a property of its own; Move makes it the heading.
/// So all turn at once, whatever their order.
void RegisterBehaviours(std::uint32_t seed);

} // namespace Alignment

#endif
