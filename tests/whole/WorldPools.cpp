// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Pools, properties, what is linked in them, and the passes that build them.

#include "WorldModel.h"

#include <utility>

namespace Whole {

// Pools.

PoolState* World::Find(MemberPool const* pool) {
    for (auto const& state : pools) {
        if (state->pool.get() == pool) {
            return state.get();
        }
    }
    return nullptr;
}

PoolState* World::FindByID(int id) {
    for (auto const& state : pools) {
        if (state->pool != nullptr && state->id == id) {
            return state.get();
        }
    }
    return nullptr;
}

/// One of the pools, or null while there is none.
PoolState* World::SomePool() {
    PoolState* const state = pools.empty() ? nullptr : choices.OneOf(pools).get();
    return state != nullptr && state->pool != nullptr ? state : nullptr;
}

void World::CreatePool() {
    if (pools.size() >= MOST_POOLS) {
        return;
    }
    Note("create pool");
    PoolState* const state = pools.emplace_back(std::make_unique<PoolState>()).get();
    state->number = ++poolsSoFar;
    if (pass) {
        pass->joined.insert(state);
    }
    state->lastLap = counter.now;
    state->pool = std::make_unique<MemberPool>(MainContext());
    state->id = state->number * 7919 % 1000 + 10; // the same in each run, unlike the random one
    Require(state->pool->SetNewMemberPoolID(state->id), "a new pool's ID");
}

void World::DestroyPool(PoolState& pool) {
    Note("destroy") << pool.id;
    auto const owner = std::find_if(pools.begin(), pools.end(), [&](auto const& each) { return each.get() == &pool; });
    std::unique_ptr<PoolState> const leaving = std::move(*owner);
    pools.erase(owner);
    if (pass) {
        pass->current = pass->current == &pool ? nullptr : pass->current;
        pass->joined.erase(&pool);
        std::erase_if(pass->known, [&](auto const& each) { return each.second == &pool; });
    }
    if (frameAfterPass == &pool) {
        frameAfterPass = nullptr;
    }
    ClearState(pool);
    for (auto const& property : properties) {
        property->pool = property->pool == &pool ? nullptr : property->pool;
    }
    for (WorldBehaviourPtr const& behaviour : behaviours) {
        behaviour->pool = behaviour->pool == &pool ? nullptr : behaviour->pool;
    }
    leaving->pool.reset();
}

void World::ChangeID(PoolState& pool) {
    int const id = choices.OneIn(3) ? choices.OneOf(pools)->id : static_cast<int>(choices.Below(5)) - 2;
    bool const isFree = FindByID(id) == nullptr;
    Note("new ID") << pool.id << " to " << id;
    Require(pool.pool->SetNewMemberPoolID(id) == isFree, "an ID is taken or free");
    if (isFree) {
        pool.id = id;
    }
}

/// Comes last of all listeners, so that events inside it end nobody's delivery.
void World::HandlePoolEvent(Util::Event const& event) {
    if (event.type.subIndex == MemberPool::EVENT_CONSTRUCT.subIndex || pass) {
        return;
    }
    PoolState* const other = SomePool();
    unsigned int const meddling = choices.Below(24);
    if (meddling == 0) {
        CreatePool();
    } else if (meddling == 1 && other != nullptr && runs.empty()) {
        DestroyPool(*other);
    } else if (meddling == 2 && other != nullptr) {
        Rename(*other);
    }
}

/// What the pool ought to be like after it was cleared.
void World::ClearState(PoolState& pool) {
    std::vector<PropertyState*> leaving = MemberProperties(pool);
    leaving.insert(leaving.end(), pool.poolTable.begin(), pool.poolTable.end());
    for (PropertyState* const property : leaving) {
        registry.erase(property->id);
    }
    for (PoolState::Place const& place : pool.placesOnly) {
        leaving.push_back(place.property);
    }
    leaving.insert(leaving.end(), pool.poolOnly.begin(), pool.poolOnly.end());
    for (PropertyState* const property : leaving) {
        if (property->pool == &pool) {
            property->pool = nullptr;
            property->owner = FLEXIBLE;
            property->offset = -1;
        }
    }
    for (PoolState::Behaviours const* const list : {&pool.active, &pool.passive}) {
        for (WorldBehaviour* const behaviour : *list) {
            behaviour->pool = nullptr;
            for (WorldBehaviour::Slot& slot : behaviour->slots) {
                slot.link = nullptr;
            }
        }
    }
    for (auto const& [record, data] : pool.members) {
        functor->alive.erase(functor->alive.lower_bound(record), functor->alive.lower_bound(record + pool.recordSize));
    }
    pool.poolTable.clear();
    pool.poolOnly.clear();
    pool.memberTable.clear();
    pool.placesOnly.clear();
    pool.recordSize = 0;
    pool.hasRecords = pool.compiled = pool.failed = false;
    for (PoolState::Behaviours* const list : {&pool.active, &pool.passive, &pool.onMember, &pool.onPool}) {
        list->clear();
    }
    pool.members.clear();
    pool.list = Support::SelectionModel();
}

// Passes.

bool World::SomebodyWaits() const {
    return std::any_of(pools.begin(), pools.end(), [](auto const& each) { return each->waits; });
}

void World::BeginPass(bool again) {
    pass = Pass();
    pass->again = again;
    KnowPools();
}

/// In which order the pools are built.
int World::TurnOf(PoolState const& pool) const {
    return pass->again ? pool.id : pool.number;
}

/// The pool that is to be built next.
PoolState* World::NextPoolOfPass() {
    PoolState* next = pass->known.empty() ? nullptr : pass->known.begin()->second;
    int turn = next != nullptr ? pass->known.begin()->first : 0;
    for (PoolState* const pool : pass->joined) {
        if ((!pass->lastTurn || TurnOf(*pool) > *pass->lastTurn) && (next == nullptr || TurnOf(*pool) < turn)) {
            next = pool;
            turn = TurnOf(*pool);
        }
    }
    return next;
}

/// The pools of the step that begins, by the turns that they have now.
void World::KnowPools() {
    pass->known.clear();
    pass->joined.clear();
    pass->lastTurn.reset();
    for (auto const& pool : pools) {
        if (pass->again || pool->waits) {
            pass->known[TurnOf(*pool)] = pool.get();
        }
    }
}

void World::TakePoolOfPass(PoolState& pool) {
    auto const entry =
        std::find_if(pass->known.begin(), pass->known.end(), [&](auto const& each) { return each.second == &pool; });
    pass->lastTurn = pass->joined.erase(&pool) > 0 ? TurnOf(pool) : entry->first;
    if (entry != pass->known.end()) {
        pass->known.erase(entry);
    }
    pass->behaviour = 0;
}

/// The pool-construction behaviour that is to run next, or null when all have.
WorldBehaviour* World::NextOfPoolConstruction(PoolState*& pool) {
    if (pass->constructing) {
        Require(NextPoolOfPass() == nullptr, "a pool was not built");
        pass->constructing = false;
        KnowPools();
    }
    while (pass->current != nullptr || NextPoolOfPass() != nullptr) {
        if (pass->current == nullptr) {
            pass->current = NextPoolOfPass();
            TakePoolOfPass(*pass->current);
        }
        pool = pass->current;
        while (pass->behaviour < pool->onPool.size()) {
            WorldBehaviour* const next = pool->onPool[pass->behaviour++];
            if (Fits(*pool, *next, true)) {
                return next;
            }
        }
        pass->current = nullptr;
    }
    return nullptr;
}

void World::EndPass() {
    PoolState* pool = nullptr;
    Require(NextOfPoolConstruction(pool) == nullptr, "a pool-construction behaviour did not run");
    for (auto const& each : pools) {
        each->waits = false;
    }
    pass.reset();
}

void World::RunPass(bool again) {
    Note(again ? "reconstruct" : "construct");
    if (again || SomebodyWaits()) {
        BeginPass(again);
    }
    if (again) {
        MainContext().ForceReconstructAllMemberPools();
    } else {
        MainContext().ForceConstructAllMemberPools();
    }
    if (pass) {
        EndPass();
    }
}

void World::HandleConstruct(Util::Event const& event) {
    PoolState* const pool = Find(static_cast<MemberPool*>(event.subject));
    Require(pass && pass->constructing && pool != nullptr && NextPoolOfPass() == pool, "the order of building");
    TakePoolOfPass(*pool);
    Note("build") << pool->id;
    ClearState(*pool);
    BuildContent(*pool);
    for (unsigned int i = choices.Below(24); i < 3; ++i) {
        AddMember(*pool);
    }
    unsigned int const meddling = choices.Below(16);
    if (meddling == 0) {
        CreatePool();
    } else if (meddling == 1) {
        PoolState* const other = SomePool();
        if (other != nullptr) {
            DestroyPool(*other);
        }
        if (other == pool) {
            return;
        }
    } else if (meddling == 2) { // does nothing inside a pass
        MainContext().ForceReconstructAllMemberPools();
        MainContext().ForceConstructAllMemberPools();
    }
    Compile(*pool);
}

// Properties.

PropertyState* World::State(Property const* property) {
    for (auto const& state : properties) {
        if (state->property.Get() == property) {
            return state.get();
        }
    }
    return nullptr;
}

PropertyState& World::Adopt(PropertyPtr const& property, int id) {
    std::unique_ptr<PropertyState> state(new PropertyState{property, property->GetName(), id, property->GetDataSize()});
    return *properties.emplace_back(std::move(state));
}

PropertyState& World::MakeProperty() {
    std::string const name = choices.OneOf(NAMES);
    PropertyPtr const kinds[] = {new ValueProperty(name),
                                 new VectorProperty(name),
                                 new BehaviourProperty(name),
                                 new MemberSelectionProperty(name),
                                 new DataReferenceProperty(name, functor.get()),
                                 new FixedSizeDataProperty(name, choices.Below(9) + 1, functor.get()),
                                 new TextProperty(name)};
    PropertyPtr const property = kinds[std::min(choices.Below(10), choices.Below(10)) % std::size(kinds)];
    property->scope = choices.OneIn(6) ? SHARED_INTRINSIC : VISIBLE;
    if (choices.OneIn(4)) {
        property->SetPropertyID(static_cast<int>(choices.Below(6)));
    }
    PropertyState& state = Adopt(property, property->GetPropertyID());
    if (auto* const selection = dynamic_cast<MemberSelectionProperty*>(property.Get())) {
        PoolState const* const base = SomePool();
        selection->SetBasePoolID(base != nullptr ? base->id : 0);
    } else if (auto* const trigger = dynamic_cast<BehaviourProperty*>(property.Get());
               trigger != nullptr && !behaviours.empty()) {
        triggers[&state] = choices.OneOf(behaviours).Get();
        trigger->SetBehaviour(triggers[&state]);
    }
    return state;
}

void World::ChangeValue(PoolState&) {
    if (properties.empty()) {
        return;
    }
    PropertyState& some = *choices.OneOf(properties);
    if (some.IsNumeric()) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(some.size) / sizeof(float); ++i) {
            some.value[i] = 0.5f * static_cast<float>(choices.Below(9)) - 2;
        }
        Note("set") << some.name << " to " << some.value[0];
        some.property->SetPoolData(some.value.data());
    }
}

