// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_BEHAVIOURS_BEHAVIOUR_H
#define GENTRA_BEHAVIOURS_BEHAVIOUR_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Datum.h"
#include "gentra/properties/Member.h"
#include "gentra/properties/Parameter.h"
#include "gentra/properties/Property.h"
#include "gentra/util/EventType.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/PerformanceStatistics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/String.h"
#include "gentra/util/Vec3.h"
#include "gentra/util/WeakPtr.h"

#include <cassert>
#include <cstddef>
#include <vector>

namespace Gentra {

class Context;
class MemberPool;
class MemberSelection;
class MemberSelectionProperty;
class SpatialOrganizer;

/// The base class of every behaviour. Derive, declare a parameter interface, work on members.
///
/// A behaviour never names properties. It declares typed slots; the host links the visible ones to
/// properties, the pool gives the intrinsic ones properties of its own, and the compiler checks each link and
/// copies what the behaviour needs into its fast parameters. While it runs, the behaviour reads and writes
/// data only through the accessors below, by the position of the slot (its link index).
class GENTRA_EXPORT Behaviour {
public:
    /// The most parameters that a behaviour can declare.
    static constexpr int MAX_PARAMETERS = 16;

    /// The answer of lookups that find no behaviour; compare by pointer.
    static Util::RefCountPtr<Behaviour> const& NIL;
    /// Root type of the events of behaviours.
    static Util::EventType const& EVENT;
    /// Triggered by Initialize() (sub-index 0); the `subject` is the behaviour.
    static Util::EventType const& EVENT_CREATE;
    /// (0, 0, 0).
    static Math::Vec3 const NULLPOS;

    /// A nameless behaviour without interface, in no pool, not ready.
    Behaviour();
    /// Copies every field; the copy has parameter records of its own. It refers to the same owner pool, but
    /// is in none of the pool's lists.
    Behaviour(Behaviour const& other);
    /// Copies likewise. This behaviour stays in the lists of the pools that it is linked to.
    Behaviour& operator=(Behaviour const& other);

    // Virtual operations in slot order; compiled plug-ins depend on it. The last one is protected, below.

    /// Deletes the parameter records. Pools hold their behaviours, so no list has it any more.
    virtual ~Behaviour();

    /// Called just before the pool looks at ReadyToUse(), except for pool-construction behaviours.
    virtual void CheckForUpdate();

    /// Runs the behaviour over `members`. The default makes each in turn `current` and calls
    /// TriggerLiveBehaviour(); afterwards `current` holds the last one. Each member is read from the vector when its
    /// turn comes. The walk ends at the length that the vector had at first, or at its end where it has become shorter.
    /// A behaviour that is not ready does nothing.
    ///
    /// The pool passes its active member as `current`. The default does not set `member`: a derived behaviour
    /// that uses the accessors sets it to the member in work.
    virtual void ProcessMembers(std::vector<Member>& members, Member& current);

    /// The work for one member, or for a trigger; returns whether a trigger was handled here, else
    /// BehaviourProperty::TriggerBehaviour runs the behaviour through its pool. The base returns false.
    virtual bool TriggerLiveBehaviour();

    // Identity and state.

    /// Given by the derived class, empty until then. Need not be unique.
    [[nodiscard]] Util::String const& GetName() const noexcept { return name; }
    /// The pool in which the behaviour is active or passive, or null.
    [[nodiscard]] MemberPool* GetOwnerPool() const noexcept { return ownerPool.Get(); }
    /// Whether the last compile succeeded.
    [[nodiscard]] bool ReadyToUse() const noexcept { return !disabled; }
    /// The first of the MAX_PARAMETERS fast parameters.
    [[nodiscard]] Basic_Parameter* GetFastParams() noexcept { return fastParams; }
    /// Timing of this behaviour's processing.
    [[nodiscard]] PerformanceStatistics const& GetPerformaceStats() const noexcept { return performanceStats; }
    /// Triggers EVENT_CREATE. The library never calls it: the derived class or the host does when the
    /// behaviour is set up.
    void Initialize();

    /// @{
    /// Whether, and how large, the host should draw the behaviour's debug output; at first off, with the scale 1.
    /// The scale is shared by all.
    [[nodiscard]] bool GetDebugRenderEnabled() const noexcept { return debugRenderEnabled; }
    void SetDebugRenderEnabled(bool enabled) noexcept { debugRenderEnabled = enabled; }
    [[nodiscard]] static float GetDebugRenderScale() noexcept { return debugRenderScale; }
    static void SetDebugRenderScale(float scale) noexcept { debugRenderScale = scale; }
    /// @}

