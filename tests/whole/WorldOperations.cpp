// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// What the host does at random.

#include "WorldModel.h"

#include <iostream>
#include <utility>

namespace Whole {

World::World(Choices& newChoices, bool logToError)
    : choices(newChoices), logsToError(logToError), functor(std::make_unique<Functor>()),
      poolListener(MemberPool::EVENT, [this](Util::Event const& event) { HandlePoolEvent(event); }),
      constructListener(MemberPool::EVENT_CONSTRUCT, [this](Util::Event const& event) { HandleConstruct(event); }) {
    counter.countsPerSecond = 60;
}

std::ostream& World::Note(char const* what) {
    std::ostream& log = logsToError ? std::cerr : operations;
    return log << '\n' << std::string(2 * runs.size() + (pass ? 2 : 0), ' ') << what << ' ';
}

void World::Step() {
    struct Operation {
        unsigned int weight;
        void (World::*perform)(PoolState&);
    };
    static constexpr Operation operationsOfHosts[] = {
        {1, &World::DestroyPool}, {1, &World::Rename},       {1, &World::ChangeID},   {1, &World::Construct},
        {1, &World::Reconstruct}, {1, &World::BuildContent}, {3, &World::AddMembers}, {1, &World::DeleteMember},
        {3, &World::ChangeValue}, {4, &World::ChangeList},   {19, &World::RunFrame}};
    PoolState* const pool = SomePool();
    if (pool == nullptr || choices.OneIn(40)) {
        CreatePool();
        return;
    }
    unsigned int choice = choices.Below(36);
    Operation const* operation = operationsOfHosts;
    for (; choice >= operation->weight; ++operation) {
        choice -= operation->weight;
    }
    (this->*operation->perform)(*pool);
}

void World::Rename(PoolState& pool) {
    pool.name = choices.OneOf(NAMES);
    Note("rename") << pool.id << " to " << pool.name;
    pool.pool->SetName(pool.name);
}

void World::AddMembers(PoolState& pool) {
    for (unsigned int i = choices.Below(8); i > 0; --i) {
        AddMember(pool);
    }
}

// Members.

/// A new member's data.
void World::Born(PoolState& pool, Member member) {
    auto const [entry, isNew] = pool.members.try_emplace(member.record);
    if (!isNew) {
        return; // another member-construction behaviour
    }
    pool.hasRecords = true;
    for (PoolState::Place const& place : pool.memberTable) {
        if (place.property->IsNumeric()) {
            entry->second[place.offset] = place.property->value;
        }
    }
    for (PoolState::Place const& place : pool.placesOnly) {
        entry->second[place.offset] = {};
    }
}

void World::AddMember(PoolState& pool) {
    if (pool.members.size() >= MOST_MEMBERS) {
        return;
    }
    Note("add member to") << pool.id;
    std::map<unsigned char*, std::map<int, Floats>> const before = pool.members;
    std::deque<Run> const later = std::exchange(expectedRuns, {});
    for (WorldBehaviour* const behaviour : pool.onMember) {
        if (pool.recordSize > 0 && behaviour->ready) {
            expectedRuns.push_back({behaviour, &pool, {}, true, true});
        }
    }
    Member const active = pool.list.active;
    pool.pool->AddNewMember();
    RequireNoMoreRuns("a member-construction behaviour did not run");
    expectedRuns = later;
    pool.list.active = active;
    std::vector<Member> const& all = pool.pool->GetAllMembers();
    Require(all.size() == pool.list.list.size() + (pool.recordSize > 0 ? 1 : 0), "a new member");
    if (pool.recordSize > 0) {
        Born(pool, all.back());
        Require(!before.contains(all.back().record), "a new member has a record of its own");
        pool.list.list.push_back(all.back());
        pool.list.outOfDate = true;
    }
}

void World::DeleteMember(PoolState& pool) {
    if (pool.list.list.empty()) {
        return;
    }
    Member const victim = AsVector(pool.list)[choices.Below(pool.list.list.size())];
    Note("delete member from") << pool.id;
    while (std::find(pool.list.list.begin(), pool.list.list.end(), victim) != pool.list.list.end()) {
        pool.list.Remove(victim);
        pool.pool->RemoveMember(victim);
    }
    if (pool.list.active == victim) { // as the host had it
        pool.list.Activate(pool.list.list.end());
        pool.pool->ClearActiveMember();
    }
    pool.pool->DeleteMember(victim);
    pool.members.erase(victim.record);
    for (PoolState::Place const& place : pool.memberTable) {
        Require(!functor->alive.contains(victim.record + place.offset), "an instance was not deleted");
    }
}

/// A member that the pool does not list could not be found again to be deleted, so none is removed here.
void World::ChangeList(PoolState& pool) {
    auto const edit = static_cast<Support::Edit>(choices.Below(Support::ADD_MANY));
    Note("list operation") << edit << " in " << pool.id;
    bool const grows = edit >= Support::INSERT_AFTER;
    if (grows && (pool.list.list.empty() || pool.list.list.size() >= MOST_MEMBERS)) {
        return;
    }
    auto const index = static_cast<int>(choices.Below(pool.list.list.size() + 1));
    Member const member = grows ? AsVector(pool.list)[choices.Below(pool.list.list.size())] : Member();
    Support::EditBoth(edit, *pool.pool, pool.list, *pool.pool, member, index, 0);
}

} // namespace Whole
