// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_WHOLE_WORLDMODEL_H
#define GENTRA_TESTS_WHOLE_WORLDMODEL_H

#include "Choices.h"

#include "support/FakeCounter.h"
#include "support/Host.h"
#include "support/SelectionModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Whole {

using namespace Gentra;
using Support::MainContext;
using Support::PropertyPtr;

struct PoolState;
class World;

/// The library and the model disagree.
struct Disagreement : std::logic_error {
    using logic_error::logic_error;
};
inline void Require(bool holds, char const* what) {
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

    WorldBehaviour(World& newHost, Kind newKind);
    void ProcessMembers(std::vector<Member>& members, Member& current) override;
    bool TriggerLiveBehaviour() override;

    World* host;
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
    int number = 0;    ///< In the order of creation.
    bool waits = true; ///< For a pass.
    std::string name;
    std::vector<PropertyState*> poolTable;
    std::vector<PropertyState*> poolOnly; ///< Pool properties whose ID was taken.
    std::vector<Place> memberTable;
    std::vector<Place> placesOnly;
    int recordSize = 0;
    bool hasRecords = false;
    bool compiled = false;
    bool failed = false;
    std::int64_t lastLap = 0;
    Behaviours active, passive, onMember, onPool;
    std::map<unsigned char*, std::map<int, Floats>> members; ///< Values and vectors by record and offset.
    Support::SelectionModel list;
};

inline constexpr std::size_t MOST_POOLS = 6;
inline constexpr std::size_t MOST_MEMBERS = 60;
inline constexpr char const* NAMES[] = {"A",           "B", "Sum", "Position", "Own", "Count",
                                        "TimeElapsed", "C", "D",   "E",        "F",   "G"};

template<class T>
std::size_t IndexOf(std::vector<T> const& list, T const& what) {
    return static_cast<std::size_t>(std::find(list.begin(), list.end(), what) - list.begin());
}

inline std::vector<Member> AsVector(Support::SelectionModel const& model) {
    return {model.list.begin(), model.list.end()};
}

inline std::vector<PropertyState*> MemberProperties(PoolState const& pool) {
    std::vector<PropertyState*> properties;
    for (PoolState::Place const& place : pool.memberTable) {
        properties.push_back(place.property);
    }
    return properties;
}

inline PropertyState* FindNamed(std::vector<PropertyState*> const& properties, std::string const& name) {
    auto const found =
        std::find_if(properties.begin(), properties.end(), [&](auto* each) { return each->name == name; });
    return found != properties.end() ? *found : nullptr;
}