    // Declaring the interface.

    /// @{
    /// Declares a parameter of the owner and the type that the operation is named after (UserData: DATAREFERENCE,
    /// BehaviourTrigger: BEHAVIOUR); without a `scope` it is VISIBLE. Finish before any property is linked.
    ///
    /// The leading number is not used: a parameter's link index is its position in order of declaration. A default
    /// is what the property made for an intrinsic parameter begins with (else zero); a visible parameter has no use
    /// for it. A 17th parameter is refused:
    /// "Error\Construction\Behaviour\Parameter \"%s\" could not be added, because a Behaviour can not have
    /// more than 16 Parameters".
    void MemberValue(int unused, char const* parameterName, Scope scope, float defaultValue);
    void PoolValue(int unused, char const* parameterName, Scope scope);
    void FlexibleValue(int unused, char const* parameterName);
    void MemberVec3(int unused, char const* parameterName, Scope scope, Math::Vec3 defaultVector);
    void FlexibleVec3(int unused, char const* parameterName);
    void FlexibleMemberSelection(int unused, char const* parameterName);
    void MemberMemberSelection(int unused, char const* parameterName, Scope scope);
    void FlexibleUserData(int unused, char const* parameterName);
    void FlexibleBehaviourTrigger(int unused, char const* parameterName);
    /// @}

    // Looking at the interface.

    /// @{
    /// The length of the visible interface, which lists the parameters that the host links, ascending by link index.
    [[nodiscard]] int GetNumVisibleInterfaceLinks() const noexcept;
    [[nodiscard]] int GetIndexOfFirstIntrinsicParameterInVisibleInterface() const noexcept { return visibleCount; }
    /// @}
    /// @{
    /// What stands at a position of the visible interface. A position out of range is reported
    /// ("Error\Construction\Behaviour\...") and answered by false or UNDEFINED, with the outputs unchanged.
    bool GetVisibleInterfaceDescription(int visibleIndex, Util::String& outName, PropertyOwner& outOwner,
                                        PropertyType& outType, bool& outIntrinsic) const;
    [[nodiscard]] PropertyType GetPropertyTypeFromVisibleParameterInterface(int visibleIndex) const;
    /// @}
    /// The link index of the first parameter of exactly that name, or -1.
    [[nodiscard]] int GetLinkIndexFromPropertyName(Util::String const& parameterName) const;

    /// @{
    /// Fills `out`, which is emptied first, with the intrinsic parameters that have no property yet: those whose
    /// owner is MEMBER, or all others. The records are the behaviour's own and last as long as its interface.
    void GetUnlinkedIntrinsicPoolParams(std::vector<Parameter*>& out) const;
    void GetUnlinkedIntrinsicMemberParams(std::vector<Parameter*>& out) const;
    /// @}
    /// @{
    /// Fills `out`, which is emptied first, with the names of such parameters of one type, the MEMBER ones last.
    void GetUnlinkedIntrinsicValueParamsByName(std::vector<Util::String>& out) const;
    void GetUnlinkedIntrinsicVectorParamsByName(std::vector<Util::String>& out) const;
    /// @}

    // Linking and compiling.

    /// Links a property at a position of the visible interface, in place of the one that is linked there. What has been
    /// compiled stays until PushLinkedParamsToFastParams() is called. False, with nothing changed: silently for
    /// Property::NIL, and for null at a good position; with a "Construction" message for a bad position or a property
    /// of another type.
    bool LinkPropertyToVisibleInterface(Util::RefCountPtr<Property> const& property, int visibleIndex);
    /// Links properties that were made for intrinsic parameters: unique ones at the link index they carry,
    /// shared ones by name. Property::NIL is skipped.
    void LinkIntrinsicPropertiesToInterface(std::vector<Util::RefCountPtr<Property>>& properties);
    /// Drops all links and the owner pool. The behaviour must be compiled again before it runs.
    void ClearBehaviour();
    /// The compiler: checks every link, fills the fast parameters and returns whether the behaviour is ready
    /// now. Each failing link is reported ("Error :: Compiler :: Behaviour ..."), up to the first missing
    /// one.
    bool PushLinkedParamsToFastParams();
    /// Lets linked properties that are in no pool update themselves; nothing while not ready.
    void UpdateProperties();
    /// Copies the present values of linked pool properties into the fast parameters; nothing while not ready.
    void RefreshConstants();