PropertyState* World::FindByName(PoolState const& pool, std::string const& name) {
    PropertyState* const ofPool = FindNamed(pool.poolTable, name);
    return ofPool != nullptr ? ofPool : FindNamed(MemberProperties(pool), name);
}

void World::AddProperty(PoolState& pool) {
    PropertyState& property = properties.empty() || !choices.OneIn(5) ? MakeProperty() : *choices.OneOf(properties);
    bool const amongMembers = !choices.OneIn(3);
    Note(amongMembers ? "add member property" : "add pool property") << property.name << " to " << pool.id;
    PropertyPtr const existing =
        amongMembers ? pool.pool->AddMemberProperty(property.property) : pool.pool->AddPoolProperty(property.property);
    PropertyPtr expected = Property::NIL;
    if (amongMembers ? property.property->IsSharedIntrinsic() : property.property->IsIntrinsic()) {
        std::vector<PropertyState*> const table = amongMembers ? MemberProperties(pool) : pool.poolTable;
        auto const first = std::find_if(table.begin(), table.end(), [&](PropertyState const* each) {
            return each->name == property.name && each->property->IsIntrinsic();
        });
        expected = first != table.end() ? (*first)->property : Property::NIL;
    }
    Require(existing == expected, "an intrinsic property gives way");
    if (expected == Property::NIL) {
        Enter(pool, property, amongMembers);
    }
}

