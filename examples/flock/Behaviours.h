// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef FLOCK_BEHAVIOURS_H
#define FLOCK_BEHAVIOURS_H

#include <cstdint>

namespace Flock {

/// Registers the factories of all behaviours of this example and starts their random numbers.
///
/// | Name   | Runs                      | Visible parameters      |
/// |--------|---------------------------|-------------------------|
/// | Settle | on each new bird          | Box                     |
/// | Gather | each frame, on birds      | TimeStep                |
/// | Flee   | each frame, on birds      | Hawks, Wind             |
/// | Home   | when Rest triggers it     | Home                    |
/// | Rest   | each frame, on birds      | GoHome (a behaviour)    |
/// | Hunt   | each frame, on hawks      |                         |
/// | Fly    | each frame                | TimeStep, Box, Limit    |
///
/// All but Fly only say where a bird wants to go (its "Steering"); Fly moves it. So each sees the others where
/// they were at the beginning of the frame.
void RegisterBehaviours(std::uint32_t seed);

} // namespace Flock

#endif