/// Keeps sums that grow with every frame among the numbers that floats can add to.
inline float Bounded(float sum) {
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
inline std::vector<SlotKind> const& SlotsOf(WorldBehaviour::Kind kind) {
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

/// A host that does at random what hosts do, and a model of what has to come of it.
///
/// Pools, properties, behaviours and members come and go, also inside events and behaviours; passes
/// and frames run. Each step does one operation; Check() compares everything that can be seen from outside with the
/// model, and walks the structures inside. Both throw std::logic_error where the library and the model disagree.
class World {
public:
    /// `logToError` writes the operations to the standard error, where they stay when the process ends early.
    explicit World(Choices& newChoices, bool logToError = false);
    void Step();
    void Check();
    /// Walks the structures inside, also where an exception has put model and library apart.
    void CheckStructures() const;
    /// One line for each operation so far.
    [[nodiscard]] std::string Operations() const { return operations.str(); }
    /// How often behaviours have run.
    [[nodiscard]] std::size_t CountRuns() const { return runsSoFar; }

    // What the behaviours of this world tell it.

    PoolState* BeginRun(WorldBehaviour& behaviour, std::vector<Member> const& members);
    void EndRun(PoolState& pool, bool visited, Member last);
    void WorkOn(WorldBehaviour& behaviour);

private:
    // Runs.

    void DropRunsOnNobody();
    static void RefreshConstants(WorldBehaviour& behaviour);
    void RequireNoMoreRuns(char const* what);
    static bool MayWork(WorldBehaviour const& behaviour, PoolState const& pool);
    static Member MemberOfLink(WorldBehaviour const& behaviour, Member current);
    static Floats Expected(WorldBehaviour const& behaviour);
    void Trigger(WorldBehaviour& behaviour);
    void See(PoolState& pool);

    // Operations.

    std::ostream& Note(char const* what);
    void Rename(PoolState& pool);
    void AddMembers(PoolState& pool);

    // Pools.

    PoolState* Find(MemberPool const* pool);
    PoolState* FindByID(int id);
    PoolState* SomePool();
    void CreatePool();
    void DestroyPool(PoolState& pool);
    void ChangeID(PoolState& pool);
    void HandlePoolEvent(Util::Event const& event);
    void ClearState(PoolState& pool);

    // Passes.

    bool SomebodyWaits() const;
    void BeginPass(bool again);
    int TurnOf(PoolState const& pool) const;
    PoolState* NextPoolOfPass();
    void KnowPools();
    void TakePoolOfPass(PoolState& pool);
    WorldBehaviour* NextOfPoolConstruction(PoolState*& pool);
    void EndPass();
    void Construct(PoolState&) { RunPass(false); }
    void Reconstruct(PoolState&) { RunPass(true); }
    void RunPass(bool again);
    void HandleConstruct(Util::Event const& event);

    // Properties.

    PropertyState* State(Property const* property);
    PropertyState& Adopt(PropertyPtr const& property, int id);
    PropertyState& MakeProperty();
    void ChangeValue(PoolState&);
    PropertyState* FindByName(PoolState const& pool, std::string const& name);
    void AddProperty(PoolState& pool);
    void Enter(PoolState& pool, PropertyState& property, bool amongMembers);

    // Building.

    void BuildContent(PoolState& pool);
    void LinkBehaviour(PoolState& pool);
    void LinkVisible(WorldBehaviour& behaviour);
    void Assimilate(PoolState& pool, WorldBehaviour& behaviour, bool ofMembers);
    void Compile(PoolState& pool);
    void Compile(WorldBehaviour& behaviour);
    static bool Fits(PoolState const& pool, WorldBehaviour const& behaviour, bool isConstruction);

    // Frames.

    void RunFrame(PoolState& pool);
    void BeginFrame();

    // Members.

    void Born(PoolState& pool, Member member);
    void AddMember(PoolState& pool);
    void DeleteMember(PoolState& pool);
    void ChangeList(PoolState& pool);

    // Comparing.

    void CheckContexts();
    void CheckList(MemberPool& pool, Support::SelectionModel& list);
    void CheckPool(PoolState& pool);
    void CheckProperties();

    struct Run {
        WorldBehaviour* behaviour;
        PoolState* pool;
        std::optional<std::vector<Member>> members; ///< Without a value all that the pool lists by then.
        bool prepared = true;                       ///< Whether the constants are refreshed before.
        bool ofNewMember = false;
    };
    /// The pass that runs, if any, and how far it is.
    struct Pass {
        bool again = false;              ///< All pools instead of those that wait.
        bool constructing = true;        ///< Else the pool-construction behaviours run.
        std::optional<int> lastTurn;     ///< Of the pool that was taken last.
        std::map<int, PoolState*> known; ///< By the turn that they had when the step began.
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
    std::map<int, PropertyState*> registry; ///< What contexts know by ID.
    std::map<PropertyState*, WorldBehaviour*> triggers;
    std::optional<Pass> pass;
    PoolState* frameAfterPass = nullptr; ///< The pool that was asked for a frame.
    std::deque<Run> expectedRuns;
    std::vector<Run> runs; ///< Those that are going on, inside each other.
    std::size_t runsSoFar = 0;
    int poolsSoFar = 0;
    unsigned int checks = 0;
    Support::Listener poolListener;
    Support::Listener constructListener;
};

} // namespace Whole

#endif