/// What entering the pool ought to do to the property.
void World::Enter(PoolState& pool, PropertyState& property, bool amongMembers) {
    if (amongMembers && pool.hasRecords) {
        if (property.pool == nullptr) {
            property.owner = MEMBER;
            property.offset = -1;
        }
        return;
    }
    registry.emplace(property.id, &property);
    property.pool = &pool;
    property.owner = amongMembers ? MEMBER : POOL;
    if (!amongMembers) {
        if (std::none_of(pool.poolTable.begin(), pool.poolTable.end(),
                         [&](auto* each) { return each->id == property.id; })) {
            pool.poolTable.push_back(&property);
        } else if (IndexOf(pool.poolTable, &property) == pool.poolTable.size()) {
            pool.poolOnly.push_back(&property);
        }
        return;
    }
    PoolState::Place const place{pool.recordSize, property.size, property.Type(), &property};
    auto const same = std::find_if(pool.memberTable.begin(), pool.memberTable.end(),
                                   [&](auto const& each) { return each.property->id == property.id; });
    if (same == pool.memberTable.end()) {
        pool.memberTable.push_back(place);
    } else {
        pool.placesOnly.push_back(same->property == &property ? std::exchange(*same, place) : place);
    }
    property.offset = place.offset;
    pool.recordSize += property.size;
}

