// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef FLOCK_BEHAVIOURS_H
#define FLOCK_BEHAVIOURS_H

#include <cstdint>

namespace Flock {

/// Registers the factories of all behaviours of this example. `seed` starts the random numbers of Settle.
///
/// | Name     | Runs                      | Visible parameters                      |
/// |----------|---------------------------|-----------------------------------------|
/// | Settle   | on each new bird          | Box                                     |
/// | Steer    | each frame                | Leaders, Wind                           |
/// | Home     | when Rest triggers it     | Home                                    |
/// | Rest     | each frame                | GoHome (a behaviour)                    |
/// | Fly      | each frame                | TimeElapsed, Box                        |
/// | Lead     | each frame, on leaders    | TimeElapsed, Box                        |
void RegisterBehaviours(std::uint32_t seed);

} // namespace Flock

#endif
