// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_POOLS_MEMBERPOOL_H
#define GENTRA_POOLS_MEMBERPOOL_H

#include "gentra/gentra_export.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/properties/Parameter.h"
#include "gentra/util/EventType.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/PerformanceStatistics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/String.h"
#include "gentra/util/Timer.h"
#include "gentra/util/WeakPtr.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace Util {
class FirstException;
}

namespace Gentra {

class Behaviour;
class Context;
class MemberPropertyTable;
class Property;
class PropertyTable;

/// A population: members that share one record layout, the properties that make up the layout, and the
/// behaviours that run over the members.
///
/// A pool is itself the selection of its members. The host creates and destroys it. It is built in a pass of
/// the main context (Context::ForceConstructAllMemberPools, started by the first ProcessMemberPool()): the
/// pool is cleared, EVENT_CONSTRUCT is triggered, on which the host adds properties and links behaviours, and
/// the pool is compiled. All member properties must be added before the first member is created.
///
/// Properties are listed in the order of addition, which is also the order of the record layout. Lookups by name
/// compare exactly and find pool properties before member properties.
///
/// Linking a behaviour also gives each of its unlinked intrinsic parameters a property: shared ones the pool's
/// property of that name, unique ones a property of their own. A null pointer and Behaviour::NIL are ignored. Each
/// way of running a behaviour gives it the pool's active member as `current`. A behaviour that is not ready is
/// skipped, but for a pool-construction behaviour, whose own ProcessMembers() decides; so is one whose member data does
/// not lie in this pool's records, with "Error :: PoolProcessing :: The Behaviour \"%s\" can not be used for the Pool
/// \"%s\", because its Member Properties do not fit the Members", logged once. For active and passive behaviours that
/// concerns data of this pool only: what a behaviour does with members of other pools is its own business.
///
/// A pool is *in use* while it runs host code inside itself: behaviours in every way of running them, CheckForUpdate(),
/// Property::Update(), the creation and deletion of instances, and the destructors of properties and behaviours that go
/// when it is cleared. A pool in use keeps its shape: it is not cleared ("Error :: Construction :: The Pool \"%s\" can
/// not be initialized while it is in use"), and a pass leaves it out. Members, lists, links and compiling are not
/// affected. To destroy a pool in use is the one thing that a host must not do; a build with assertions stops there.
/// Events run outside any use: a listener may destroy any pool, also the one that the event is about.
///
/// While a pool is cleared nothing can be added or compiled, and no pass builds it: "Error :: Construction :: Nothing
/// can be added to the Pool \"%s\" while it is cleared". For a pool that is being destroyed that lasts to its end.
///
/// Host code may throw. Whatever the pool was doing is then brought to an end or taken back, whichever leaves it sound,
/// and the first exception is passed on: events reach the other listeners as they do without one, a clearing is carried
/// out whole, a property that was announced is announced to have left, a member whose data could not be set up goes
/// again, and a member's instances are all deleted. A destructor passes nothing on; it logs "Error :: MemberPool :: An
/// exception was thrown while the Pool \"%s\" was destroyed".
class GENTRA_EXPORT MemberPool : public MemberSelection {
public:
    /// Root type of the pool events: register for it to hear all of them. The `subject` is the pool.
    static Util::EventType const& EVENT;
    /// Triggered at the end of the constructor (sub-index 0).
    static Util::EventType const& EVENT_CREATED;
    /// Triggered by the destructor once the pool is cleared (sub-index 1).
    static Util::EventType const& EVENT_DELETED;
    /// Triggered when the pool is to be filled with properties and behaviours (sub-index 2).
    static Util::EventType const& EVENT_CONSTRUCT;

    // Construction and identity.

    /// An empty, nameless pool with a random ID. Every context hears of it; `newContext` is only kept for
    /// GetContext().
    explicit MemberPool(Context& newContext);

    /// A detached twin: the same name, ID, properties and behaviours, but no members, an identity value of
    /// its own and no events. No context knows it, and its end leaves the shared properties and behaviours
    /// alone.
    MemberPool(MemberPool const& other);
    MemberPool& operator=(MemberPool const&) = delete;

