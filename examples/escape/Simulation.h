// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef ESCAPE_SIMULATION_H
#define ESCAPE_SIMULATION_H

#include <gentra/gentra.h>

#include <cstdint>
#include <vector>

namespace Escape {

/// People in a room with one door, who all want to leave.
class Simulation : private Util::EventListener {
public:
    /// `desiredSpeed` in m/s, `longestStep` in s. Equal seeds give equal runs. One simulation at a time.
    Simulation(int people, float desiredSpeed, float longestStep, std::uint32_t seed);

    /// One time step, shorter than the longest where bodies are pressed so hard that friction would overshoot.
    /// Whoever is a metre behind the door has left, and is deleted.
    void Step();

    /// Seconds since the beginning.
    [[nodiscard]] double GetTime() const { return time; }
    /// How many people are still there.
    [[nodiscard]] int GetNumPeople() { return people.GetNumMembers(); }
    /// When each of those who left did, in seconds.
    [[nodiscard]] std::vector<double> const& GetLeavingTimes() const { return leavingTimes; }
    [[nodiscard]] Gentra::MemberPool& GetPool() { return people; }

private:
    void HandleEvent(Util::Event const& event) override;

    Gentra::MemberPool people;
    float desiredSpeed;
    float longestStep;
    double time = 0;
    std::vector<double> leavingTimes;
};

} // namespace Escape

#endif
