// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef FLOCK_SIMULATION_H
#define FLOCK_SIMULATION_H

#include <gentra/gentra.h>

#include <cstdint>

namespace Flock {

/// Birds that flock, flee from hawks, drift with the wind and fly home when they are tired.
class Simulation : private Util::EventListener {
public:
    /// The box grows with the number of birds: one to each unit of its area. Equal seeds give equal runs.
    Simulation(int birds, std::uint32_t seed);

    /// One frame.
    void Step();

    /// The side of the box, the middle of which is (0, 0).
    [[nodiscard]] float GetBox() const { return box; }
    [[nodiscard]] Gentra::MemberPool& GetBirds() { return birds; }
    [[nodiscard]] Gentra::MemberPool& GetHawks() { return hawks; }

private:
    void HandleEvent(Util::Event const& event) override;
    void ConstructHawks();
    void ConstructBirds();

    Gentra::MemberPool hawks;
    Gentra::MemberPool birds;
    float box;
};

} // namespace Flock

#endif