    /// Clears the pool and triggers EVENT_DELETED. Pointers to the pool that the library keeps become null. Not to be
    /// called while the pool is in use.
    ~MemberPool();

    /// The pool that the main context knows by that ID, or null.
    [[nodiscard]] static MemberPool* Find(Util::ShortID id);
    /// Random until SetNewMemberPoolID().
    [[nodiscard]] Util::ShortID const& GetMemberPoolID() const noexcept { return poolID; }
    /// Gives the pool a new ID and returns true, or returns false when the main context knows a pool of that
    /// ID. The IDs of the properties stay.
    bool SetNewMemberPoolID(Util::ShortID id);
    /// @{
    /// Empty at first. Need not be unique; no event tells of a new one.
    [[nodiscard]] Util::String const& GetName() const noexcept { return name; }
    void SetName(Util::String const& newName) { name = newName; }
    /// @}
    /// The one given at construction.
    [[nodiscard]] Context& GetContext() const noexcept { return context; }
    /// A number of this pool object alone, unique in the process and never -1: the sub-index of the pool's
    /// property events (Property::EVENT).
    [[nodiscard]] int GetIdentityValue() const noexcept { return identity; }
    /// A number that is another after each clearing, and that no other pool ever has: whoever keeps members sees by it
    /// whether they are still there.
    [[nodiscard]] std::uint64_t GetGeneration() const noexcept { return generation; }
    /// Whether the pool runs host code inside itself, see above.
    [[nodiscard]] bool IsInUse() const noexcept { return uses > 0; }
    /// A pointer to the pool that becomes null when the pool is destroyed.
    [[nodiscard]] Util::WeakPtr<MemberPool> GetWeakPtr() const noexcept { return Util::WeakPtr<MemberPool>(life); }
    /// Ascending by ID, as signed numbers.
    [[nodiscard]] bool operator<(MemberPool const& other) const noexcept { return poolID < other.poolID; }

    // Properties.

    /// Adds a member property at the end of the record layout and returns Property::NIL; its ID must be
    /// final.
    ///
    /// A shared intrinsic property gives way to an intrinsic one of the same name that is there already: it
    /// is not added, and the result is a reference to the pool's pointer to the other. Of two properties with
    /// one ID the first stays in the table; the second still takes up its bytes. A property of another pool
    /// is taken over: "Error: Property already used by another pool!". Property::NIL and null are ignored.
    ///
    /// While there are members the layout is fixed: "Error :: Construction :: The Property \"%s\" could not
    /// be added to the Pool \"%s\", because the Pool already has Members" (or "... because its DataSize does
    /// not fit into a Member", for a negative or excessive size). The property then stays a member property
    /// without a place, and no behaviour that is linked to it gets ready.
    Util::RefCountPtr<Property> const& AddMemberProperty(Util::RefCountPtr<Property> property);
    /// Adds a pool property likewise; here every intrinsic property gives way to one of its name.
    Util::RefCountPtr<Property> const& AddPoolProperty(Util::RefCountPtr<Property> property);

    /// @{
    /// Makes a property with PropertyFactory and adds it. An `id` of 0 gives it the default ID: the hash of
    /// its name XOR the pool's ID. Nothing happens for a type that the factory does not make.
    void CreateMemberPropertyFromParameter(Parameter const& parameter, Util::ShortID id);
    void CreatePoolPropertyFromParameter(Parameter const& parameter, Util::ShortID id);
    /// @}

    /// @{
    /// The property of that ID or name, or Property::NIL.
    [[nodiscard]] Util::RefCountPtr<Property> GetPropertyByID(Util::ShortID id) const;
    [[nodiscard]] Util::RefCountPtr<Property> GetPropertyFromName(Util::String const& propertyName) const;
    /// @}
    /// The offset in the member record, in bytes, of the member property of that name, or -1.
    [[nodiscard]] int GetDataOffsetFromPropertyName(Util::String const& propertyName) const;
    /// The pool properties, then the member properties.
    [[nodiscard]] std::vector<Util::RefCountPtr<Property>> GetAllProperties() const;
    /// In the order by which GetDataFromMember() counts.
    [[nodiscard]] std::vector<Util::RefCountPtr<Property>> GetAllMemberProperties() const;

