// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/MemberSelectionProperty.h"

#include "InstanceStore.h"

#include "gentra/properties/Datum.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/util/GlobalMessageManager.h"

// Upward: base pools are named by ID and looked up in the main context.
#include "gentra/pools/MemberPool.h"

namespace Gentra {

// NIL is defined with the other load-time statics, in LoadTimeStatics.cpp.

MemberSelectionProperty::MemberSelectionProperty() : MemberSelectionProperty("MemberSelection Property") {}

MemberSelectionProperty::MemberSelectionProperty(char const* newName)
    : MemberSelectionProperty(Util::String(newName)) {}

MemberSelectionProperty::MemberSelectionProperty(std::string const& newName)
    : ownSelection(std::make_unique<MemberSelection>(nullptr)),
      instances(std::make_unique<InstanceStore<MemberSelection>>()) {
    takeBackInstances = &TakeBackInstances;
    Init(newName);
}

MemberSelectionProperty::MemberSelectionProperty(MemberSelectionProperty const& other)
    : Property(other), ownSelection(std::make_unique<MemberSelection>(*other.ownSelection)),
      instances(std::make_unique<InstanceStore<MemberSelection>>()) {
    takeBackInstances = &TakeBackInstances;
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
        Share(poolDatum, &poolDatum);
    }
}

void MemberSelectionProperty::SetDataToMemberSelection(void* data, MemberSelection& selection, int index) {
    void const* const datum = GetDataFromMemberSelection(selection, index);
    if (data != nullptr && datum != nullptr) {
        Share(Datum::Read<MemberSelection*>(data), datum);
    }
    Property::SetDataToMemberSelection(data, selection, index);
}

/// A selection that was made for one datum and is stored in another as well must not be emptied with the first.
void MemberSelectionProperty::Share(MemberSelection* selection, void const* datum) {
    bool const isItsOwn =
        datum == &poolDatum ? selection == poolInstance.get() : instances->WasMadeFor(selection, datum);
    if (selection != nullptr && !isItsOwn) {
        selection->shared = true;
    }
}

Util::WeakPtr<MemberSelectionProperty> MemberSelectionProperty::Watch() {
    if (life == nullptr) {
        life = std::make_unique<Util::WeakSource<MemberSelectionProperty>>(this);
    }
    return Util::WeakPtr<MemberSelectionProperty>(*life);
}

/// Makes a selection as good as new, but for the time stamp: whoever kept the old one shall not find it
/// current. Whoever watches it sees its end.
void MemberSelectionProperty::Renew(MemberSelection& selection, MemberPool* basePool) {
    selection.Clear();
    selection.SetBasePool(basePool);
    selection.life.reset();
    selection.shared = false;
    ++selection.recreationTimeStamp;
}

void MemberSelectionProperty::OnInstanceCreation(unsigned char* datum) {
    if (datum == nullptr) {
        return;
    }
    MemberSelection const* const previous = Datum::Read<MemberSelection*>(datum);
    MemberPool* const basePool = previous != nullptr ? previous->GetBasePool() : nullptr;
    if (datum != reinterpret_cast<unsigned char*>(&poolDatum)) {
        MemberSelection* const instance =
            instances->Take(datum, [] { return std::make_unique<MemberSelection>(nullptr); });
        instance->SetBasePool(basePool);
        Datum::Write(datum, instance);
        return;
    }
    // Once per build of the pool: the same object serves each time, so that nobody's pointer dangles.
    if (poolInstance != nullptr && poolInstance->shared) {
        sharedPoolInstances.push_back(nullptr);
        sharedPoolInstances.back().swap(poolInstance);
    }
    if (poolInstance == nullptr) {
        poolInstance = std::make_unique<MemberSelection>(basePool);
    } else {
        Renew(*poolInstance, basePool);
    }
    poolDatum = poolInstance.get();
}

void MemberSelectionProperty::OnInstanceDeletion(unsigned char* datum) {
    MemberSelection* const selection = datum != nullptr ? Datum::Read<MemberSelection*>(datum) : nullptr;
    if (selection != nullptr && instances->WasMadeFor(selection, datum) && !selection->shared) {
        instances->GiveBack(selection, [](MemberSelection& each) { Renew(each, nullptr); });
    }
}

void MemberSelectionProperty::TakeBackInstances(Property& property) {
    static_cast<MemberSelectionProperty&>(property).instances->GiveBackAll(
        [](MemberSelection& selection) { Renew(selection, nullptr); },
        [](MemberSelection const& selection) { return selection.shared; });
}

int MemberSelectionProperty::GetDataSize() const {
    return sizeof(MemberSelection*);
}

PropertyType MemberSelectionProperty::GetPropertyType() {
    return MEMBERSELECTION;
}

void MemberSelectionProperty::SetBasePoolFromID() {
    MemberPool* const pool = MemberPool::Find(basePoolID);
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

void MemberSelectionProperty::SetMemberSelection(MemberSelection* newSelection, MemberSelection& selection, int index) {
    SetDataToMemberSelection(&newSelection, selection, index);
}

/// The selection of the owner pool's active member, or null.
MemberSelection* MemberSelectionProperty::ActiveMembersSelection() {
    MemberPool* const pool = GetOwnerPool();
    return owner == MEMBER && pool != nullptr ? GetMemberSelection(*pool, -1) : nullptr;
}

/// The selection to work on where there is none of a member: for a property that is not a member property the
/// one that readers of the pool data see.
MemberSelection& MemberSelectionProperty::FallbackSelection() {
    return owner != MEMBER && poolDatum != nullptr ? *poolDatum : *ownSelection;
}

void MemberSelectionProperty::ClearSelection() {
    MemberSelection* const selection = ActiveMembersSelection();
    (selection != nullptr ? *selection : FallbackSelection()).Clear();
}

void MemberSelectionProperty::AddMemberToSelection(MemberPool& pool, Member member) {
    MemberSelection* const selection = poolDatum != nullptr ? ActiveMembersSelection() : nullptr;
    (selection != nullptr ? *selection : FallbackSelection()).AddMember(pool, member);
}

} // namespace Gentra
