// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef ALIGNMENT_SIMULATION_H
#define ALIGNMENT_SIMULATION_H

#include <gentra/gentra.h>

#include <cstdint>

namespace Alignment {

/// Self-driven particles in a periodic square, each of which follows the mean heading around it.
class Simulation : private Util::EventListener {
public:
    /// `side` is that of the square, in interaction radii; `noise` the width of the random angle, in radians.
    /// Equal seeds give equal runs. One simulation at a time.
    Simulation(int particles, float side, float noise, std::uint32_t seed);

    void Step() { particles.ProcessMemberPool(); }

    /// The order parameter: the length of the mean direction, from 0 (disorder) to 1 (all go one way).
    [[nodiscard]] double Order();
    [[nodiscard]] Gentra::MemberPool& GetPool() { return particles; }

private:
    void HandleEvent(Util::Event const& event) override;

    Gentra::MemberPool particles;
    float side;
    float noise;
};

} // namespace Alignment

#endif