// Building.

void World::BuildContent(PoolState& pool) {
    for (unsigned int i = choices.Below(12); i > 0; --i) {
        if (choices.OneIn(2)) {
            AddProperty(pool);
        } else {
            LinkBehaviour(pool);
        }
    }
}

void World::LinkBehaviour(PoolState& pool) {
    if (behaviours.empty() || !choices.OneIn(4)) {
        auto const kind = static_cast<WorldBehaviour::Kind>(choices.Below(WorldBehaviour::KINDS));
        behaviours.push_back(new WorldBehaviour(*this, kind));
    }
    WorldBehaviourPtr const behaviour = choices.OneIn(4) ? choices.OneOf(behaviours) : behaviours.back();
    LinkVisible(*behaviour);
    struct List {
        PoolState::Behaviours PoolState::*behaviours;
        void (MemberPool::*link)(Support::BehaviourPtr const&);
        bool owned;
    };
    static constexpr List lists[] = {{&PoolState::active, &MemberPool::LinkActiveBehaviour, true},
                                     {&PoolState::active, &MemberPool::LinkActiveBehaviour, true},
                                     {&PoolState::passive, &MemberPool::LinkPassiveBehaviour, true},
                                     {&PoolState::onMember, &MemberPool::LinkMemberConstructionBehaviour, false},
                                     {&PoolState::onPool, &MemberPool::LinkPoolConstructionBehaviour, false}};
    List const& list = choices.OneOf(lists);
    Note("link behaviour") << IndexOf(behaviours, behaviour) << " of kind " << behaviour->kind << " to " << pool.id
                           << " in list " << &list - lists;
    (pool.pool.get()->*list.link)(behaviour);
    if (list.owned && behaviour->pool != nullptr) {
        return; // refused
    }
    (pool.*list.behaviours).push_back(behaviour.Get());
    behaviour->pool = list.owned ? &pool : behaviour->pool;
    for (WorldBehaviour::Slot& slot : behaviour->slots) {
        bool const isStale = !list.owned && slot.link != nullptr && slot.link->property->IsIntrinsic() &&
                             slot.link->owner != POOL && slot.link->pool == nullptr;
        slot.link = isStale ? nullptr : slot.link;
    }
    Assimilate(pool, *behaviour, false);
    Assimilate(pool, *behaviour, true);
}

void World::LinkVisible(WorldBehaviour& behaviour) {
    std::vector<SlotKind> const& kinds = SlotsOf(behaviour.kind);
    for (std::size_t i = 0; i < kinds.size() && kinds[i].scope == VISIBLE; ++i) {
        PropertyState* link = nullptr;
        for (unsigned int tries = 0; tries < 12 && !properties.empty(); ++tries) {
            link = choices.OneOf(properties).get();
            if (link->Type() == kinds[i].type) {
                break;
            }
        }
        bool const matches = link != nullptr && link->Type() == kinds[i].type;
        PropertyPtr const property = link != nullptr ? link->property : Property::NIL;
        Require(behaviour.LinkPropertyToVisibleInterface(property, static_cast<int>(i)) == matches, "a link by type");
        behaviour.slots[i].link = matches ? link : behaviour.slots[i].link;
    }
}

