// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The runs of behaviours: which one comes next, what it does, what it ought to read.

#include "WorldModel.h"

#include <utility>

namespace Whole {

// Behaviours.

WorldBehaviour::WorldBehaviour(World& newHost, Kind newKind) : host(&newHost), kind(newKind) {
    for (SlotKind const& slot : SlotsOf(kind)) {
        Parameter parameter;
        parameter.MakeBehaviourInterfaceParameter(slot.owner, slot.type, slot.name, slot.scope);
        parameter.value = slot.first;
        parameter.vector = {slot.first, slot.first, slot.first};
        AddParameterToInterface(&parameter);
    }
}

void WorldBehaviour::ProcessMembers(std::vector<Member>& members, Member& current) {
    PoolState* const running = host->BeginRun(*this, members);
    Member const last = members.empty() ? Member() : members.back();
    Behaviour::ProcessMembers(members, current);
    host->EndRun(*running, ReadyToUse() && !members.empty(), last);
}

bool WorldBehaviour::TriggerLiveBehaviour() {
    if (!std::exchange(triggered, false)) {
        host->WorkOn(*this);
    }
    return false;
}

// Runs.

/// The run that comes next must be this one.
PoolState* World::BeginRun(WorldBehaviour& behaviour, std::vector<Member> const& members) {
    DropRunsOnNobody();
    if (expectedRuns.empty()) {
        PoolState* constructed = nullptr;
        WorldBehaviour* const next = pass ? NextOfPoolConstruction(constructed) : nullptr;
        if (next != nullptr) {
            expectedRuns.push_front({next, constructed, std::vector{constructed->list.active}, false});
        } else {
            if (pass) {
                EndPass();
            }
            BeginFrame();
            DropRunsOnNobody();
        }
    }
    Require(!expectedRuns.empty() && expectedRuns.front().behaviour == &behaviour, "an unexpected run");
    Run run = std::move(expectedRuns.front());
    expectedRuns.pop_front();
    if (run.ofNewMember) {
        run.members = members;
        Require(members.size() == 1, "a new member comes alone");
        Born(*run.pool, members[0]);
    } else if (!run.members) {
        run.members = AsVector(run.pool->list);
    }
    Require(members == *run.members, "the members of a run");
    if (run.prepared) {
        RefreshConstants(behaviour);
    }
    ++runsSoFar;
    runs.push_back(std::move(run));
    return runs.back().pool;
}

/// A behaviour is made ready for its turn, but runs on nobody whom it does not fit: one that is linked in two
/// pools loses its links with either.
void World::DropRunsOnNobody() {
    while (!expectedRuns.empty() && expectedRuns.front().prepared) {
        Run const& next = expectedRuns.front();
        if (Fits(*next.pool, *next.behaviour, next.ofNewMember)) {
            return;
        }
        RefreshConstants(*next.behaviour);
        expectedRuns.pop_front();
    }
}

void World::RefreshConstants(WorldBehaviour& behaviour) {
    for (WorldBehaviour::Slot& slot : behaviour.slots) {
        if (slot.link != nullptr && slot.link->owner == POOL) {
            slot.constant = slot.link->value;
        }
    }
}

void World::RequireNoMoreRuns(char const* what) {
    DropRunsOnNobody();
    Require(expectedRuns.empty(), what);
}

void World::EndRun(PoolState& pool, bool visited, Member last) {
    if (visited) {
        pool.list.active = last;
    }
    if (runs.size() == 1 && visited && runs.back().behaviour->kind == WorldBehaviour::SEE) {
        See(pool);
    }
    if (runs.size() == 1 && runs.back().behaviour->kind == WorldBehaviour::TURN_OVER) {
        unsigned int const turn = choices.Below(8);
        PoolState* const other = SomePool();
        if (turn == 0 && other != nullptr && other != &pool) {
            DestroyPool(*other);
        } else if (turn == 1) {
            CreatePool();
        } else if (turn == 2 && !runs.back().ofNewMember) {
            DeleteMember(pool);
        } else {
            AddMember(pool);
        }
        // The vector that is being processed is brought up to date for the behaviours that follow.
        Require(pool.pool->GetAllMembers() == AsVector(pool.list), "the members after a turnover");
    }
    runs.pop_back();
}

void World::WorkOn(WorldBehaviour& behaviour) {
    PoolState& pool = *runs.back().pool;
    Member const current = pool.pool->ActiveMember();
    pool.list.active = current;
    if (!current.IsValid() || !MayWork(behaviour, pool)) {
        return;
    }
    behaviour.member = current;
    auto const datum = [&](std::size_t slot) -> Floats& {
        return pool.members.at(current.record).at(behaviour.slots.at(slot).offset);
    };
    switch (behaviour.kind) {
    case WorldBehaviour::ADD: {
        behaviour.member = MemberOfLink(behaviour, current);
        float const amount = behaviour.ReadFlexibleValue(0);
        Require(amount == Expected(behaviour)[0], "the value that a behaviour reads");
        behaviour.member = current;
        Floats& sum = datum(1);
        sum[0] = Bounded(sum[0] + amount);
        behaviour.WriteFlexibleValue(1, Bounded(behaviour.ReadFlexibleValue(1) + amount));
        break;
    }
    case WorldBehaviour::DRIFT: {
        behaviour.member = MemberOfLink(behaviour, current);
        Math::Vec3 const wind = behaviour.ReadFlexibleVec3(0);
        Require(Floats{wind.x, wind.y, wind.z} == Expected(behaviour), "the vector that a behaviour reads");
        behaviour.member = current;
        Floats& place = datum(1);
        place = {Bounded(place[0] + wind.x), Bounded(place[1] + wind.y), Bounded(place[2] + wind.z + 0.25f)};
        Math::Vec3 const from = behaviour.ReadFlexibleVec3(1);
        behaviour.WriteFlexibleVec3(
            1, {Bounded(from.x + wind.x), Bounded(from.y + wind.y), Bounded(from.z + wind.z + 0.25f)});
        datum(2)[0] += 1;
        behaviour.WriteFlexibleValue(2, behaviour.ReadFlexibleValue(2) + 1);
        break;
    }
    case WorldBehaviour::TRIGGER:
        behaviour.slots[1].link->value[0] += 1;
        behaviour.UsePoolValue(1) += 1;
        Trigger(behaviour);
        break;
    case WorldBehaviour::SEE: {
        MemberSelection& chosen = behaviour.UseFlexibleMemberSelection(0);
        chosen.Clear();
        chosen.AddMember(*pool.pool, current);
        break;
    }
    default:
        datum(0)[0] = Bounded(datum(0)[0] + 1);
        behaviour.WriteFlexibleValue(0, Bounded(behaviour.ReadFlexibleValue(0) + 1));
    }
}

/// Whether all member data are linked, as they were compiled, to what is there: this pool's, or in a slot that is
/// read by value the active member's of another pool. A behaviour that takes no care reads anything.
bool World::MayWork(WorldBehaviour const& behaviour, PoolState const& pool) {
    for (std::size_t i = 0; i < SlotsOf(behaviour.kind).size(); ++i) {
        WorldBehaviour::Slot const& slot = behaviour.slots[i];
        if (slot.link == nullptr) {
            return false;
        }
        PropertyState const& link = *slot.link;
        bool const isThere = link.owner == MEMBER && link.pool != nullptr && link.offset == slot.offset;
        bool const isForeign = isThere && i == 0 && link.IsNumeric() && link.pool->list.active.IsValid() &&
                               SlotsOf(behaviour.kind)[0].owner == FLEXIBLE;
        if (slot.owner == MEMBER && !(isThere && link.pool == &pool) && !isForeign) {
            return false;
        }
    }
    return true;
}

/// The member whose datum the first slot reads.
Member World::MemberOfLink(WorldBehaviour const& behaviour, Member current) {
    WorldBehaviour::Slot const& slot = behaviour.slots[0];
    bool const isForeign = slot.owner == MEMBER && !slot.link->pool->members.contains(current.record);
    return isForeign ? slot.link->pool->list.active : current;
}

/// What the first slot ought to read: of `member` or, where it was compiled in no pool, of its pool's active
/// member.
Floats World::Expected(WorldBehaviour const& behaviour) {
    WorldBehaviour::Slot const& slot = behaviour.slots[0];
    PropertyState const& link = *slot.link;
    auto const datumOf = [](PoolState const& pool, Member member, int offset) {
        auto const& data = pool.members.at(member.record);
        auto const found = data.find(offset);
        return found != data.end() ? found->second : Floats{};
    };
    if (slot.owner == MEMBER) {
        return datumOf(*link.pool, behaviour.member, slot.offset);
    }
    if (slot.owner == POOL || link.owner != MEMBER) {
        return slot.owner == POOL ? slot.constant : link.value;
    }
    bool const isThere = link.pool != nullptr && link.pool->list.active.IsValid() && link.offset >= 0;
    return isThere ? datumOf(*link.pool, link.pool->list.active, link.offset) : Floats{};
}

/// Lets a trigger start another run inside this one, up to some depth.
void World::Trigger(WorldBehaviour& behaviour) {
    WorldBehaviour* const target = triggers[behaviour.slots[0].link];
    if (runs.size() > 2) {
        return;
    }
    std::size_t const expectedBefore = expectedRuns.size();
    PoolState* const pool = target != nullptr ? target->pool : nullptr;
    bool const onAll = pool != nullptr && !pool->list.active.IsValid();
    if (target != nullptr) {
        target->triggered = true;
    }
    if (pool != nullptr && target->ready) {
        Run run{target, pool, {}, true};
        if (!onAll) {
            run.members = std::vector{pool->list.active};
        }
        expectedRuns.push_front(run);
    }
    behaviour.TriggerFlexibleBehaviour(0);
    if (expectedRuns.size() > expectedBefore) {
        Require(!Fits(*pool, *target, false), "a trigger runs its behaviour");
        RefreshConstants(*target);
        expectedRuns.pop_front();
    }
    if (onAll) {
        pool->list.Activate(pool->list.list.end());
    }
}

/// Asks the pool's organizer, which finds nobody who is not there.
void World::See(PoolState& pool) {
    if (PropertyState* const position = FindByName(pool, "Position")) {
        ++position->organizers;
    }
    SpatialOrganizer& organizer = MainContext().GetSpatialRelations().GetSpatialOrganizer(*pool.pool);
    organizer.Update(0, 0, 1);
    MemberSelection seen(pool.pool.get());
    organizer.GetMembersInRadius(seen, {1, 0, 1}, 2, Member::NIL);
    for (Member const each : seen.GetAllMembers()) {
        Require(pool.members.contains(each.record), "a member that is seen");
    }
}

// Frames.

void World::RunFrame(PoolState& pool) {
    counter.now += choices.Below(80);
    Note("frame of") << pool.id;
    frameAfterPass = &pool;
    if (pool.compiled || pool.failed || !SomebodyWaits()) {
        BeginFrame();
    } else {
        BeginPass(false);
    }
    pool.pool->ProcessMemberPool();
    if (pass) {
        EndPass();
        BeginFrame();
    }
    RequireNoMoreRuns("a behaviour did not run in a frame");
}

/// Expects the runs of the frame of the pool that was asked for one, if it is still there.
void World::BeginFrame() {
    PoolState* const pool = std::exchange(frameAfterPass, nullptr);
    if (pool == nullptr || !pool->compiled || pool->failed) {
        return;
    }
    if (PropertyState* const timeElapsed = FindByName(*pool, "TimeElapsed")) {
        auto const lap = static_cast<float>(static_cast<double>(counter.now - pool->lastLap) / 60.0);
        pool->lastLap = counter.now;
        if (timeElapsed->Type() == VALUE) {
            timeElapsed->value[0] = std::min(lap, 1.0f);
        }
    }
    for (WorldBehaviour* const behaviour : pool->active) {
        if (behaviour->ready) {
            expectedRuns.push_back({behaviour, pool, {}, true});
        }
    }
}

} // namespace Whole
