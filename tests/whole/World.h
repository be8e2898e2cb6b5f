// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_WHOLE_WORLD_H
#define GENTRA_TESTS_WHOLE_WORLD_H

#include "Choices.h"

#include "support/FakeCounter.h"
#include "support/Host.h"
#include "support/SelectionModel.h"

#include <array>
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

using Gentra::Member;
using Gentra::MemberPool;
using Gentra::MemberSelection;
using Gentra::Property;
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
    int organizers = 0; ///< How many were made that read it; each lasts as long as its context.

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

    WorldBehaviour(World& newWorld, Kind newKind);
    void ProcessMembers(std::vector<Member>& members, Member& current) override;
    bool TriggerLiveBehaviour() override;

    World* world;
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

/// A host that does at random what hosts do, and a model of what has to come of it.
///
/// Pools, properties, behaviours, selections and references come and go, also inside events and behaviours; passes
/// and frames run. Each step does one operation; Check() compares everything that can be seen from outside with the
/// model, and walks the structures inside.
class World {
public:
    /// `logToError` writes the operations to the standard error, where they stay when the process ends early.
    explicit World(Choices& newChoices, bool logToError = false);
    World(World const&) = delete;
    World& operator=(World const&) = delete;
    ~World();

    void Step();
    void Check();
    /// One line for each operation so far.
    [[nodiscard]] std::string Operations() const { return operations.str(); }
    [[nodiscard]] std::size_t CountRuns() const { return runsSoFar; }

private:
    friend class WorldBehaviour;
    class Functor;
    struct PoolListener final : Support::Listener {
        using Listener::Listener;
    };
    struct Run {
        WorldBehaviour* behaviour;
        PoolState* pool;
        std::optional<std::vector<Member>> members; ///< Without a value all that the pool lists by then.
        bool prepared = true;                       ///< Whether the constants are refreshed before.
        bool ofNewMember = false;
    };
    /// The pass that runs, if any, and how far it is.
    struct Pass {
        bool again = false;           ///< All pools instead of those that wait.
        bool constructing = true;     ///< Else the pool-construction behaviours run.
        std::size_t waiting = 0;      ///< How many of those that wait were taken.
        std::optional<int> lastID;    ///< Of the pool that was taken last.
        PoolState* current = nullptr; ///< Whose pool-construction behaviours run,
        std::size_t behaviour = 0;    ///< and how many of them were taken.
    };

    std::ostream& Note(char const* what);

    void CreatePool();
    void DestroyPool(PoolState& pool);
    void ChangeID(PoolState& pool);
    void Rename(PoolState& pool);
    void ChooseSingle(PoolState& pool);
    void HandlePoolEvent(Util::Event const& event);
    void ClearState(PoolState& pool);
    [[nodiscard]] PoolState* Find(MemberPool const* pool);
    [[nodiscard]] PoolState* FindByID(int id);
    [[nodiscard]] PoolState* SomePool();

    void BeginPass(bool again);
    [[nodiscard]] PoolState* NextPoolOfPass();
    void TakePoolOfPass(PoolState const& pool);
    [[nodiscard]] WorldBehaviour* NextOfPoolConstruction(PoolState*& pool);
    void EndPass();
    void RunPass(bool again);
    void Construct(PoolState& pool);
    void Reconstruct(PoolState& pool);
    void HandleConstruct(Util::Event const& event);

    PropertyState& Adopt(PropertyPtr const& property, int id);
    PropertyState& MakeProperty();
    void AddProperty(PoolState& pool);
    void Enter(PoolState& pool, PropertyState& property, bool amongMembers);
    void ChangeValue(PoolState& pool);
    [[nodiscard]] static PropertyState* FindByName(PoolState const& pool, std::string const& name);
    [[nodiscard]] PropertyState* State(Property const* property);

    void BuildContent(PoolState& pool);
    void LinkBehaviour(PoolState& pool);
    void LinkVisible(WorldBehaviour& behaviour);
    void Assimilate(PoolState& pool, WorldBehaviour& behaviour, bool ofMembers);
    void Compile(PoolState& pool);
    void Compile(WorldBehaviour& behaviour);
    [[nodiscard]] bool Fits(PoolState const& pool, WorldBehaviour const& behaviour) const;
    void CopyBehaviour(PoolState& pool);

    void RunFrame(PoolState& pool);
    void BeginFrame();
    void ApplyPassive(PoolState& pool);
    PoolState* BeginRun(WorldBehaviour& behaviour, std::vector<Member> const& members);
    void DropRunsThatDoNotFit();
    void RequireNoMoreRuns(char const* what);
    void EndRun(PoolState& pool, bool visited, Member last);
    void WorkOn(WorldBehaviour& behaviour);
    [[nodiscard]] Floats Expected(WorldBehaviour const& behaviour, std::size_t index);
    void Trigger(WorldBehaviour& behaviour);
    void See(PoolState& pool);

    void Born(PoolState& pool, Member member);
    void AddMember(PoolState& pool);
    void AddMembers(PoolState& pool);
    void Select(PoolState& pool);
    void ChangeSomeSelection(PoolState& pool);
    void ChangeOwnList(PoolState& pool);
    void DeleteMember(PoolState& pool);
    void ChangeSelection(MemberSelection& selection, Support::SelectionModel& list, PoolState& pool);
    static Member RemoveActive(Support::SelectionModel& list, PoolState& pool);
    void ChangeReference(PoolState& pool);
    void FollowPath(PoolState& pool);

    void CheckContexts();
    void CheckList(MemberSelection& selection, Support::SelectionModel& list);
    void CheckPool(PoolState& pool);
    void CheckProperties();

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

} // namespace Whole

#endif
