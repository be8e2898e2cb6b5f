// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_MEMBERSELECTIONPROPERTY_H
#define GENTRA_PROPERTIES_MEMBERSELECTIONPROPERTY_H

#include "gentra/properties/Member.h"
#include "gentra/properties/Property.h"

#include <memory>
#include <string>
#include <vector>

namespace Gentra {

template<class T>
class InstanceStore;

/// A property whose datum is a pointer to a MemberSelection.
///
/// The property owns the selections that it creates: one of its own, which the pool data points at first, and
/// a fresh one for each new member. A member's selection is taken back (emptied, for a later member) when the
/// member is deleted while its datum still holds it, and all of them when the property leaves its pool. One that was
/// stored in another datum as well stays as it is. Their memory lasts as long as the property, so a pointer to one
/// never dangles while the property is held.
class GENTRA_EXPORT MemberSelectionProperty : public Property {
public:
    /// A default property, for answers that find none; compare by pointer.
    static Util::RefCountPtr<MemberSelectionProperty> const& NIL;

    /// Named "MemberSelection Property"; the base pool ID is random, which stands for no pool.
    MemberSelectionProperty();
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    explicit MemberSelectionProperty(std::string const& newName);
    explicit MemberSelectionProperty(char const* newName);
    /// @}
    /// @{
    /// Where the pool data of `other` points at a selection that `other` owns, that is copied; one that the host gave
    /// is shared. The selections of members stay with the property that made them.
    MemberSelectionProperty(MemberSelectionProperty const& other);
    MemberSelectionProperty& operator=(MemberSelectionProperty const& other);
    /// @}
    ~MemberSelectionProperty();

    /// Sets the name and the type and points the pool data at the own selection.
    void Init(std::string const& newName);

    void* GetPoolData() override;
    void SetPoolData(void* data) override;
    void SetDataToMemberSelection(void* data, MemberSelection& selection, int index) override;
    void OnInstanceCreation(unsigned char* datum) override;
    void OnInstanceDeletion(unsigned char* datum) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;

    /// Names the pool whose members the selections of this property hold.
    void SetBasePoolID(Util::ShortID id) noexcept { basePoolID = id; }
    /// Makes the main context's pool of that ID the base pool of the selection that the pool data points at;
    /// new members' selections take it over. Called on every construct pass. Logs an error when there is no
    /// such pool.
    void SetBasePoolFromID();
    /// The base pool of the selection that the pool data points at, or null.
    [[nodiscard]] MemberPool* GetBasePool();

    /// The selection that the datum of that member points at, or null.
    [[nodiscard]] MemberSelection* GetMemberSelection(MemberSelection& selection, int index);
    /// Points the datum of that member, if there is one, at `newSelection`, which the caller keeps alive. The
    /// selection it replaces is not destroyed.
    void SetMemberSelection(MemberSelection* newSelection, MemberSelection& selection, int index);

    /// Clears the selection of the owner pool's active member, or without one the own selection; for a
    /// property that is no member property the one that the pool data points at.
    void ClearSelection();
    /// Adds a member of `pool` to the same selection as above; see MemberSelection::AddMember for a mismatch.
    void AddMemberToSelection(MemberPool& pool, Member member);

private:
    friend class Behaviour;

    /// A pointer that becomes null when the property is destroyed.
    [[nodiscard]] Util::WeakPtr<MemberSelectionProperty> Watch();

    static void TakeBackInstances(Property& property);
    void Share(MemberSelection* selection, void const* datum);
    static void Renew(MemberSelection& selection, MemberPool* basePool);
    [[nodiscard]] MemberSelection* ActiveMembersSelection();
    [[nodiscard]] MemberSelection& FallbackSelection();

    MemberSelection* poolDatum = nullptr; ///< One of the two below, or one that the host gave.
    std::unique_ptr<MemberSelection> ownSelection;
    std::unique_ptr<MemberSelection> poolInstance; ///< Created when the pool that owns the property is compiled.
    std::vector<std::unique_ptr<MemberSelection>> sharedPoolInstances; ///< Former ones that others refer to.
    std::unique_ptr<InstanceStore<MemberSelection>> instances;         ///< Those of the members.
    Util::ShortID basePoolID;
    std::unique_ptr<Util::WeakSource<MemberSelectionProperty>> life; ///< Made when somebody watches.
};

} // namespace Gentra

#endif
