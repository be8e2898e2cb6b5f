// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_PROPERTY_H
#define GENTRA_PROPERTIES_PROPERTY_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Parameter.h"
#include "gentra/util/EventType.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/WeakPtr.h"

#include <vector>

namespace Gentra {

class MemberPool;
class MemberSelection;

/// A named, typed slot of data of a member pool: one datum per member, or one for the whole pool.
///
/// The base class has no data; seven subclasses give the datum its type. Properties are held through
/// Util::RefCountPtr. A property starts in no pool (owner FLEXIBLE); MemberPool::AddMemberProperty or
/// AddPoolProperty adopts it, and it is in no pool again once that pool has been cleared or destroyed.
///
/// A copy is a property of its own with the same description, ID and owner pool, and with data of its own. It
/// is in no table of the pool.
class GENTRA_EXPORT Property : public Parameter {
public:
    /// The answer of every operation that finds no property; compare by pointer. Adding it to a pool does
    /// nothing.
    static Util::RefCountPtr<Property> const& NIL;
    /// "None", the name of a base property made without one.
    static Util::String const& NO_NAME;
    /// Root type of the events by which properties enter (`param1` 0) and leave (`param1` 1) a pool. The
    /// `subIndex` is the pool's identity value (MemberPool::GetIdentityValue), the `subject` a
    /// `Util::RefCountPtr<Property>*`.
    static Util::EventType const& EVENT;

    /// A property named "None" with a fresh ID, in no pool.
    Property();
    /// The same under that name.
    explicit Property(Util::String const& newName);
    /// @{
    /// Copies the description, the ID and the owner pool. No table or context lists the result anew.
    Property(Property const& other);
    Property& operator=(Property const& other);
    /// @}

    // Virtual operations in slot order; compiled plug-ins depend on it. There is no virtual destructor:
    // Util::RefCountPtr destroys a property as what it was created as.

    /// The address of the datum: the pool data, or for a member property the datum in the record of the
    /// member at `index` (below 0: of the active member) of `selection`. Null when there is no such member,
    /// or when its pool's records do not reach as far as this property. The address may be unaligned.
    virtual void const* GetDataFromMemberSelection(MemberSelection& selection, int index);
    /// Copies a datum of the property's type from `data` to where the operation above finds it; does nothing
    /// where that is null.
    virtual void SetDataToMemberSelection(void* data, MemberSelection& selection, int index);
    /// The address of the pool data, which is also what a new member's datum starts as; null for none.
    virtual void* GetPoolData();
    /// Sets the pool data from a datum at `data`; a null `data` is ignored.
    virtual void SetPoolData(void* data);
    /// Called when a member is created and its datum holds a copy of the pool data; for a pool property when
    /// its pool is compiled, on the pool data.
    virtual void OnInstanceCreation(unsigned char* datum);
    /// Called when a member is deleted.
    virtual void OnInstanceDeletion(unsigned char* datum);
    /// Size of the datum in bytes.
    virtual int GetDataSize() const;
    /// The type of the class, whatever the field `type` says.
    virtual PropertyType GetPropertyType();
    /// Called while the property is in no pool, before a behaviour that is linked to it runs over members: in frames,
    /// and when it is applied to all or to a selection; not when it is applied to the active member or triggered on
    /// it, nor before a construction behaviour.
    virtual void Update();

    /// GetDataFromMemberSelection() of the owner pool's active member; null for a member property without a
    /// pool.
    void const* GetData();
    /// SetDataToMemberSelection() likewise.
    void SetData(void* data);

    /// The pool that the property is in, or null.
    [[nodiscard]] MemberPool* GetOwnerPool() const noexcept { return ownerPool.Get(); }
    /// Null for none. The pool calls it when it adopts the property; it changes no table of a pool.
    void SetOwnerPool(MemberPool* pool);
    /// Random until SetPropertyID().
    [[nodiscard]] Util::ShortID GetPropertyID() const noexcept { return propertyID; }
    /// Replaces the ID. Tables and contexts that hold the property keep it under the former one.
    void SetPropertyID(Util::ShortID id) noexcept { propertyID = id; }

    /// Whether there is a datum to read: true but for a member property without a valid active member.
    [[nodiscard]] bool ContainsValidData();

    /// The first property of the list that is intrinsic and named exactly `name`; NIL when there is none.
    [[nodiscard]] static Util::RefCountPtr<Property> const&
    GetIntrinsicPropertyFromName(std::vector<Util::RefCountPtr<Property>> const& properties, Util::String const& name);

protected:
    /// Whether a record layout counts on the size of the datum.
    [[nodiscard]] bool HasPlaceInRecords() const noexcept;

    /// What takes back the objects that a property has created for members, or null when it creates none. A class sets
    /// it when it constructs a property.
    void (*takeBackInstances)(Property& property) = nullptr;

private:
    friend class MemberPropertyTable;
    friend class PropertyTable;

    [[nodiscard]] unsigned char* FindMemberDatum(MemberSelection& selection, int index);
    void LeavePool(MemberPool const& pool);

    Util::WeakPtr<MemberPool> ownerPool;
    Util::ShortID propertyID;
    bool takenOver = false; ///< Whether a pool has adopted it while it was in another one.
};

} // namespace Gentra

#endif