    /// @{
    /// Fills `out`, which is emptied first, with the properties of that type or their names: the pool properties,
    /// then the member properties.
    void GetAllPropertiesOfCertainType(std::vector<Util::RefCountPtr<Property>>& out, PropertyType type) const;
    void GetAllPropertiesOfCertainTypeByName(std::vector<Util::String>& out, PropertyType type) const;
    void GetAllValuePropertiesByName(std::vector<Util::String>& out) const;
    void GetAllVectorPropertiesByName(std::vector<Util::String>& out) const;
    void GetAllMemberSelectionPropertiesByName(std::vector<Util::String>& out) const;
    /// @}

    // Members.

    /// Creates a member from the properties' defaults and runs the member-construction behaviours on it. The
    /// caller lists it. Without member properties returns Member::NIL and logs once "Creating Members without
    /// any properties".
    Member CreateNewMember();
    /// Ends the member and keeps its record for the next one. It stays in the selections that list it: remove
    /// it first. Member::NIL is ignored; so is a member that the pool does not have (any more), with "Bug
    /// Report :: MemberPool :: The Pool \"%s\" was asked to delete a Member it does not have", logged once. So is one
    /// whose data are just being set up; from a construction behaviour on it may be deleted, and CreateNewMember() then
    /// returns Member::NIL.
    void DeleteMember(Member member);
    /// Takes the members out of the pool's list (RemoveMembers()) and deletes them, in the given order. The time it
    /// takes grows with the length of the list once, not with each member. A vector of members that was read before
    /// still has them: in the middle of a frame call GetAllMembers() next, so that the behaviours to come meet none.
    void RemoveAndDeleteMembers(std::vector<Member> const& members);
    /// Whether the member is one of this pool's, listed or not; any address may be asked for.
    [[nodiscard]] bool HasMember(Member member) const noexcept;
    /// @{
    /// The address of a datum, by the member's index in the pool or in `selection` and the property's index
    /// among the member properties. Null when either is out of range, and for a selection of another pool. The
    /// address may be unaligned.
    [[nodiscard]] unsigned char* GetDataFromMember(int memberIndex, int propertyIndex);
    [[nodiscard]] unsigned char* GetDataFromMemberSelectionMember(MemberSelection& selection, int memberIndex,
                                                                  int propertyIndex);
    /// @}

    // Building, called by the context.

    /// Clears the pool of members, properties and behaviours and marks it uncompiled. Name, ID, timing and
    /// the single-member update index stay. Refused while the pool is in use; nothing happens while it is being
    /// cleared.
    void InitializeMemberPool();
    /// Compiles all behaviours and initialises the pool properties. Refused after a failed construction.
    void CompileMemberPool();
    /// Lets each member-selection property find its base pool, see
    /// MemberSelectionProperty::SetBasePoolFromID.
    void SetBasePoolsForMemberSelections();

    // Behaviours.

    /// Links a behaviour that runs every frame. A behaviour is active or passive in one pool at a time:
    /// "Error :: PoolConstruction :: The Pool \"%s\" cannot use the Behaviour \"%s\", because it's already
    /// linked to the Pool
    /// \"%s\"".
    void LinkActiveBehaviour(Util::RefCountPtr<Behaviour> const& behaviour);
    /// Links a behaviour that runs when it is applied or triggered.
    void LinkPassiveBehaviour(Util::RefCountPtr<Behaviour> const& behaviour);
    /// Links a behaviour that runs on every new member. It may serve several pools, and runs where the
    /// members it is linked to fit the layout; the first of these pools makes the properties of its intrinsic slots.
    void LinkMemberConstructionBehaviour(Util::RefCountPtr<Behaviour> const& behaviour);
    /// Links a behaviour that runs once at the end of the pass that builds the pool.
    void LinkPoolConstructionBehaviour(Util::RefCountPtr<Behaviour> const& behaviour);

