// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "World.h"

#include "support/FakeCounter.h"
#include "support/Host.h"
#include "support/SelectionModel.h"
#include "support/Validator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <deque>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace Whole {

using namespace Gentra;
using Support::MainContext;
using Support::PropertyPtr;

namespace {

struct PoolState;
class Host;

/// The library and the model disagree.
struct Disagreement : std::logic_error {
    using logic_error::logic_error;
};
void Require(bool holds, char const* what) {
    if (!holds) {
        throw Disagreement(what);
    }
}

using Floats = std::array<float, 3>;

/// A property and what it ought to be like.
struct PropertyState {
    PropertyPtr property;
    std::string name;
    int id;
    int size;
    Floats value{};
    PoolState* pool = nullptr;
    Gentra::PropertyOwner owner = Gentra::FLEXIBLE;
    int offset = -1;
    int organizers = 0; ///< How many were made that read it, at most.

    [[nodiscard]] Gentra::PropertyType Type() const { return property->GetPropertyType(); }
    [[nodiscard]] bool IsNumeric() const { return Type() == Gentra::VALUE || Type() == Gentra::VECTOR; }
};

/// A behaviour of one of a few kinds, which tells the world of every run; and what its links ought to be.
class WorldBehaviour : public Support::TestBehaviour {
public:
    enum Kind { ADD, DRIFT, TRIGGER, TURN_OVER, SEE, KINDS };
    struct Slot {
        PropertyState* link = nullptr;
        Gentra::PropertyOwner owner = Gentra::POOL; ///< As compiled.
        int offset = -1;
        Floats constant{};
    };

    WorldBehaviour(Host& newHost, Kind newKind);
    void ProcessMembers(std::vector<Member>& members, Member& current) override;
    bool TriggerLiveBehaviour() override;

    Host* host;
    Kind kind;
    std::array<Slot, 3> slots;
    PoolState* pool = nullptr;
    bool ready = false;
    bool triggered = false; ///< The next call of TriggerLiveBehaviour() is the trigger, not a member.
};
using WorldBehaviourPtr = Util::RefCountPtr<WorldBehaviour>;

/// A pool and what ought to be in it.
struct PoolState {
    struct Place {
        int offset;
        int size;
        Gentra::PropertyType type;
        PropertyState* property; ///< Null for bytes that belong to no entry of the table.
    };
    using Behaviours = std::vector<WorldBehaviour*>;

    std::unique_ptr<MemberPool> pool;
    int id = 0;
    std::string name;
    std::vector<PropertyState*> poolTable;
    std::vector<PropertyState*> poolOnly; ///< Pool properties whose ID was taken.
    std::vector<Place> memberTable;
    std::vector<Place> placesOnly;
    int recordSize = 0;
    bool hasRecords = false;
    bool compiled = false;
    bool failed = false;
    int single = -1;
    std::int64_t lastLap = 0;
    Behaviours active, passive, onMember, onPool;
    std::map<unsigned char*, std::map<int, Floats>> members; ///< Values and vectors by record and offset.
    Support::SelectionModel list;
    std::optional<std::pair<PropertyState*, int>> position; ///< What the pool's organizer reads, and at which offset.
};

/// A selection of the host.
struct SelectionState {
    PoolState* pool;
    MemberSelection selection;
    Support::SelectionModel list;