    /// Runs the behaviour over one member, through ProcessMembers().
    void ProcessSingleMember(Member processedMember, Member& current);

    // Data access during processing.

    /// @{
    /// The datum in the record of `member`, by the link index (0 to 15) of a compiled parameter. The reference is
    /// aligned when all sizes in the record are multiples of 4, and lasts until members are deleted
    /// or the pool is cleared.
    ///
    /// The index is checked where assertions are. In a checked build (see GENTRA_CHECKED) a member that is not one of
    /// the linked property's pool is reported once: "Error :: PoolProcessing :: The Behaviour \"%s\" uses a Member that
    /// is not of the Pool of its Parameter \"%s\"". It is read and written all the same where its record reaches so
    /// far; otherwise reading gives zeros and what is written is lost. Nothing of this is checked elsewhere.
    [[nodiscard]] float& UseMemberValue(int index) { return DatumReference<float>(index); }
    [[nodiscard]] Math::Vec3& UseMemberVec3(int index) { return DatumReference<Math::Vec3>(index); }
    /// @}
    /// The selection that the datum in the record of `member` points at; for null an empty one without a pool.
    [[nodiscard]] MemberSelection& UseMemberMemberSelection(int index) {
        auto* const selection = Datum::Read<MemberSelection*>(MemberDatum(index, sizeof(MemberSelection*)));
        return selection != nullptr ? *selection : NoSelection();
    }

    /// The value as of the last RefreshConstants().
    [[nodiscard]] float ReadPoolValue(int index) const { return FastParam(index).value; }
    /// The value field of the linked property itself.
    [[nodiscard]] float& UsePoolValue(int index) { return LinkedProperty(index).value; }

    /// A "Flexible" operation works on what the parameter was linked to: member data of `member` (which is set to a
    /// member of the linked property's pool), the constant of a pool property, or the property itself when that is in
    /// no pool. Where there is no datum, reading gives zeros and writing is ignored.
    [[nodiscard]] float ReadFlexibleValue(int index) const {
        Basic_Parameter const& parameter = FastParam(index);
        if (parameter.owner == MEMBER) {
            return Datum::Read<float>(MemberDatum(index, sizeof(float)));
        }
        return parameter.owner == POOL ? parameter.value : PropertyDatumOr(index, 0.0f);
    }
    /// 0 for member data.
    [[nodiscard]] float ReadFlexibleConstValue(int index) const {
        Basic_Parameter const& parameter = FastParam(index);
        if (parameter.owner == POOL) {
            return parameter.value;
        }
        return parameter.owner == FLEXIBLE ? PropertyDatumOr(index, 0.0f) : 0.0f;
    }
    /// Leaves `out` as it is unless the data is member data.
    void ReadFlexibleMemberValue(int index, float& out) const {
        if (FastParam(index).owner == MEMBER) {
            out = Datum::Read<float>(MemberDatum(index, sizeof(float)));
        }
    }
    /// For a pool property changes the fast parameter only, until the next RefreshConstants().
    void WriteFlexibleValue(int index, float newValue);

    /// As ReadFlexibleValue().
    [[nodiscard]] Math::Vec3 ReadFlexibleVec3(int index) const {
        Basic_Parameter const& parameter = FastParam(index);
        if (parameter.owner == MEMBER) {
            return Datum::Read<Math::Vec3>(MemberDatum(index, sizeof(Math::Vec3)));
        }
        return parameter.owner == POOL ? parameter.vector : PropertyDatumOr(index, Math::Vec3());
    }
    /// (0, 0, 0) for member data.
    [[nodiscard]] Math::Vec3 ReadFlexibleConstVec3(int index) const {
        Basic_Parameter const& parameter = FastParam(index);
        if (parameter.owner == POOL) {
            return parameter.vector;
        }
        return parameter.owner == FLEXIBLE ? PropertyDatumOr(index, Math::Vec3()) : Math::Vec3();
    }
    /// Leaves `out` as it is unless the data is member data.
    void ReadFlexibleMemberVec3(int index, Math::Vec3& out) const {
        if (FastParam(index).owner == MEMBER) {
            out = Datum::Read<Math::Vec3>(MemberDatum(index, sizeof(Math::Vec3)));
        }
    }
    /// For a pool property changes the fast parameter only, until the next RefreshConstants().
    void WriteFlexibleVec3(int index, Math::Vec3 newVector);