    /// Active, passive, member-construction and pool-construction behaviours, each in order of linking.
    [[nodiscard]] std::vector<Util::RefCountPtr<Behaviour>> GetAllBehaviours() const;
    /// The first of them with that name, or Behaviour::NIL.
    [[nodiscard]] Util::RefCountPtr<Behaviour> GetBehaviourByName(Util::String const& behaviourName) const;

    // Processing.

    /// One frame: builds the pool if need be, writes the seconds since it was written last, at most 1 (-1 without a
    /// clock), to the value of the property "TimeElapsed" if there is one, and runs the active behaviours over all
    /// members: over the vector that GetAllMembers() gives at the beginning, and that it brings up to date whenever it
    /// is called meanwhile.
    void ProcessMemberPool();
    /// From now on frames process only the member at that index; a negative index stands for all members.
    void SetSingleMemberUpdateIndex(int index) noexcept { singleMemberUpdateIndex = index; }
    /// Timing of ProcessMemberPool().
    [[nodiscard]] PerformanceStatistics const& GetPerformaceStats() const noexcept { return performanceStats; }

    /// @{
    /// Runs a behaviour of this pool now, on all members. A null pointer is ignored. Another pool's: "Error ::
    /// PoolProcessing :: The PassiveBehaviour \"%s\" can not be used for the Pool \"%s\", because he does not
    /// own that behaviour".
    void ApplyPassiveBehaviour(Behaviour& behaviour);
    void ApplyPassiveBehaviour(Util::RefCountPtr<Behaviour> const& behaviour);
    /// @}
    /// @{
    /// The same on the active member only, which may be Member::NIL. Properties in no pool are not updated.
    void ApplyPassiveBehaviourOnActiveMember(Behaviour& behaviour);
    void ApplyPassiveBehaviourOnActiveMember(Util::RefCountPtr<Behaviour> const& behaviour);
    /// @}
    /// The same on the members of a selection of this pool, which must last until the run is over. Errors as above
    /// with "The Behaviour", and "... The Behaviour belongs to the Pool \"%s\", but the MemberSelection it should be
    /// applied on does not use that BasePool".
    void ApplyBehaviourOnMemberSelection(Util::RefCountPtr<Behaviour> const& behaviour, MemberSelection& selection);

private:
    friend class Behaviour;
    friend class Context;
    friend class Path;
    friend class Property;
    friend class SpatialOrganizer;
    friend struct Validator; // of the tests

    using BehaviourList = std::vector<Util::RefCountPtr<Behaviour>>;

    /// Marks the pool as in use for as long as it lives.
    class Use {
    public:
        explicit Use(MemberPool& newPool) noexcept : pool(newPool) { ++pool.uses; }
        Use(Use const&) = delete;
        Use& operator=(Use const&) = delete;
        ~Use() {
            assert(pool.uses > 0);
            --pool.uses;
        }

    private:
        MemberPool& pool;
    };

    /// A new member on which the construction behaviours run.
    struct Newborn {
        unsigned char* record; ///< Null once one of them has deleted it.
        Newborn* outer;
    };

