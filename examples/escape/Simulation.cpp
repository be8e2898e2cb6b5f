// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Simulation.h"

#include "../support/Building.h"
#include "Behaviours.h"

namespace Escape {

using namespace Gentra;

namespace {

constexpr float OUTSIDE = SIDE + 1.0f;
/// The share of a velocity that friction may take away in one step.
constexpr float MOST_DAMPING = 0.5f;

} // namespace

Simulation::Simulation(int count, float newDesiredSpeed, float newLongestStep, std::uint32_t seed)
    : EventListener("Escape"), people(ContextManager::GetMainContext()), desiredSpeed(newDesiredSpeed),
      longestStep(newLongestStep) {
    RegisterBehaviours(seed);
    people.SetName("People");
    GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT);
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    people.SetMemberCount(count);
}

void Simulation::HandleEvent(Util::Event const& event) {
    if (event.subject != &people) {
        return;
    }
    Example::AddValue(people, "DesiredSpeed", desiredSpeed);
    Example::AddValue(people, "TimeStep", longestStep);
    people.LinkActiveBehaviour(Example::New(people, "Push"));
    people.LinkActiveBehaviour(Example::New(people, "Walk"));
    people.LinkMemberConstructionBehaviour(Example::New(people, "Enter"));
}

void Simulation::Step() {
    float& timeStep = people.GetPropertyFromName("TimeStep")->value;
    float const damping = people.GetPropertyFromName("Damping")->value; // as of the step before
    timeStep = damping * longestStep > MOST_DAMPING ? MOST_DAMPING / damping : longestStep;
    people.ProcessMemberPool();
    time += static_cast<double>(timeStep);
    int const position = people.GetDataOffsetFromPropertyName("Position");
    std::vector<Member> outside;
    for (Member const person : people.GetAllMembers()) {
        if (Datum::Read<Math::Vec3>(person.record + position).x > OUTSIDE) {
            leavingTimes.push_back(time);
            outside.push_back(person);
        }
    }
    people.RemoveAndDeleteMembers(outside);
}

} // namespace Escape