    /// As ReadFlexibleValue() finds it; an empty selection without a pool when there is none.
    [[nodiscard]] MemberSelection& UseFlexibleMemberSelection(int index) {
        return FastParam(index).owner == MEMBER ? UseMemberMemberSelection(index)
                                                : UseFlexibleConstMemberSelection(index);
    }
    /// The selection of the property datum, also when the parameter is linked to member data: then that of
    /// the owner pool's active member. An empty selection without a pool when there is none.
    [[nodiscard]] MemberSelection& UseFlexibleConstMemberSelection(int index);

    /// The address of the datum, which holds the pointer to the user data; may be unaligned.
    [[nodiscard]] void const* ReadFlexibleUserData(int index) const {
        return FastParam(index).owner == MEMBER ? MemberDatum(index, sizeof(void*)) : PropertyDatum(index);
    }
    /// The pointer stored in the property datum; null when there is none.
    [[nodiscard]] void const* ReadFlexibleConstUserData(int index) const {
        return PropertyDatumOr<void const*>(index, nullptr);
    }

    /// BehaviourProperty::TriggerBehaviour() of the linked property.
    void TriggerFlexibleBehaviour(int index);

    /// The member at that index of a selection, or Member::NIL.
    [[nodiscard]] static Member UseMemberInSelection(MemberSelection& selection, int index);
    /// @{
    /// The datum of a member property in the record of a member of its pool; neither is checked.
    [[nodiscard]] static float& UseMemberValueFromProperty(Property& property, Member const& ofMember) {
        return *reinterpret_cast<float*>(ofMember.record + property.dataOffset);
    }
    [[nodiscard]] static Math::Vec3& UseMemberVectorFromProperty(Property& property, Member const& ofMember) {
        return *reinterpret_cast<Math::Vec3*>(ofMember.record + property.dataOffset);
    }
    /// @}

    /// The property of that name of the selection's base pool, which keeps it alive; null when either is
    /// missing.
    [[nodiscard]] static Property* GetPropertyByName(Util::String const& propertyName, MemberSelection& selection);
    /// The same for the base pool of the member-selection property of the fast parameter at `index`; null when that is
    /// none or has gone.
    [[nodiscard]] Property* GetPropertyByName(Util::String const& propertyName, unsigned int index) const;
    /// The organizer of the selection in the behaviour's context, see SpatialRelations::GetSpatialOrganizer.
    [[nodiscard]] SpatialOrganizer& GetSpatialOrganizer(MemberSelection& selection) const;

protected:
    // The last virtual slot.

    /// The place to declare the interface. The library never calls it.
    virtual void CreateParameterInterface();

    /// Possible at any time: no list and no link goes by the name.
    void SetBehaviourName(Util::String const& newName) { name = newName; }
    /// Null for none. The pool calls it when it links the behaviour; it changes no list of a pool.
    void SetOwnerPool(MemberPool* pool);

    /// Appends a copy of the parameter to the interface; null is ignored.
    void AddParameterToInterface(Parameter const* parameter);
    /// Puts a copy of the parameter before all others.
    void AddParameterToInterfaceFront(Parameter const* parameter);
    /// Deletes all parameter records. Links and fast parameters stay.
    void ClearParameterInterface();

    /// @{
    /// As its visible counterpart above, over the whole interface.
    [[nodiscard]] int GetNumInterfaceLinks() const noexcept;
    bool GetInterfaceDescription(int index, Util::String& outName, PropertyOwner& outOwner, PropertyType& outType,
                                 bool& outIntrinsic) const;
    [[nodiscard]] PropertyType GetPropertyTypeFromParameterInterface(int index) const;
    /// @}
    /// As LinkPropertyToVisibleInterface(), by link index; but Property::NIL counts as a property of another type.
    bool LinkPropertyToInterface(Util::RefCountPtr<Property> const& property, int linkIndex);

    /// Drops all links; their number stays.
    void ClearLinkedParameters();
    /// Does nothing.
    void FlushFastParams();

    /// Strict order by `orderKey`, for sorting behaviours.
    [[nodiscard]] static bool BehaviourLess(Behaviour* a, Behaviour* b);

    // Fields. A parameter record, its link and its fast parameter have the same position.