    void Clearing(Util::FirstException& exception) noexcept;
    void End(Util::FirstException& exception) noexcept;
    void ClearBehaviours(BehaviourList& behaviours) noexcept;
    void InitPoolProperties();
    void CreateData(unsigned char* record);
    void DeleteData(unsigned char* record, std::size_t count, Util::FirstException& exception) noexcept;
    void Construct(Newborn& created);
    [[nodiscard]] bool CanEnter(Util::RefCountPtr<Property> const& property) const;
    [[nodiscard]] bool AcceptsMemberProperty(Property& property) const;
    [[nodiscard]] bool RefuseWhileClearing() const {
        if (clearing) {
            ReportClearing();
        }
        return clearing;
    }
    void ReportClearing() const;
    [[nodiscard]] bool AnnounceLeaving(std::deque<Util::RefCountPtr<Property>> const& table, char const* subName,
                                       Util::FirstException& exception) noexcept;
    template<class Add>
    void Enter(Util::RefCountPtr<Property> const& property, Add const& add);
    void AssignDefaultPropertyID(Property& property) const;
    [[nodiscard]] Util::RefCountPtr<Property> MakeProperty(Parameter const& parameter, Util::ShortID id) const;
    /// The pool properties and the member properties.
    [[nodiscard]] std::array<PropertyTable const*, 2> Tables() const noexcept;
    void GetDefaultProperties(std::vector<Util::RefCountPtr<Property>>& out) const;
    /// Announces that the property enters (0) or leaves (1) the pool.
    void TriggerPropertyEvent(Util::RefCountPtr<Property> property, char const* subName, int param1);
    /// Whether there is a datum of that type and size at that offset of a member record.
    [[nodiscard]] bool HasDatum(int offset, int size, PropertyType type) const noexcept;
    /// The offset of the property's data, or -1 when it is not one of the pool's member properties or these are
    /// leaving.
    [[nodiscard]] int OffsetOf(Property const& property) const noexcept;

    [[nodiscard]] bool CanLink(Util::RefCountPtr<Behaviour> const& behaviour) const;
    void LinkOwnedBehaviour(Util::RefCountPtr<Behaviour> const& behaviour, BehaviourList& behaviours);
    void LinkConstructionBehaviour(Util::RefCountPtr<Behaviour> const& behaviour, BehaviourList& behaviours);
    static void Take(Util::RefCountPtr<Behaviour> const& behaviour, BehaviourList& behaviours);
    void AssimilateIntrinsicPropertiesOfBehaviour(Util::RefCountPtr<Behaviour> const& linked);
    [[nodiscard]] bool AddPropertiesFromIntrinsicParameters(std::vector<Parameter*>& parameters,
                                                            std::vector<Util::RefCountPtr<Property>>& properties);
    [[nodiscard]] Util::RefCountPtr<Property> FindSharedProperty(Parameter const& parameter) const;
    [[nodiscard]] Util::RefCountPtr<Property> AddIntrinsicProperty(Parameter const& parameter);
    [[nodiscard]] Parameter GetUniqueNameParam(Parameter parameter) const;

    void UpdateTimeElapsed();
    void InitializeNewMembers(std::vector<Member>& newMembers, Newborn const& created);
    void TriggerPoolConstructor();
    [[nodiscard]] bool LayoutFits(Behaviour const& behaviour, bool isConstruction) const;
    [[nodiscard]] bool Prepare(Behaviour& behaviour, bool updateProperties, bool isConstruction = false);
    [[nodiscard]] bool CheckOwnership(Behaviour const& behaviour, char const* kind) const;
    void RunSampled(Behaviour& behaviour, std::vector<Member>& members);

    Context& context;
    std::unique_ptr<MemberPropertyTable> memberProperties;
    std::unique_ptr<PropertyTable> poolProperties;
    BehaviourList activeBehaviours;
    BehaviourList passiveBehaviours;
    BehaviourList memberConstructionBehaviours;
    BehaviourList poolConstructionBehaviours;
    bool compiled = false;
    bool constructionFailed = false;
    Util::ShortID poolID;
    Util::String name;
    Util::Timer lapTimer; ///< Never started: the first lap counts from the pool's construction.
    PerformanceStatistics performanceStats;
    int singleMemberUpdateIndex = -1;

    Util::WeakSource<MemberPool> life{this};
    int identity;
    std::uint64_t generation;
    bool announced = true;      ///< False for a copy, which no context knows.
    bool clearing = false;      ///< Once the pool is being destroyed for good.
    int uses = 0;               ///< How many uses of the pool are going on, inside each other.
    Newborn* newborn = nullptr; ///< The innermost one.
};

} // namespace Gentra

#endif
