// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/Property.h"

#include "gentra/properties/MemberSelection.h"

// Upward: a member property's datum lies in a record of its pool.
#include "gentra/pools/MemberPool.h"

#include <cstring>

namespace Gentra {

// NIL, NO_NAME and EVENT are defined with the other load-time statics, in LoadTimeStatics.cpp.

Property::Property() : Property(NO_NAME) {}

Property::Property(Util::String const& newName) {
    owner = FLEXIBLE;
    name = newName;
    property = this;
}

Property::Property(Property const& other) : Parameter(other), ownerPool(other.ownerPool), propertyID(other.propertyID) {
    property = this;
}

Property& Property::operator=(Property const& other) {
    Parameter::operator=(other);
    ownerPool = other.ownerPool;
    propertyID = other.propertyID;
    property = this;
    return *this;
}

unsigned char* Property::FindMemberDatum(MemberSelection& selection, int index) {
    Member const member = index >= 0 ? selection.GetMemberByIndex(index) : selection.ActiveMember();
    if (!member.IsValid() || dataOffset < 0) {
        return nullptr;
    }
    // The property may be of an earlier layout, or of another pool than the selection.
    MemberPool const* const pool = selection.GetBasePool();
    if (pool != nullptr && !pool->HasDatum(dataOffset, GetDataSize(), GetPropertyType())) {
        return nullptr;
    }
    return member.record + dataOffset;
}

void const* Property::GetDataFromMemberSelection(MemberSelection& selection, int index) {
    return owner == MEMBER ? FindMemberDatum(selection, index) : GetPoolData();
}

void Property::SetDataToMemberSelection(void* data, MemberSelection& selection, int index) {
    if (owner != MEMBER) {
        SetPoolData(data);
        return;
    }
    unsigned char* const datum = FindMemberDatum(selection, index);
    if (datum != nullptr && data != nullptr) {
        std::memmove(datum, data, static_cast<std::size_t>(GetDataSize()));
    }
}

void* Property::GetPoolData() {
    return nullptr;
}

void Property::SetPoolData(void*) {}

void Property::OnInstanceCreation(unsigned char*) {}

void Property::OnInstanceDeletion(unsigned char*) {}

int Property::GetDataSize() const {
    return 0;
}

PropertyType Property::GetPropertyType() {
    return UNDEFINED;
}

void Property::Update() {}

void const* Property::GetData() {
    if (MemberPool* const pool = ownerPool) {
        return GetDataFromMemberSelection(*pool, -1);
    }
    return owner != MEMBER ? GetPoolData() : nullptr;
}

void Property::SetData(void* data) {
    if (MemberPool* const pool = ownerPool) {
        SetDataToMemberSelection(data, *pool, -1);
    } else if (owner != MEMBER) {
        SetPoolData(data);
    }
}

void Property::SetOwnerPool(MemberPool* pool) {
    MemberPool const* const former = ownerPool;
    takenOver = takenOver || (former != nullptr && pool != nullptr && former != pool);
    ownerPool = pool != nullptr ? pool->GetWeakPtr() : Util::WeakPtr<MemberPool>();
}

bool Property::HasPlaceInRecords() const noexcept {
    return takenOver || (owner == MEMBER && ownerPool.Get() != nullptr);
}

bool Property::ContainsValidData() {
    if (owner != MEMBER) {
        return true;
    }
    MemberPool* const pool = ownerPool;
    return pool != nullptr && pool->IsActiveMemberValid();
}

Util::RefCountPtr<Property> const&
Property::GetIntrinsicPropertyFromName(std::vector<Util::RefCountPtr<Property>> const& properties,
                                       Util::String const& name) {
    for (Util::RefCountPtr<Property> const& candidate : properties) {
        if (candidate.Get() != nullptr && candidate->IsIntrinsic() && candidate->GetName() == name) {
            return candidate;
        }
    }
    return NIL;
}

/// Puts the property back to belonging to no pool, unless another pool has adopted it meanwhile. Its offset
/// means nothing in a later layout.
void Property::LeavePool(MemberPool const& pool) {
    if (ownerPool.Get() != &pool) {
        return;
    }
    ownerPool = Util::WeakPtr<MemberPool>();
    owner = FLEXIBLE;
    dataOffset = -1;
    // The members of a pool that it was taken from still point at their instances.
    if (!takenOver && takeBackInstances != nullptr) {
        takeBackInstances(*this);
    }
}

} // namespace Gentra
