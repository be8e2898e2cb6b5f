// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Simulation.h"

#include "../support/Building.h"
#include "Behaviours.h"

#include <cmath>

namespace Flock {

using namespace Gentra;

namespace {

constexpr int HAWKS = 6;
constexpr float TIME_STEP = 1.0f / 30;

} // namespace

Simulation::Simulation(int count, std::uint32_t seed)
    : EventListener("Flock"), hawks(ContextManager::GetMainContext()), birds(ContextManager::GetMainContext()),
      box(std::sqrt(static_cast<float>(count))) {
    RegisterBehaviours(seed);
    hawks.SetName("Hawks");
    birds.SetName("Birds");
    GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT);
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    hawks.SetMemberCount(HAWKS);
    birds.SetMemberCount(count);

    // The birds see the hawks through the pool property: they are the members of the other pool itself.
    MemberSelection* seen = &hawks;
    birds.GetPropertyFromName("Hawks")->SetPoolData(&seen);
}

void Simulation::HandleEvent(Util::Event const& event) {
    auto& pool = *static_cast<MemberPool*>(event.subject);
    Example::AddValue(pool, "TimeStep", TIME_STEP);
    Example::AddValue(pool, "Box", box);
    if (&pool == &hawks) {
        ConstructHawks();
    } else if (&pool == &birds) {
        ConstructBirds();
    }
}

void Simulation::ConstructHawks() {
    Example::AddValue(hawks, "Limit", 7);
    for (char const* const each : {"Hunt", "Fly"}) {
        hawks.LinkActiveBehaviour(Example::New(hawks, each));
    }
    hawks.LinkMemberConstructionBehaviour(Example::New(hawks, "Settle"));
}

void Simulation::ConstructBirds() {
    Example::AddValue(birds, "Limit", 6);
    Example::AddVector(birds, "Wind", {0.05f, 0, 0.02f});
    Example::AddVector(birds, "Home", {});
    Util::RefCountPtr<MemberSelectionProperty> const hawkProperty(new MemberSelectionProperty("Hawks"));
    hawkProperty->SetBasePoolID(hawks.GetMemberPoolID());
    birds.AddPoolProperty(hawkProperty);

    Example::BehaviourPtr const home = Example::New(birds, "Home");
    Util::RefCountPtr<BehaviourProperty> const goHome(new BehaviourProperty("GoHome"));
    goHome->SetBehaviour(home.Get());
    birds.AddPoolProperty(goHome);

    birds.LinkPassiveBehaviour(home);
    for (char const* const each : {"Gather", "Flee", "Rest", "Fly"}) {
        birds.LinkActiveBehaviour(Example::New(birds, each));
    }
    birds.LinkMemberConstructionBehaviour(Example::New(birds, "Settle"));
}

void Simulation::Step() {
    hawks.ProcessMemberPool();
    birds.ProcessMemberPool();
}

} // namespace Flock