/// The properties that the intrinsic slots of a behaviour ought to have got.
void World::Assimilate(PoolState& pool, WorldBehaviour& behaviour, bool ofMembers) {
    std::vector<SlotKind> const& kinds = SlotsOf(behaviour.kind);
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        SlotKind const& kind = kinds[i];
        WorldBehaviour::Slot& slot = behaviour.slots[i];
        if (kind.scope == VISIBLE || slot.link != nullptr || (kind.owner == MEMBER) != ofMembers) {
            continue;
        }
        std::string name = kind.name;
        if (kind.scope == SHARED_INTRINSIC) {
            PropertyState* const existing = FindNamed(ofMembers ? MemberProperties(pool) : pool.poolTable, name);
            if (existing != nullptr && !existing->property->IsIntrinsic()) {
                pool.failed = true;
                return;
            }
            if (existing != nullptr) {
                slot.link = existing->Type() == kind.type ? existing : nullptr;
                continue;
            }
        } else if (FindByName(pool, name) != nullptr) {
            std::vector<PropertyState*> all = MemberProperties(pool); // one in both tables counts twice
            all.insert(all.end(), pool.poolTable.begin(), pool.poolTable.end());
            auto const count = std::count_if(all.begin(), all.end(), [&](PropertyState const* each) {
                return each->name == name || each->name.starts_with(name + "_");
            });
            name += "_" + std::to_string(count);
        }
        PropertyPtr const made = behaviour.linkedProperties[i];
        Require(made != Property::NIL && State(made.Get()) == nullptr,
                "an intrinsic slot without a property of its own");
        Require(made->GetName() == name && made->GetPropertyType() == kind.type && made->scope == kind.scope,
                "the property of an intrinsic slot");
        PropertyState& state = Adopt(made, static_cast<int>(Util::String(name).Hash()) ^ pool.id);
        state.value = kind.type == VALUE ? Floats{kind.first} : Floats{kind.first, kind.first, kind.first};
        slot.link = &state;
        Enter(pool, state, ofMembers);
    }
}

void World::Compile(PoolState& pool) {
    if (pool.failed) {
        return;
    }
    for (PoolState::Behaviours const* const list : {&pool.active, &pool.passive, &pool.onMember, &pool.onPool}) {
        for (WorldBehaviour* const behaviour : *list) {
            Compile(*behaviour);
        }
    }
    pool.compiled = true;
}

void World::Compile(WorldBehaviour& behaviour) {
    behaviour.ready = true;
    std::vector<SlotKind> const& kinds = SlotsOf(behaviour.kind);
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        WorldBehaviour::Slot& slot = behaviour.slots[i];
        if (slot.link == nullptr) {
            behaviour.ready = false;
            return;
        }
        bool const ofMember = slot.link->owner == MEMBER;
        if (kinds[i].owner == POOL ? ofMember
                                   : (kinds[i].owner == MEMBER) > ofMember || (ofMember && slot.link->offset < 0)) {
            behaviour.ready = false;
            continue;
        }
        slot.owner = kinds[i].owner != FLEXIBLE ? kinds[i].owner : slot.link->owner;
        slot.offset = slot.link->offset;
        slot.constant = slot.link->value;
    }
}

/// Whether the pool lets the behaviour run: its own data lie in the records, for a construction behaviour all.
bool World::Fits(PoolState const& pool, WorldBehaviour const& behaviour, bool isConstruction) {
    return std::all_of(behaviour.slots.begin(), behaviour.slots.end(), [&](WorldBehaviour::Slot const& slot) {
        if (slot.owner != MEMBER) {
            return true;
        }
        if (slot.link == nullptr) {
            return false;
        }
        bool const isForeign = slot.link->pool != nullptr && slot.link->pool != &pool;
        if (isForeign && !isConstruction) {
            return true;
        }
        if (slot.link->IsNumeric()) {
            return slot.offset >= 0 && slot.offset + slot.link->size <= pool.recordSize;
        }
        auto const isSlot = [&](PoolState::Place const& place) {
            return place.offset == slot.offset && place.size == slot.link->size && place.type == slot.link->Type();
        };
        return std::any_of(pool.memberTable.begin(), pool.memberTable.end(), isSlot) ||
               std::any_of(pool.placesOnly.begin(), pool.placesOnly.end(), isSlot);
    });
}

} // namespace Whole
