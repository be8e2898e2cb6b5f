// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/MemberSelectionProperty.h"

#include "InstanceStore.h"

#include "gentra/properties/Datum.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/util/GlobalMessageManager.h"

// Upward: base pools are named by ID and looked up in the main context.
#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/pools/MemberPool.h"

namespace Gentra {

// NIL is defined with the other load-time statics, in LoadTimeStatics.cpp.

MemberSelectionProperty::MemberSelectionProperty() : MemberSelectionProperty("MemberSelection Property") {}

MemberSelectionProperty::MemberSelectionProperty(char const* newName)
    : MemberSelectionProperty(Util::String(newName)) {}

MemberSelectionProperty::MemberSelectionProperty(std::string const& newName)
    : ownSelection(std::make_unique<MemberSelection>(nullptr)),
      instances(std::make_unique<InstanceStore<MemberSelection>>()) {
    Init(newName);
}

MemberSelectionProperty::MemberSelectionProperty(MemberSelectionProperty const& other)
    : Property(other), ownSelection(std::make_unique<MemberSelection>(*other.ownSelection)),
      instances(std::make_unique<InstanceStore<MemberSelection>>()) {
    *this = other;
}

MemberSelectionProperty& MemberSelectionProperty::operator=(MemberSelectionProperty const& other) {
    if (this == &other) {
        return *this;
    }
    Property::operator=(other);
    basePoolID = other.basePoolID;
    // A selection that the source owns is copied, one that the host gave is shared.
    bool const sourceOwnsDatum = other.poolDatum != nullptr && (other.poolDatum == other.ownSelection.get() ||
                                                                other.poolDatum == other.poolInstance.get());
    *ownSelection = sourceOwnsDatum ? *other.poolDatum : *other.ownSelection;
    poolDatum = sourceOwnsDatum ? ownSelection.get() : other.poolDatum;
    return *this;
}

MemberSelectionProperty::~MemberSelectionProperty() = default;

void MemberSelectionProperty::Init(std::string const& newName) {
    name = newName;
    type = MEMBERSELECTION;
    poolDatum = ownSelection.get();
}

void* MemberSelectionProperty::GetPoolData() {
    return &poolDatum;
}

void MemberSelectionProperty::SetPoolData(void* data) {
    if (data != nullptr) {
        poolDatum = Datum::Read<MemberSelection*>(data);
    }
}

void MemberSelectionProperty::OnInstanceCreation(unsigned char* datum) {
    if (datum == nullptr) {
        return;
    }
    MemberSelection const* const previous = Datum::Read<MemberSelection*>(datum);
    MemberSelection const fresh(previous != nullptr ? previous->GetBasePool() : nullptr);
    if (datum != reinterpret_cast<unsigned char*>(&poolDatum)) {
        Datum::Write(datum, instances->Take(fresh));
        return;
    }
    // Once per build of the pool: the same object serves each time, so that nobody's pointer dangles.
    if (poolInstance == nullptr) {
        poolInstance = std::make_unique<MemberSelection>(fresh);
    } else {
        *poolInstance = fresh;
    }
    poolDatum = poolInstance.get();
}

void MemberSelectionProperty::OnInstanceDeletion(unsigned char* datum) {
    if (datum != nullptr) {
        instances->GiveBack(Datum::Read<MemberSelection*>(datum), MemberSelection(nullptr));
    }
}

void MemberSelectionProperty::TakeBackInstances() {
    instances->GiveBackAll(MemberSelection(nullptr));
}

int MemberSelectionProperty::GetDataSize() const {
    return sizeof(MemberSelection*);
}

PropertyType MemberSelectionProperty::GetPropertyType() {
    return MEMBERSELECTION;
}

void MemberSelectionProperty::SetBasePoolFromID() {
    MemberPool* const pool = ContextManager::GetMainContext().GetMemberPoolFromID(basePoolID);
    if (pool == nullptr) {
        GlobalMessageManager::OutputMessage("Error: MemberSelectionProperty '%s' could not set it's "
                                            "BasePool. Either it's not linked, or the link "
                                            "doesn't point to a MemberPool, or the MemberPool it points to "
                                            "is not yet loaded. In that case it will "
                                            "relink as sonn as the referenced Memberpool gets compiled",
                                            name.c_str());
    } else if (poolDatum != nullptr) {
        poolDatum->SetBasePool(pool);
    }
}

MemberPool* MemberSelectionProperty::GetBasePool() {
    return poolDatum != nullptr ? poolDatum->GetBasePool() : nullptr;
}

MemberSelection* MemberSelectionProperty::GetMemberSelection(MemberSelection& selection, int index) {
    void const* const datum = GetDataFromMemberSelection(selection, index);
    return datum != nullptr ? Datum::Read<MemberSelection*>(datum) : nullptr;
}

void MemberSelectionProperty::SetMemberSelection(MemberSelection* newSelection, MemberSelection& selection,
                                                 int index) {
    SetDataToMemberSelection(&newSelection, selection, index);
}

/// The selection of the owner pool's active member, else the one that readers of the pool data see.
MemberSelection& MemberSelectionProperty::SelectionInUse() {
    MemberPool* const pool = GetOwnerPool();
    if (owner == MEMBER && pool != nullptr) {
        if (MemberSelection* const selection = GetMemberSelection(*pool, -1)) {
            return *selection;
        }
    }
    return poolDatum != nullptr ? *poolDatum : *ownSelection;
}

void MemberSelectionProperty::ClearSelection() {
    SelectionInUse().Clear();
}

void MemberSelectionProperty::AddMemberToSelection(MemberPool& pool, Member member) {
    SelectionInUse().AddMember(pool, member);
}

} // namespace Gentra
