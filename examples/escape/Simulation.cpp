// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Simulation.h"

#include "../support/Building.h"
#include "Behaviours.h"

namespace Escape {

using namespace Gentra;

namespace {

constexpr float OUTSIDE = SIDE + 1.0f;

} // namespace

Simulation::Simulation(int count, float newDesiredSpeed, float newTimeStep, std::uint32_t seed)
    : EventListener("Escape"), people(ContextManager::GetMainContext()), desiredSpeed(newDesiredSpeed),
      timeStep(newTimeStep) {
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
    Example::AddValue(people, "TimeStep", timeStep);
    people.LinkActiveBehaviour(Example::New(people, "Push"));
    people.LinkActiveBehaviour(Example::New(people, "Walk"));
    people.LinkMemberConstructionBehaviour(Example::New(people, "Enter"));
}

void Simulation::Step() {
    people.ProcessMemberPool();
    time += static_cast<double>(timeStep);
    int const position = people.GetDataOffsetFromPropertyName("Position");
    for (int i = people.GetNumMembers(); i-- > 0;) {
        Member const person = people.GetMemberByIndex(i);
        if (Datum::Read<Math::Vec3>(person.record + position).x > OUTSIDE) {
            leavingTimes.push_back(time);
            people.RemoveMemberByIndex(i);
            people.DeleteMember(person);
        }
    }
}

} // namespace Escape
