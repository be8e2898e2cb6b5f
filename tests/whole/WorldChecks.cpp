// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Whether everything is as it ought to be.

#include "WorldModel.h"

#include "support/Validator.h"

#include <cstring>

namespace Whole {

void World::Check() {
    Require(runs.empty() && expectedRuns.empty() && !pass, "the world is at rest");
    CheckContexts();
    for (auto const& pool : pools) {
        CheckPool(*pool);
    }
    CheckStructures();
    CheckProperties();
    ++checks;
}

void World::CheckStructures() const {
    for (auto const& each : pools) {
        if (each->pool != nullptr) {
            Validator::CheckPool(*each->pool);
            Validator::CheckSelection(*each->pool);
        }
    }
}

void World::CheckContexts() {
    std::map<int, PoolState*> byID;
    for (auto const& pool : pools) {
        byID[pool->id] = pool.get();
    }
    std::vector<MemberPool*> all;
    second.GetAllMemberPools(all); // it does not hear of new IDs
    Require(all.size() == pools.size(), "the number of pools in the other context");
    MainContext().GetAllMemberPools(all);
    Require(all.size() == pools.size(), "the number of pools");
    std::size_t i = 0;
    for (auto const& [id, pool] : byID) {
        MemberPool* const found = MainContext().GetMemberPoolFromID(id);
        Require(all[i++] == pool->pool.get() && found == pool->pool.get(), "pools by ID");
        Require(MainContext().GetMemberPoolFromName(pool->name)->GetName() == pool->name, "pools by name");
    }
}

void World::CheckList(MemberPool& pool, Support::SelectionModel& list) {
    Require(pool.GetNumMembers() == static_cast<int>(list.list.size()), "the number of entries");
    Require(pool.ActiveMember() == list.active, "the active member");
    Require(pool.FirstMemberActive() == (list.cursorValid && list.cursor == list.list.begin()), "the cursor");
    if (checks % 4 == 0) { // reading brings the vector up to date, which is to happen at any time
        Require(pool.GetAllMembers() == AsVector(list), "the entries");
    }
}

void World::CheckPool(PoolState& pool) {
    std::set<unsigned char*> alive;
    for (auto const& [record, data] : pool.members) {
        alive.insert(record);
    }
    Require(Validator::RecordsInUse(*pool.pool) == alive, "the records that are in use");
    Require(pool.pool->GetName() == pool.name && pool.pool->GetMemberPoolID() == pool.id, "a pool's identity");
    CheckList(*pool.pool, pool.list);

    std::vector<PropertyPtr> const all = pool.pool->GetAllProperties();
    std::size_t next = 0;
    Require(all.size() == pool.poolTable.size() + pool.memberTable.size(), "the number of properties");
    for (PropertyState* const property : pool.poolTable) {
        Require(all[next++] == property->property, "a pool property");
    }
    for (PoolState::Place const& place : pool.memberTable) {
        Require(all[next++] == place.property->property, "a member property");
        for (auto const& [record, data] : pool.members) {
            PropertyType const type = place.property->Type();
            if (place.property->IsNumeric()) {
                Require(std::memcmp(record + place.offset, data.at(place.offset).data(),
                                    static_cast<std::size_t>(place.size)) == 0,
                        "a member's datum");
            } else if (type == DATAREFERENCE || type == FIXEDSIZEDATA) {
                Require(functor->alive.contains(record + place.offset), "an instance was not created");
            }
        }
    }
    std::vector<WorldBehaviour*> expected;
    for (PoolState::Behaviours const* const list : {&pool.active, &pool.passive, &pool.onMember, &pool.onPool}) {
        expected.insert(expected.end(), list->begin(), list->end());
    }
    std::vector<Support::BehaviourPtr> const linked = pool.pool->GetAllBehaviours();
    Require(std::equal(linked.begin(), linked.end(), expected.begin(), expected.end(),
                       [](auto const& a, auto* b) { return a.Get() == b; }),
            "the behaviours");
}

/// What each property and behaviour is like, and who shares it.
void World::CheckProperties() {
    std::map<Property const*, int> shares;
    for (auto const& pool : pools) {
        std::vector<PropertyState*> ofMembers = MemberProperties(*pool);
        for (std::vector<PropertyState*> const* const table : {&pool->poolTable, &ofMembers}) {
            for (PropertyState* const property : *table) {
                ++shares[property->property.Get()];
            }
        }
        for (PoolState::Place const& place : pool->placesOnly) {
            // A former place of a property that the table has is not another share.
            bool const hasEntry = IndexOf(ofMembers, place.property) < ofMembers.size();
            shares[place.property->property.Get()] += hasEntry ? 0 : 1;
        }
    }
    for (auto const& pool : pools) {
        for (PropertyState const* const property : pool->poolOnly) {
            ++shares[property->property.Get()];
        }
    }
    for (auto const& [id, property] : registry) {
        shares[property->property.Get()] += 2; // by both contexts
    }
    for (WorldBehaviourPtr const& behaviour : behaviours) {
        MemberPool const* const pool = behaviour->pool != nullptr ? behaviour->pool->pool.get() : nullptr;
        Require(behaviour->GetOwnerPool() == pool, "a behaviour's pool");
        Require(behaviour->ReadyToUse() == behaviour->ready, "whether a behaviour is ready");
        for (std::size_t i = 0; i < SlotsOf(behaviour->kind).size(); ++i) {
            PropertyState const* const link = behaviour->slots[i].link;
            Require(behaviour->linkedProperties[i] == (link != nullptr ? link->property : Property::NIL), "a link");
            if (link != nullptr) {
                ++shares[link->property.Get()];
            }
        }
    }
    for (auto const& state : properties) {
        Property& property = *state->property;
        MemberPool const* const pool = state->pool != nullptr ? state->pool->pool.get() : nullptr;
        Require(property.GetOwnerPool() == pool, "a property's pool");
        Require(property.GetPropertyOwner() == state->owner, "a property's owner");
        Require(property.GetDataOffset() == state->offset, "a property's offset");
        int const holders = state->property.GetCount() - 1 - shares[&property];
        Require(holders >= 0 && holders <= state->organizers, "the number of those who share a property");
        if (state->IsNumeric()) {
            auto const size = static_cast<std::size_t>(state->size);
            Require(std::memcmp(property.GetPoolData(), state->value.data(), size) == 0, "a property's default");
        }
        auto const registered = registry.find(state->id);
        PropertyState const* const known = registered != registry.end() ? registered->second : nullptr;
        for (Context* const context : {&MainContext(), &second}) {
            Require(context->GetPropertyByID(state->id) == (known != nullptr ? known->property : Property::NIL),
                    "a property by ID");
        }
    }
}

} // namespace Whole