    Context* context;                                          ///< The main context. Not owned.
    Util::WeakPtr<MemberPool> ownerPool;                       ///< Null again when the pool is cleared or destroyed.
    std::vector<Parameter*> parameterInterface;                ///< Owned, in order of declaration.
    std::vector<Parameter*> visibleInterface;                  ///< Those of them that are VISIBLE.
    std::vector<Util::RefCountPtr<Property>> linkedProperties; ///< Property::NIL where not linked.
    int visibleCount = 0;                                      ///< The length of `visibleInterface`.
    Basic_Parameter fastParams[MAX_PARAMETERS];                ///< Filled by the compiler.
    float orderKey = 0.0f;                                     ///< For BehaviourLess(); the library never changes it.
    bool disabled = true;                                      ///< Whether the behaviour is not ready to run.
    Util::String name;                                         ///< See SetBehaviourName().
    Member member; ///< The member in work, which the accessors read. The derived behaviour sets it.
    PerformanceStatistics performanceStats; ///< See GetPerformaceStats().
    bool debugRenderEnabled = false;        ///< See GetDebugRenderEnabled().

private:
    friend class BehaviourProperty;
    friend class MemberPool;

    [[nodiscard]] Basic_Parameter const& FastParam(int index) const {
        assert(index >= 0 && index < MAX_PARAMETERS);
        return fastParams[index];
    }
    [[nodiscard]] unsigned char* MemberDatum(int index, [[maybe_unused]] std::size_t size) const {
#if GENTRA_CHECKED
        return CheckedMemberDatum(index, size);
#else
        assert(member.IsValid() && FastParam(index).dataOffset >= 0);
        return member.record + FastParam(index).dataOffset;
#endif
    }
    /// What MemberDatum() does in a checked build.
    [[nodiscard]] unsigned char* CheckedMemberDatum(int index, std::size_t size) const;
    template<class T>
    [[nodiscard]] T& DatumReference(int index) const {
        return *reinterpret_cast<T*>(MemberDatum(index, sizeof(T)));
    }
    [[nodiscard]] Property& LinkedProperty(int index) const {
        assert(index >= 0 && static_cast<std::size_t>(index) < linkedProperties.size());
        return *linkedProperties[static_cast<std::size_t>(index)];
    }
    /// The address at which the linked property itself finds its datum; null when it has none.
    [[nodiscard]] void const* PropertyDatum(int index) const;
    template<class T>
    [[nodiscard]] T PropertyDatumOr(int index, T absent) const {
        void const* const datum = PropertyDatum(index);
        return datum != nullptr ? Datum::Read<T>(datum) : absent;
    }

    template<class T>
    void WriteFlexible(int index, T Basic_Parameter::*constant, T newDatum);

    /// An empty selection without a pool, for data that points at none.
    [[nodiscard]] static MemberSelection& NoSelection();

    [[nodiscard]] PerformanceStatistics& PerformanceStats() noexcept {
        return performanceStats;
    }

    /// Another reference to this behaviour, for as long as it runs. NIL for one that no pool has ever taken.
    [[nodiscard]] Util::RefCountPtr<Behaviour> Hold();
    /// See BehaviourProperty::TriggerBehaviour().
    void Trigger();
    template<bool PREFETCH>
    void Walk(std::vector<Member>& members, Member& current);
    [[nodiscard]] bool HasRoomForParameter(Parameter const& parameter) const;
    void Declare(PropertyOwner owner, PropertyType type, char const* parameterName, Scope scope,
                 float defaultValue = 0.0f, Math::Vec3 defaultVector = Math::Vec3());
    void CopyInterface(Behaviour const& other);
    void CollectUnlinkedIntrinsic(std::vector<Parameter*>& out, bool ofMembers) const;
    void CollectUnlinkedIntrinsicNames(std::vector<Util::String>& out, PropertyType type) const;
    void DropStaleIntrinsicLinks();
    bool CompileLink(Parameter const& parameter, Property& linked);
    bool CompileOwner(Parameter const& parameter, Property const& linked);
    [[nodiscard]] std::size_t NumLinkedParameters() const noexcept;

    /// The member-selection properties among the fast parameters, by position; empty without any.
    std::vector<Util::WeakPtr<MemberSelectionProperty>> compiledSelections;
    Util::RefCountBlock* sharedCount = nullptr; ///< Of those who hold this behaviour, once a pool does; not copied.

    static float debugRenderScale;
};

} // namespace Gentra

#endif