    explicit SelectionState(PoolState& newPool) : pool(&newPool), selection(newPool.pool.get()) {}
};

struct ReferenceState {
    Gentra::PropertyReference reference;
    PropertyPtr standIn;
    Property* target;
    PoolState* pool = nullptr;
};

constexpr std::size_t MOST_POOLS = 6;
constexpr std::size_t MOST_MEMBERS = 60;
constexpr char const* NAMES[] = {"A", "B", "Sum", "Position", "Own", "Count", "TimeElapsed", "C", "D", "E", "F", "G"};

template<class T>
std::size_t IndexOf(std::vector<T> const& list, T const& what) {
    return static_cast<std::size_t>(std::find(list.begin(), list.end(), what) - list.begin());
}

std::vector<Member> AsVector(Support::SelectionModel const& model) {
    return {model.list.begin(), model.list.end()};
}

std::vector<PropertyState*> MemberProperties(PoolState const& pool) {
    std::vector<PropertyState*> properties;
    for (PoolState::Place const& place : pool.memberTable) {
        properties.push_back(place.property);
    }
    return properties;
}

PropertyState* FindNamed(std::vector<PropertyState*> const& properties, std::string const& name) {
    auto const found =
        std::find_if(properties.begin(), properties.end(), [&](auto* each) { return each->name == name; });
    return found != properties.end() ? *found : nullptr;
}

/// Keeps sums that grow with every frame among the numbers that floats can add to.
float Bounded(float sum) {
    return std::fabs(sum) < 1000.0f ? sum : 0.0f;
}

struct SlotKind {
    PropertyOwner owner;
    PropertyType type;
    char const* name;
    Scope scope;
    float first; ///< What the property of an intrinsic slot starts with.
};

/// The interfaces of the kinds of behaviours. The visible slots come first.
std::vector<SlotKind> const& SlotsOf(WorldBehaviour::Kind kind) {
    static std::vector<SlotKind> const slots[] = {
        {{FLEXIBLE, VALUE, "Amount", VISIBLE, 0}, {MEMBER, VALUE, "Sum", SHARED_INTRINSIC, 1}},
        {{FLEXIBLE, VECTOR, "Wind", VISIBLE, 0},
         {MEMBER, VECTOR, "Position", SHARED_INTRINSIC, 0.5f},
         {MEMBER, VALUE, "Own", UNIQUE_INTRINSIC, 3}},
        {{FLEXIBLE, BEHAVIOUR, "Go", VISIBLE, 0}, {POOL, VALUE, "Count", SHARED_INTRINSIC, 0}},
        {{MEMBER, VALUE, "Age", VISIBLE, 0}},
        {{FLEXIBLE, MEMBERSELECTION, "Chosen", VISIBLE, 0}, {MEMBER, VECTOR, "Position", SHARED_INTRINSIC, 0.5f}}};
    return slots[kind];
}

/// Keeps account of the data that it was told to create.
class Functor final : public InstanceCreationFunctor {
public:
    void CreateInstance(unsigned char* datum, int) override { alive.insert(datum); }
    void DeleteInstance(unsigned char* datum, int) override {
        Require(alive.erase(datum) == 1, "an instance was deleted that was not created");
    }
    std::set<unsigned char*> alive;
};

/// The host, and what ought to be.
class Host {
public:
    [[nodiscard]] std::string Operations() const { return operations.str(); }
    [[nodiscard]] std::size_t CountRuns() const { return runsSoFar; }

    /// The run that comes next must be this one.
    PoolState* BeginRun(WorldBehaviour& behaviour, std::vector<Member> const& members) {
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
    void DropRunsOnNobody() {
        while (!expectedRuns.empty() && expectedRuns.front().prepared) {
            Run const& next = expectedRuns.front();
            if (!next.onNobody && Fits(*next.pool, *next.behaviour, next.ofNewMember)) {
                return;
            }
            RefreshConstants(*next.behaviour);
            expectedRuns.pop_front();
        }
    }

    static void RefreshConstants(WorldBehaviour& behaviour) {
        for (WorldBehaviour::Slot& slot : behaviour.slots) {
            if (slot.link != nullptr && slot.link->owner == POOL) {
                slot.constant = slot.link->value;
            }
        }
    }

    void RequireNoMoreRuns(char const* what) {
        DropRunsOnNobody();
        Require(expectedRuns.empty(), what);
    }

    void EndRun(PoolState& pool, bool visited, Member last) {
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
            } else if (pool.single < 0 && turn == 2 && !runs.back().ofNewMember) {
                DeleteMember(pool);
            } else if (pool.single < 0) {
                AddMember(pool);
            }
            // The vector that is being processed is brought up to date for the behaviours that follow.
            Require(pool.pool->GetAllMembers() == AsVector(pool.list), "the members after a turnover");
        }
        runs.pop_back();
    }

