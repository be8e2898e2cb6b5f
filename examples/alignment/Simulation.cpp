// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Simulation.h"

#include "../support/Building.h"
#include "Behaviours.h"

#include <cmath>

namespace Alignment {

using namespace Gentra;

namespace {

constexpr float RADIUS = 1.0f;
constexpr float SPEED = 0.03f; // radii per step
constexpr float TIME_STEP = 1.0f;

} // namespace

Simulation::Simulation(int count, float newSide, float newNoise, std::uint32_t seed)
    : EventListener("Alignment"), particles(ContextManager::GetMainContext()), side(newSide), noise(newNoise) {
    RegisterBehaviours(seed);
    particles.SetName("Particles");
    GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT);
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    particles.SetMemberCount(count);
}

void Simulation::HandleEvent(Util::Event const& event) {
    if (event.subject != &particles) {
        return;
    }
    Example::AddValue(particles, "Side", side);
    Example::AddValue(particles, "Radius", RADIUS);
    Example::AddValue(particles, "Noise", noise);
    Example::AddValue(particles, "Speed", SPEED);
    Example::AddValue(particles, "TimeStep", TIME_STEP);
    particles.LinkActiveBehaviour(Example::New(particles, "Align"));
    particles.LinkActiveBehaviour(Example::New(particles, "Move"));
    particles.LinkMemberConstructionBehaviour(Example::New(particles, "Scatter"));
}

double Simulation::Order() {
    int const heading = particles.GetDataOffsetFromPropertyName("Heading");
    double x = 0;
    double z = 0;
    for (Member const particle : particles.GetAllMembers()) {
        auto const angle = static_cast<double>(Datum::Read<float>(particle.record + heading));
        x += std::cos(angle);
        z += std::sin(angle);
    }
    return std::hypot(x, z) / particles.GetNumMembers();
}

} // namespace Alignment
