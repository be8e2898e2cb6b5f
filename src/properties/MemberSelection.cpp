// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/MemberSelection.h"

#include "MemberList.h"

#include "gentra/util/GlobalMessageManager.h"

// Upward: members are created and deleted by the base pool.
#include "gentra/pools/MemberPool.h"

#include <algorithm>
#include <cassert>
#include <functional>

namespace Gentra {

namespace {

/// The end of the list of every selection that has none. Nobody writes to it: there is no room.
constinit MemberListEnd noList;

} // namespace

MemberSelection::MemberSelection(MemberPool* newBasePool) : listEnd(&noList) {
    SetBasePool(newBasePool);
}

MemberSelection::MemberSelection(MemberSelection const& other)
    : basePool(other.basePool), memberVector(other.memberVector), listEnd(&noList),
      entries(other.entries != nullptr ? std::make_unique<MemberList>(*other.entries) : nullptr),
      recreationTimeStamp(other.recreationTimeStamp), activeMember(other.activeMember),
      changed(other.changed || other.listEnd->next != other.readUpTo) {
    if (entries != nullptr) {
        listEnd = entries.get();
        readUpTo = listEnd->next;
    }
}

MemberSelection& MemberSelection::operator=(MemberSelection const& other) {
    MemberSelection copy(other);
    basePool = copy.basePool;
    memberVector.swap(copy.memberVector);
    listEnd = copy.listEnd;
    readUpTo = copy.readUpTo;
    entries.swap(copy.entries);
    recreationTimeStamp = copy.recreationTimeStamp;
    activeMember = copy.activeMember;
    changed = copy.changed;
    return *this;
}

MemberSelection::~MemberSelection() = default;

void MemberSelection::SetBasePool(MemberPool* newBasePool) {
    basePool = newBasePool != nullptr ? newBasePool->GetWeakPtr() : Util::WeakPtr<MemberPool>();
}

Util::WeakPtr<MemberSelection> MemberSelection::Watch() {
    if (life == nullptr) {
        life = std::make_unique<Util::WeakSource<MemberSelection>>(this);
    }
    return Util::WeakPtr<MemberSelection>(*life);
}

MemberList& MemberSelection::List() {
    if (entries == nullptr) {
        entries = std::make_unique<MemberList>();
        listEnd = entries.get();
    }
    return *entries;
}

void MemberSelection::RecreateMemberVector() {
    std::size_t const count = Count();
    if (memberVector.capacity() < count) {
        // Doubling would waste up to half of a large population's vector.
        std::vector<Member> larger;
        larger.reserve(memberVector.empty() ? count : count + count / 16);
        memberVector.swap(larger);
    }
    memberVector.resize(count);
    List().Read(memberVector.data());
    readUpTo = listEnd->next;
    changed = false;
    ++recreationTimeStamp;
}

// The cursor.

/// Moves the cursor to the place that `move` finds, and makes the member there active; without a place there is none.
template<class Move>
bool MemberSelection::MoveCursor(Move const& move) {
    if (entries == nullptr) {
        activeMember = Member();
        return false;
    }
    entries->cursor = move(*entries);
    activeMember = entries->cursor.IsValid() ? entries->At(entries->cursor) : Member();
    return entries->cursor.IsValid();
}

bool MemberSelection::FirstMemberActive() const noexcept {
    return entries != nullptr && entries->cursor.IsValid() && entries->cursor == entries->First();
}

bool MemberSelection::ActivateFirstMember() {
    return MoveCursor([](MemberList const& members) { return members.First(); });
}

bool MemberSelection::ActivateLastMember() {
    return MoveCursor([](MemberList const& members) { return members.Last(); });
}

bool MemberSelection::ActivateNextMember() {
    MemberList::Place const next =
        entries != nullptr && entries->cursor.IsValid() ? entries->Next(entries->cursor) : MemberList::Place();
    if (!next.IsValid()) {
        return ActivateFirstMember();
    }
    MoveCursor([&](MemberList const&) { return next; });
    if (MemberPool* const pool = basePool) {
        pool->ActiveMember() = activeMember;
    }
    return true;
}

bool MemberSelection::ActivatePreviousMember() {
    return MoveCursor([](MemberList const& members) {
        MemberList::Place const previous =
            members.cursor.IsValid() ? members.Previous(members.cursor) : MemberList::Place();
        return previous.IsValid() ? previous : members.Last();
    });
}

void MemberSelection::ActivateMember(int index) {
    BringUpToDate();
    auto const position = static_cast<std::uint32_t>(index); // a negative index is beyond the end
    if (position < Count()) {
        MoveCursor([&](MemberList& members) { return members.AtPosition(position); });
    }
}

void MemberSelection::ClearActiveMember() noexcept {
    MoveCursor([](MemberList const&) { return MemberList::Place(); });
}

// Adding.

void MemberSelection::AddMembers(MemberPool& pool, std::vector<Member> const& members) {
    if (basePool.Get() == &pool) {
        AppendRange(members.data(), members.size());
    }
}

void MemberSelection::AppendRange(Member const* first, std::size_t count) {
    if (count > 0) {
        List().AppendRange(first, count);
    }
}

void MemberSelection::AppendWithRoom(Member member) {
    List().Append(member);
    changed = true;
}

/// Creates a member in the base pool and lets `take` list it; a member that is not taken, or that there is no memory to
/// list, goes again. Member::NIL for none.
template<class Take>
Member MemberSelection::ListNewMember(Take const& take) {
    MemberPool* const pool = basePool;
    Member const member = pool != nullptr ? pool->CreateNewMember() : Member();
    if (!member.IsValid()) {
        return member;
    }
    bool isListed = false;
    try {
        isListed = take(member);
    } catch (...) {
        pool->DeleteMember(member);
        throw;
    }
    if (!isListed) {
        pool->DeleteMember(member);
    }
    return isListed ? member : Member();
}

void MemberSelection::AddNewMember() {
    MemberPool* const pool = basePool;
    Member const member = ListNewMember([&](Member newMember) {
        if (basePool.Get() != pool) { // a construction behaviour has changed it
            return false;
        }
        Append(newMember);
        return true;
    });
    if (member.IsValid() && this != pool) {
        pool->AddMember(*pool, member);
    }
}

bool MemberSelection::InsertMemberAfterActiveMember(Member member) {
    return InsertAtCursor(member, true);
}

bool MemberSelection::InsertMemberBeforeActiveMember(Member member) {
    return InsertAtCursor(member, false);
}

bool MemberSelection::InsertNewMemberAfterActiveMember() {
    return InsertNewAtCursor(true);
}

bool MemberSelection::InsertNewMemberBeforeActiveMember() {
    return InsertNewAtCursor(false);
}

bool MemberSelection::InsertNewAtCursor(bool behind) {
    return ListNewMember([&](Member newMember) { return InsertAtCursor(newMember, behind); }).IsValid();
}

bool MemberSelection::InsertAtCursor(Member member, bool behind) {
    if (entries == nullptr || !entries->cursor.IsValid()) {
        return false;
    }
    entries->InsertAtCursor(member, behind);
    changed = true;
    return true;
}

void MemberSelection::ReportForeignPool(MemberPool& pool) const {
    MemberPool const* const own = basePool;
    GlobalMessageManager::OutputMessageOnce("Error : Can't add Member to MemberSelection. The Members "
                                            "BasePool is \"%s\" while the MemberSelections "
                                            "BasePool is \"%s\"",
                                            pool.GetName().c_str(), own != nullptr ? own->GetName().c_str() : "NULL");
}

// Removing.

/// Removes the entry that `find` names, if any, and returns its member.
template<class Find>
Member MemberSelection::Remove(Find const& find) {
    MemberList::Place const place = entries != nullptr ? find(*entries) : MemberList::Place();
    if (!place.IsValid()) {
        return Member();
    }
    bool const wasAtCursor = entries->cursor == place;
    Member const member = entries->Erase(place);
    changed = true;
    if (member == activeMember) {
        ActivateFirstMember();
    } else if (wasAtCursor) {
        // The host has overwritten the active member, which is its own: only the cursor moves on.
        entries->cursor = entries->First();
    }
    return member;
}

Member MemberSelection::RemoveActiveMember() {
    if (entries == nullptr || !entries->cursor.IsValid()) {
        return Member();
    }
    MemberList::Place const place = entries->cursor;
    if (Count() < 2) {
        ClearActiveMember();
    } else {
        ActivateNextMember();
    }
    assert(entries->cursor != place);
    changed = true;
    return entries->Erase(place);
}

Member MemberSelection::RemoveMemberByIndex(int index) {
    auto const position = static_cast<std::uint32_t>(index); // a negative index is beyond the end
    if (position >= Count()) {
        return Member();
    }
    return Remove([&](MemberList& members) { return members.AtPosition(position); });
}

void MemberSelection::RemoveMember(Member member) {
    Remove([&](MemberList& members) { return members.Find(member); });
}

void MemberSelection::RemoveMembers(std::vector<Member> const& members) {
    if (entries == nullptr) {
        return;
    }
    constexpr auto byRecord = [](Member a, Member b) { return std::less<>()(a.record, b.record); };
    std::vector<Member> sorted = members;
    std::sort(sorted.begin(), sorted.end(), byRecord);
    std::uint32_t const oldCount = Count();
    bool const hadCursor = entries->cursor.IsValid();
    bool activeWent = false;
    entries->EraseAll([&](Member member) {
        bool const goes = std::binary_search(sorted.begin(), sorted.end(), member, byRecord);
        activeWent = activeWent || (goes && member == activeMember);
        return goes;
    });
    changed = changed || Count() < oldCount;
    if (activeWent) {
        ActivateFirstMember();
    } else if (hadCursor && !entries->cursor.IsValid()) {
        entries->cursor = entries->First();
    }
}

Member MemberSelection::RemoveAnyMember() {
    return Remove([](MemberList const& members) { return members.Last(); });
}

void MemberSelection::SetMemberCount(int count) {
    int const wanted = std::max(count, 0);
    int const present = GetNumMembers();
    for (int missing = wanted - present; missing > 0; --missing) {
        AddNewMember();
    }
    for (int surplus = present - wanted; surplus > 0; --surplus) {
        RemoveAnyMember();
    }
}

void MemberSelection::Clear() noexcept {
    memberVector.clear();
    activeMember = Member();
    if (entries != nullptr) {
        entries->Clear();
    }
    readUpTo = listEnd->next;
    changed = false;
}

} // namespace Gentra