    void WorkOn(WorldBehaviour& behaviour) {
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
    static bool MayWork(WorldBehaviour const& behaviour, PoolState const& pool) {
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
    static Member MemberOfLink(WorldBehaviour const& behaviour, Member current) {
        WorldBehaviour::Slot const& slot = behaviour.slots[0];
        bool const isForeign = slot.owner == MEMBER && !slot.link->pool->members.contains(current.record);
        return isForeign ? slot.link->pool->list.active : current;
    }

    /// What the first slot ought to read: of `member` or, where it was compiled in no pool, of its pool's active
    /// member.
    static Floats Expected(WorldBehaviour const& behaviour) {
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
    void Trigger(WorldBehaviour& behaviour) {
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

    /// Asks the pool's organizer and looks at everybody.
    void See(PoolState& pool) {
        SpatialOrganizer& organizer = MainContext().GetSpatialRelations().GetSpatialOrganizer(*pool.pool);
        if (!pool.position) {
            PropertyState* const position = FindByName(pool, "Position");
            pool.position = {position, position != nullptr ? position->offset : -1};
            if (position != nullptr) {
                ++position->organizers;
            }
        }
        organizer.Rebuild();
        organizer.Refresh();
        float const radius = 0.25f * static_cast<float>(choices.Below(20));
        Math::Vec3 const centre(static_cast<float>(choices.Below(4)), 0, static_cast<float>(choices.Below(4)));
        auto const [position, offset] = *pool.position;
        auto const place = std::find_if(pool.memberTable.begin(), pool.memberTable.end(),
                                        [property = position](auto const& each) { return each.property == property; });
        std::multiset<unsigned char*> expected;
        BoundingRect bounds;
        if (position != nullptr && position->Type() == VECTOR && place != pool.memberTable.end() &&
            place->offset == offset) {
            for (Member const each : pool.list.list) {
                Floats const& at = pool.members.at(each.record).at(place->offset);
                float const x = at[0] - centre.x;
                float const z = at[2] - centre.z;
                bounds.Extend(at[0], at[2]);
                if (x * x + z * z < radius * radius) {
                    expected.insert(each.record);
                }
            }
        }
        MemberSelection seen(pool.pool.get());
        organizer.GetMembersInRadius(seen, centre, radius, Member::NIL);
        std::multiset<unsigned char*> found;
        for (Member const each : seen.GetAllMembers()) {
            found.insert(each.record);
        }
        // Members on one line are all in the first cell, which reaches only so far.
        bool const onOneLine = bounds.minX == bounds.maxX || bounds.minZ == bounds.maxZ;
        Require(found == expected || onOneLine, "the members in a radius");
    }

    // The host.

    Host(Choices& newChoices, bool logToError)
        : choices(newChoices), logsToError(logToError), functor(std::make_unique<Functor>()),
          constructListener(MemberPool::EVENT_CONSTRUCT, [this](Util::Event const& event) { HandleConstruct(event); }) {
        counter.countsPerSecond = 60;
        poolListener = std::make_unique<PoolListener>(MemberPool::EVENT,
                                                      [this](Util::Event const& event) { HandlePoolEvent(event); });
    }

    std::ostream& Note(char const* what) {
        std::ostream& log = logsToError ? std::cerr : operations;
        return log << '\n' << std::string(2 * runs.size() + (pass ? 2 : 0), ' ') << what << ' ';
    }

    void Step() {
        struct Operation {
            unsigned int weight;
            void (Host::*perform)(PoolState&);
        };
        static constexpr Operation operationsOfHosts[] = {
            {1, &Host::DestroyPool},   {1, &Host::Rename},          {1, &Host::ChangeID},
            {1, &Host::Construct},     {1, &Host::Reconstruct},     {1, &Host::BuildContent},
            {1, &Host::ChooseSingle},  {3, &Host::AddMembers},      {1, &Host::DeleteMember},
            {3, &Host::ChangeValue},   {1, &Host::Select},          {3, &Host::ChangeSomeSelection},
            {1, &Host::ChangeOwnList}, {2, &Host::ChangeReference}, {1, &Host::FollowPath},
            {2, &Host::ApplyPassive},  {1, &Host::CopyBehaviour},   {15, &Host::RunFrame}};
        PoolState* const pool = SomePool();
        if (pool == nullptr || choices.OneIn(40)) {
            CreatePool();
            return;
        }
        unsigned int choice = choices.Below(40);
        Operation const* operation = operationsOfHosts;
        for (; choice >= operation->weight; ++operation) {
            choice -= operation->weight;
        }
        (this->*operation->perform)(*pool);
    }

    void Rename(PoolState& pool) {
        pool.name = choices.OneOf(NAMES);
        Note("rename") << pool.id << " to " << pool.name;
        pool.pool->SetName(pool.name);
    }

    void ChooseSingle(PoolState& pool) {
        pool.single = static_cast<int>(choices.Below(12)) - 8;
        Note("single member") << pool.id << ": " << pool.single;
        pool.pool->SetSingleMemberUpdateIndex(pool.single);
    }

    void AddMembers(PoolState& pool) {
        for (unsigned int i = choices.Below(8); i > 0; --i) {
            AddMember(pool);
        }
    }

    void Select(PoolState& pool) {
        Note("select in") << pool.id;
        selections.push_back(std::make_unique<SelectionState>(pool));
    }

    void ChangeSomeSelection(PoolState& pool) {
        if (selections.empty()) {
            return ChangeOwnList(pool);
        }
        SelectionState& some = *choices.OneOf(selections);
        ChangeSelection(some.selection, some.list, *some.pool);
    }

    void ChangeOwnList(PoolState& pool) { ChangeSelection(*pool.pool, pool.list, pool); }

    // Pools.

    PoolState* Find(MemberPool const* pool) {
        for (auto const& state : pools) {
            if (state->pool.get() == pool) {
                return state.get();
            }
        }
        return nullptr;
    }

    PoolState* FindByID(int id) {
        for (auto const& state : pools) {
            if (state->pool != nullptr && state->id == id) {
                return state.get();
            }
        }
        return nullptr;
    }

    /// One of the pools, or null while there is none.
    PoolState* SomePool() {
        PoolState* const state = pools.empty() ? nullptr : choices.OneOf(pools).get();
        return state != nullptr && state->pool != nullptr ? state : nullptr;
    }

    void CreatePool() {
        if (pools.size() >= MOST_POOLS) {
            return;
        }
        Note("create pool");
        PoolState* const state = pools.emplace_back(std::make_unique<PoolState>()).get();
        waiting.push_back(state);
        if (pass) {
            pass->joined.insert(state);
        }
        state->lastLap = counter.now;
        state->pool = std::make_unique<MemberPool>(MainContext());
        state->id = static_cast<int>(++poolsSoFar * 7919 % 1000) + 10; // the same in each run, unlike the random one
        Require(state->pool->SetNewMemberPoolID(state->id), "a new pool's ID");
    }

    void DestroyPool(PoolState& pool) {
        Note("destroy") << pool.id;
        auto const owner =
            std::find_if(pools.begin(), pools.end(), [&](auto const& each) { return each.get() == &pool; });
        std::unique_ptr<PoolState> const leaving = std::move(*owner);
        pools.erase(owner);
        if (pass) {
            std::replace(waiting.begin(), waiting.end(), &pool, static_cast<PoolState*>(nullptr));
        } else {
            std::erase(waiting, &pool);
        }
        if (pass && pass->current == &pool) {
            pass->current = nullptr;
        }
        if (pass) {
            pass->joined.erase(&pool);
            std::erase_if(pass->known, [&](auto const& each) { return each.second == &pool; });
        }
        if (frameAfterPass == &pool) {
            frameAfterPass = nullptr;
        }
        std::erase_if(selections, [&](auto const& each) { return each->pool == &pool; });
        ClearState(pool);
        for (auto const& reference : references) {
            if (reference->pool == &pool ||
                (reference->pool != nullptr && reference->reference.GetOwnerPoolID() == pool.id)) {
                reference->pool = nullptr;
                reference->target = reference->standIn.Get();
            }
        }
        for (auto const& property : properties) {
            property->pool = property->pool == &pool ? nullptr : property->pool;
        }
        for (WorldBehaviourPtr const& behaviour : behaviours) {
            behaviour->pool = behaviour->pool == &pool ? nullptr : behaviour->pool;
        }
        leaving->pool.reset();
    }

    void ChangeID(PoolState& pool) {
        int const id = choices.OneIn(3) ? choices.OneOf(pools)->id : static_cast<int>(choices.Below(5)) - 2;
        bool const isFree = FindByID(id) == nullptr;
        Note("new ID") << pool.id << " to " << id;
        Require(pool.pool->SetNewMemberPoolID(id) == isFree, "an ID is taken or free");
        if (isFree) {
            pool.id = id;
        }
    }

    /// Comes last of all listeners, so that events inside it end nobody's delivery.
    void HandlePoolEvent(Util::Event const& event) {
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
    void ClearState(PoolState& pool) {
        auto const leave = [&](PropertyState& property) {
            registry.erase(property.id);
            for (auto const& reference : references) {
                if (reference->pool == &pool && reference->reference.GetPropertyName() == property.name) {
                    reference->target = reference->standIn.Get();
                }
            }
        };
        std::vector<PropertyState*> leaving = MemberProperties(pool);
        leaving.insert(leaving.end(), pool.poolTable.begin(), pool.poolTable.end());
        for (PropertyState* const property : leaving) {
            leave(*property);
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
        for (auto const& selection : selections) {
            if (selection->pool == &pool) {
                selection->selection.Clear();
                selection->list = Support::SelectionModel();
            }
        }
        for (auto const& [record, data] : pool.members) {
            functor->alive.erase(functor->alive.lower_bound(record),
                                 functor->alive.lower_bound(record + pool.recordSize));
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

    void BeginPass(bool again) {
        pass = Pass();
        pass->again = again;
        KnowPools();
        for (auto const& pool : pools) {
            pool->position.reset();
        }
    }

    /// The pool that is to be built next.
    PoolState* NextPoolOfPass() {
        if (!pass->again) {
            while (pass->waiting < waiting.size() && waiting[pass->waiting] == nullptr) {
                ++pass->waiting;
            }
            return pass->waiting < waiting.size() ? waiting[pass->waiting] : nullptr;
        }
        PoolState* next = pass->known.empty() ? nullptr : pass->known.begin()->second;
        int nextID = next != nullptr ? pass->known.begin()->first : 0;
        for (PoolState* const pool : pass->joined) {
            if ((!pass->lastID || pool->id > *pass->lastID) && (next == nullptr || pool->id < nextID)) {
                next = pool;
                nextID = pool->id;
            }
        }
        return next;
    }

    /// The pools of the step that begins, by the IDs that they have now.
    void KnowPools() {
        pass->known.clear();
        pass->joined.clear();
        pass->waiting = 0;
        pass->lastID.reset();
        for (auto const& pool : pools) {
            pass->known[pool->id] = pool.get();
        }
    }

    void TakePoolOfPass(PoolState& pool) {
        ++pass->waiting;
        bool const isNew = pass->joined.erase(&pool) > 0;
        auto const entry = std::find_if(pass->known.begin(), pass->known.end(),
                                        [&](auto const& each) { return each.second == &pool; });
        pass->lastID = isNew || entry == pass->known.end() ? pool.id : entry->first;
        if (entry != pass->known.end()) {
            pass->known.erase(entry);
        }
        pass->behaviour = 0;
    }

    /// The pool-construction behaviour that is to run next, or null when all have.
    WorldBehaviour* NextOfPoolConstruction(PoolState*& pool) {
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
                if (!pool->list.active.IsValid() || Fits(*pool, *next, true)) {
                    return next;
                }
            }
            pass->current = nullptr;
        }
        return nullptr;
    }

    void EndPass() {
        PoolState* pool = nullptr;
        Require(NextOfPoolConstruction(pool) == nullptr, "a pool-construction behaviour did not run");
        waiting.clear();
        pass.reset();
    }

    void Construct(PoolState&) { RunPass(false); }

    void Reconstruct(PoolState&) { RunPass(true); }

    void RunPass(bool again) {
        Note(again ? "reconstruct" : "construct");
        if (again || !waiting.empty()) {
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

    void HandleConstruct(Util::Event const& event) {
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

    PropertyState* State(Property const* property) {
        for (auto const& state : properties) {
            if (state->property.Get() == property) {
                return state.get();
            }
        }
        return nullptr;
    }

    PropertyState& Adopt(PropertyPtr const& property, int id) {
        return *properties.emplace_back(new PropertyState{property, property->GetName(), id, property->GetDataSize()});
    }

    PropertyState& MakeProperty() {
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

    void ChangeValue(PoolState&) {
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

    PropertyState* FindByName(PoolState const& pool, std::string const& name) {
        PropertyState* const ofPool = FindNamed(pool.poolTable, name);
        return ofPool != nullptr ? ofPool : FindNamed(MemberProperties(pool), name);
    }

    void AddProperty(PoolState& pool) {
        PropertyState& property = properties.empty() || !choices.OneIn(5) ? MakeProperty() : *choices.OneOf(properties);
        bool const amongMembers = !choices.OneIn(3);
        Note(amongMembers ? "add member property" : "add pool property") << property.name << " to " << pool.id;
        PropertyPtr const existing = amongMembers ? pool.pool->AddMemberProperty(property.property)
                                                  : pool.pool->AddPoolProperty(property.property);
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
    void Enter(PoolState& pool, PropertyState& property, bool amongMembers) {
        if (amongMembers && pool.hasRecords) {
            if (property.pool == nullptr) {
                property.owner = MEMBER;
                property.offset = -1;
            }
            return;
        }
        registry.emplace(property.id, &property);
        for (auto const& reference : references) {
            if (reference->pool == &pool && reference->reference.GetPropertyName() == property.name) {
                reference->target = property.property.Get();
            }
        }
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

    void BuildContent(PoolState& pool) {
        for (unsigned int i = choices.Below(12); i > 0; --i) {
            if (choices.OneIn(2)) {
                AddProperty(pool);
            } else {
                LinkBehaviour(pool);
            }
        }
    }

    void LinkBehaviour(PoolState& pool) {
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

    void LinkVisible(WorldBehaviour& behaviour) {
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
            Require(behaviour.LinkPropertyToVisibleInterface(property, static_cast<int>(i)) == matches,
                    "a link by type");
            behaviour.slots[i].link = matches ? link : behaviour.slots[i].link;
        }
    }

    /// The properties that the intrinsic slots of a behaviour ought to have got.
    void Assimilate(PoolState& pool, WorldBehaviour& behaviour, bool ofMembers) {
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

    void Compile(PoolState& pool) {
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

    void Compile(WorldBehaviour& behaviour) {
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
    static bool Fits(PoolState const& pool, WorldBehaviour const& behaviour, bool isConstruction) {
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

    // Frames.

    void RunFrame(PoolState& pool) {
        counter.now += choices.Below(80);
        Note("frame of") << pool.id;
        frameAfterPass = &pool;
        if (pool.compiled || pool.failed || waiting.empty()) {
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
    void BeginFrame() {
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
            auto const index = static_cast<std::size_t>(pool->single);
            Run run{behaviour, pool, {}, true};
            run.onNobody = pool->single >= 0 && index >= pool->list.list.size();
            if (pool->single >= 0 && !run.onNobody) {
                run.members = std::vector{AsVector(pool->list)[index]};
            }
            if (behaviour->ready) {
                expectedRuns.push_back(run);
            }
        }
    }

    void ApplyPassive(PoolState& pool) {
        if (behaviours.empty()) {
            return;
        }
        WorldBehaviourPtr const behaviour = choices.OneOf(behaviours);
        unsigned int const how = choices.Below(3);
        Note("apply behaviour") << IndexOf(behaviours, behaviour) << " to " << pool.id << " as " << how;
        SelectionState* const some = selections.empty() ? nullptr : choices.OneOf(selections).get();
        Run run{behaviour.Get(), &pool, {}, true};
        if (how == 1) {
            run.members = std::vector{pool.list.active};
        } else if (how == 2 && some != nullptr) {
            run.members = AsVector(some->list);
        }
        bool const mayRun = how != 2 || (some != nullptr && some->pool == &pool);
        if (behaviour->pool == &pool && behaviour->ready && mayRun) {
            expectedRuns.push_back(run);
        }
        if (how == 0) {
            pool.pool->ApplyPassiveBehaviour(behaviour);
        } else if (how == 1) {
            pool.pool->ApplyPassiveBehaviourOnActiveMember(behaviour);
        } else if (some != nullptr) {
            pool.pool->ApplyBehaviourOnMemberSelection(behaviour, some->selection);
        }
        RequireNoMoreRuns("a behaviour did not run when it was applied");
    }

    void CopyBehaviour(PoolState&) {
        if (behaviours.empty()) {
            return;
        }
        WorldBehaviourPtr const original = choices.OneOf(behaviours);
        Note("copy behaviour") << IndexOf(behaviours, original);
        WorldBehaviourPtr const copy(new WorldBehaviour(*original));
        behaviours.push_back(copy);
        if (choices.OneIn(2)) {
            copy->ClearBehaviour();
            copy->pool = nullptr;
            for (WorldBehaviour::Slot& slot : copy->slots) {
                slot.link = nullptr;
            }
        }
    }

    // Members and selections.

    /// A new member's data.
    void Born(PoolState& pool, Member member) {
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

    void AddMember(PoolState& pool) {
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

    void DeleteMember(PoolState& pool) {
        if (pool.list.list.empty()) {
            return;
        }
        Member const victim = AsVector(pool.list)[choices.Below(pool.list.list.size())];
        Note("delete member from") << pool.id;
        auto const remove = [&](MemberSelection& selection, Support::SelectionModel& model) {
            while (std::find(model.list.begin(), model.list.end(), victim) != model.list.end()) {
                model.Remove(victim);
                selection.RemoveMember(victim);
            }
            if (model.active == victim) { // as the host had it
                model.Activate(model.list.end());
                selection.ClearActiveMember();
            }
        };
        for (auto const& selection : selections) {
            if (selection->pool == &pool) {
                remove(selection->selection, selection->list);
            }
        }
        remove(*pool.pool, pool.list);
        pool.pool->DeleteMember(victim);
        pool.members.erase(victim.record);
        for (PoolState::Place const& place : pool.memberTable) {
            Require(!functor->alive.contains(victim.record + place.offset), "an instance was not deleted");
        }
    }

    void ChangeSelection(MemberSelection& selection, Support::SelectionModel& list, PoolState& pool) {
        // A member that no list holds could not be found again to be deleted, so the pool itself only reorders.
        bool const isPool = &selection == pool.pool.get();
        auto const edit = static_cast<Support::Edit>(choices.Below(isPool ? Support::ADD_MANY : Support::EDITS));
        Note("selection operation") << edit << " in " << pool.id;
        Member member;
        if (!pool.members.empty()) {
            auto entry = pool.members.begin();
            std::advance(entry, choices.Below(pool.members.size()));
            member = Member(entry->first);
        }
        auto const index = static_cast<int>(choices.Below(list.list.size() + 1));
        bool const grows = edit >= Support::INSERT_AFTER && edit <= Support::ADD_MANY;
        if (grows && (!member.IsValid() || list.list.size() >= MOST_MEMBERS)) {
            return;
        }
        // Moving on, also from a removed member, makes the next one the pool's active member.
        list.poolActive = pool.list.active;
        Support::EditBoth(edit, selection, list, *pool.pool, member, index, choices.Below(4));
        if (!isPool) {
            pool.list.active = list.poolActive;
        }
    }

    // References and paths.

    void ChangeReference(PoolState& pool) {
        if (references.size() < 4 && choices.OneIn(3)) {
            Note("make a reference");
            PropertyPtr const standIn = Support::Value("None");
            references.push_back(std::make_unique<ReferenceState>(ReferenceState{{}, standIn, standIn.Get(), nullptr}));
            references.back()->reference.SetDefaultProperty(standIn);
            poolListener = std::make_unique<PoolListener>(MemberPool::EVENT,
                                                          [this](Util::Event const& event) { HandlePoolEvent(event); });
            return;
        }
        if (references.empty()) {
            return;
        }
        ReferenceState& some = *choices.OneOf(references);
        bool changed = false;
        if (choices.OneIn(2)) {
            Note("refer to pool") << pool.id;
            changed = some.reference.GetOwnerPoolID() != pool.id;
            some.reference.SetOwnerPoolID(pool.id);
            if (changed && some.pool != &pool) {
                some.pool = &pool;
                some.target = some.standIn.Get();
            }
        } else {
            std::string const name = choices.OneOf(NAMES);
            Note("refer to property") << name;
            changed = some.reference.GetPropertyName() != name;
            some.reference.SetPropertyName(name);
            some.target = changed ? some.standIn.Get() : some.target;
        }
        PropertyState* const found =
            changed && some.pool != nullptr ? FindByName(*some.pool, some.reference.GetPropertyName()) : nullptr;
        some.target = found != nullptr ? found->property.Get() : some.target;
    }

    /// A path must find the same after it was written and read.
    void FollowPath(PoolState& root) {
        if (properties.empty()) {
            return;
        }
        Path path;
        Note("follow a path from") << root.id;
        path.SetRootMemberPool(*root.pool);
        for (unsigned int levels = choices.Below(3); levels > 0; --levels) {
            PropertyPtr const level = choices.OneOf(properties)->property;
            if (level->GetPropertyType() == MEMBERSELECTION) {
                path.AddRootingMemberSelectionBack(level.DynamicCast<MemberSelectionProperty>());
            }
        }
        path.SetDestinationProperty(choices.OneOf(properties)->property);
        std::stringstream text;
        path.SaveToStream(text);
        Path read;
        read.LoadFromStream(text);
        if (!waiting.empty()) {
            BeginPass(false);
        }
        void const* const datum = path.GetDestinationPropertyDataNoIndices();
        if (pass) {
            EndPass();
        }
        Require(read.GetDestinationPropertyDataNoIndices() == datum, "a path that was read");
    }

    // Comparing.

    void Check() {
        Require(runs.empty() && expectedRuns.empty() && !pass, "the world is at rest");
        CheckContexts();
        for (auto const& pool : pools) {
            CheckPool(*pool);
        }
        for (auto const& each : selections) {
            Validator::CheckSelection(each->selection);
            CheckList(each->selection, each->list);
            Require(each->selection.GetBasePool() == each->pool->pool.get(), "a selection's pool");
        }
        for (auto const& each : references) {
            MemberPool const* const pool = each->pool != nullptr ? each->pool->pool.get() : nullptr;
            Require(each->reference.GetOwnerPool() == pool, "a reference's pool");
            Require(each->reference.GetProperty().Get() == each->target, "a reference's target");
        }
        CheckProperties();
        ++checks;
    }

    void CheckContexts() {
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

    void CheckList(MemberSelection& selection, Support::SelectionModel& list) {
        Require(selection.GetNumMembers() == static_cast<int>(list.list.size()), "the number of entries");
        Require(selection.ActiveMember() == list.active, "the active member");
        Require(selection.FirstMemberActive() == (list.cursorValid && list.cursor == list.list.begin()), "the cursor");
        if (checks % 4 == 0) { // reading brings the vector up to date, which is to happen at any time
            Require(selection.GetAllMembers() == AsVector(list), "the entries");
        }
    }

    void CheckPool(PoolState& pool) {
        std::set<unsigned char*> alive;
        for (auto const& [record, data] : pool.members) {
            alive.insert(record);
        }
        Validator::CheckPool(*pool.pool, alive);
        Validator::CheckSelection(*pool.pool);
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
    void CheckProperties() {
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
        for (auto const& reference : references) {
            ++shares[reference->target];
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

private:
    struct PoolListener final : Support::Listener {
        using Listener::Listener;
    };
    struct Run {
        WorldBehaviour* behaviour;
        PoolState* pool;
        std::optional<std::vector<Member>> members; ///< Without a value all that the pool lists by then.
        bool prepared = true;                       ///< Whether the constants are refreshed before.
        bool ofNewMember = false;
        bool onNobody = false;
    };
    /// The pass that runs, if any, and how far it is.
    struct Pass {
        bool again = false;              ///< All pools instead of those that wait.
        bool constructing = true;        ///< Else the pool-construction behaviours run.
        std::size_t waiting = 0;         ///< How many of those that wait were taken.
        std::optional<int> lastID;       ///< Of the pool that was taken last.
        std::map<int, PoolState*> known; ///< By the ID that they had when the step began.
        std::set<PoolState*> joined;     ///< Created meanwhile.
        PoolState* current = nullptr;    ///< Whose pool-construction behaviours run,
        std::size_t behaviour = 0;       ///< and how many of them were taken.
    };

    Choices& choices;
    std::ostringstream operations;
    bool logsToError;
    Support::FakeCounter counter;
    std::unique_ptr<Functor> functor;
    Gentra::Context second; ///< Hears of all pools, like the main one.
    std::vector<std::unique_ptr<PropertyState>> properties;
    std::vector<WorldBehaviourPtr> behaviours;
    std::vector<std::unique_ptr<PoolState>> pools;
    std::vector<std::unique_ptr<SelectionState>> selections;
    std::vector<std::unique_ptr<ReferenceState>> references;
    std::map<int, PropertyState*> registry; ///< What contexts know by ID.
    std::map<PropertyState*, WorldBehaviour*> triggers;
    std::vector<PoolState*> waiting; ///< Null where a pool has gone during a pass.
    std::optional<Pass> pass;
    PoolState* frameAfterPass = nullptr; ///< The pool that was asked for a frame.
    std::deque<Run> expectedRuns;
    std::vector<Run> runs; ///< Those that are going on, inside each other.
    std::size_t runsSoFar = 0;
    unsigned int poolsSoFar = 0;
    unsigned int checks = 0;
    std::unique_ptr<PoolListener> poolListener;
    Support::Listener constructListener;
};

// Behaviours.

WorldBehaviour::WorldBehaviour(Host& newHost, Kind newKind) : host(&newHost), kind(newKind) {
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

} // namespace

class World::Implementation : public Host {
    using Host::Host;
};

World::World(Choices& choices, bool logToError) : host(std::make_unique<Implementation>(choices, logToError)) {}
World::~World() = default;

void World::Step() {
    host->Step();
}
void World::Check() {
    host->Check();
}
std::string World::Operations() const {
    return host->Operations();
}
std::size_t World::CountRuns() const {
    return host->CountRuns();
}

} // namespace Whole
