// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The members of a pool: their creation, their end, and where their data lie.

#include "gentra/pools/MemberPool.h"

#include "MemberPropertyTable.h"

#include "../util/FirstException.h"

#include "gentra/util/GlobalMessageManager.h"

#include <cstring>

namespace Gentra {

namespace {

/// Copies a datum; the common sizes without a call.
void CopyDatum(unsigned char* datum, void const* source, int size) {
    if (size == sizeof(float)) {
        std::memcpy(datum, source, sizeof(float));
    } else if (size == sizeof(Math::Vec3)) {
        std::memcpy(datum, source, sizeof(Math::Vec3));
    } else {
        std::memcpy(datum, source, static_cast<std::size_t>(size));
    }
}

/// Whether the property's data still have the size of their place: a host may have assigned another property to it.
bool KeepsItsSize(MemberPropertyTable::Place const& place) {
    return place.property->GetDataSize() == place.size;
}

/// Copies the default of a datum, or zero bytes where there is none of that size.
void CopyDefault(MemberPropertyTable::Place const& place, unsigned char* datum) {
    void const* const defaultData = KeepsItsSize(place) ? place.property->GetPoolData() : nullptr;
    if (defaultData != nullptr) {
        CopyDatum(datum, defaultData, place.size);
    } else {
        std::memset(datum, 0, static_cast<std::size_t>(place.size));
    }
}

} // namespace

Member MemberPool::CreateNewMember() {
    if (RefuseWhileClearing()) {
        return Member();
    }
    MemberRecordStorage::Place const place = memberProperties->TakeRecord();
    if (place == MemberRecordStorage::NOWHERE) {
        GlobalMessageManager::OutputMessageOnce("Creating Members without any properties");
        return Member();
    }
    Use const use(*this);
    MemberRecordStorage& records = *memberProperties->Records();
    unsigned char* const record = records.At(place);
    try {
        CreateData(record);
    } catch (...) {
        records.GiveBack(place);
        throw;
    }
    records.Use(place);
    if (memberConstructionBehaviours.empty()) {
        return Member(record);
    }
    Newborn created{record, newborn};
    Construct(created);
    return Member(created.record);
}

/// Gives a new member its data: of each property the default, and its instance work.
void MemberPool::CreateData(unsigned char* record) {
    std::vector<MemberPropertyTable::Place> const& places = memberProperties->Places();
    for (std::size_t i = 0; i < places.size(); ++i) {
        unsigned char* const datum = record + places[i].offset;
        if (places[i].plainDefault != nullptr) {
            CopyDatum(datum, places[i].plainDefault, places[i].size);
            continue;
        }
        CopyDefault(places[i], datum);
        if (!KeepsItsSize(places[i])) {
            continue;
        }
        try {
            places[i].property->OnInstanceCreation(datum);
        } catch (...) {
            Util::FirstException ignored; // the other one is on its way
            DeleteData(record, i, ignored);
            throw;
        }
    }
}

/// Lets the first `count` properties take back what they have created.
void MemberPool::DeleteData(unsigned char* record, std::size_t count, Util::FirstException& exception) noexcept {
    std::vector<MemberPropertyTable::Place> const& places = memberProperties->Places();
    for (std::size_t i = 0; i < count; ++i) {
        MemberPropertyTable::Place const& place = places[i];
        if (place.plainDefault == nullptr && KeepsItsSize(place)) {
            exception.During([&] { place.property->OnInstanceDeletion(record + place.offset); });
        }
    }
}

/// Runs the member-construction behaviours on a new member, which any of them may delete. When one throws it goes.
void MemberPool::Construct(Newborn& created) {
    try {
        std::vector<Member> newMembers(1, Member(created.record));
        newborn = &created;
        InitializeNewMembers(newMembers, created);
    } catch (...) {
        newborn = created.outer;
        Util::FirstException ignored;
        if (created.record != nullptr) {
            ignored.During([&] { DeleteMember(Member(created.record)); });
        }
        throw;
    }
    newborn = created.outer;
}

void MemberPool::DeleteMember(Member member) {
    if (!member.IsValid()) {
        return;
    }
    MemberRecordStorage* const records = memberProperties->Records();
    MemberRecordStorage::Place const place =
        records != nullptr ? records->FindInUse(member.record) : MemberRecordStorage::NOWHERE;
    if (place == MemberRecordStorage::NOWHERE) {
        GlobalMessageManager::OutputMessageOnce("Bug Report :: MemberPool :: The Pool \"%s\" was asked to delete a "
                                                "Member it does not have",
                                                name.c_str());
        return;
    }
    // From here on deleting it once more, from the host's instance deletion, is refused.
    records->Retire(place);
    for (Newborn* each = newborn; each != nullptr; each = each->outer) {
        each->record = each->record == member.record ? nullptr : each->record;
    }
    Use const use(*this);
    Util::FirstException exception;
    DeleteData(member.record, memberProperties->Places().size(), exception);
    records->GiveBack(place);
    exception.ThrowOn();
}

void MemberPool::RemoveAndDeleteMembers(std::vector<Member> const& members) {
    std::vector<Member> const leaving = members; // the host's vector may change while its code runs
    RemoveMembers(leaving);
    Util::FirstException exception;
    for (Member const member : leaving) {
        exception.During([&] { DeleteMember(member); });
    }
    exception.ThrowOn();
}

bool MemberPool::HasMember(Member member) const noexcept {
    MemberRecordStorage const* const records = memberProperties->Records();
    return records != nullptr && records->FindInUse(member.record) != MemberRecordStorage::NOWHERE;
}

unsigned char* MemberPool::GetDataFromMember(int memberIndex, int propertyIndex) {
    return GetDataFromMemberSelectionMember(*this, memberIndex, propertyIndex);
}

unsigned char* MemberPool::GetDataFromMemberSelectionMember(MemberSelection& selection, int memberIndex,
                                                            int propertyIndex) {
    Member const member = selection.GetMemberByIndex(memberIndex);
    auto const position = static_cast<std::size_t>(propertyIndex); // a negative index is beyond the end
    if (selection.GetBasePool() != this || !member.IsValid() ||
        position >= memberProperties->Properties().All().size()) {
        return nullptr;
    }
    return member.record + memberProperties->Places()[position].offset;
}

bool MemberPool::HasDatum(int offset, int size, PropertyType type) const noexcept {
    return memberProperties->HasDatum(offset, size, type);
}

int MemberPool::OffsetOf(Property const& property) const noexcept {
    if (clearing) {
        return -1;
    }
    for (MemberPropertyTable::Place const& place : memberProperties->Places()) {
        if (place.property == &property) {
            return place.offset;
        }
    }
    return -1;
}

} // namespace Gentra
