// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/MemberSelection.h"

#include "SelectionEdits.h"

#include "gentra/util/GlobalMessageManager.h"

// Upward: members are created and deleted by the base pool.
#include "gentra/pools/MemberPool.h"

#include <algorithm>

namespace Gentra {

namespace {

constexpr std::uint32_t NO_SLOT = SlotOrder::NONE;

/// Building the index of members costs about as much as looking at each member this many times.
constexpr std::size_t SEARCHES_PER_INDEX = 4;
/// Below this size a search is cheaper than any index.
constexpr std::size_t SMALLEST_INDEXED = 64;

} // namespace

MemberSelection::MemberSelection(MemberPool* newBasePool) {
    SetBasePool(newBasePool);
}

MemberSelection::MemberSelection(MemberSelection const& other)
    : basePool(other.basePool), memberVector(other.memberVector), appended(other.appended),
      edits(other.edited ? std::make_unique<SelectionEdits>(*other.edits) : nullptr), kept(other.kept),
      cursor(other.cursor), recreationTimeStamp(other.recreationTimeStamp), activeMember(other.activeMember),
      changed(other.changed), cursorValid(other.cursorValid), edited(other.edited) {}

MemberSelection& MemberSelection::operator=(MemberSelection const& other) {
    MemberSelection copy(other);
    basePool = copy.basePool;
    memberVector.swap(copy.memberVector);
    appended.swap(copy.appended);
    edits.swap(copy.edits);
    kept = copy.kept;
    cursor = copy.cursor;
    recreationTimeStamp = copy.recreationTimeStamp;
    activeMember = copy.activeMember;
    changed = copy.changed;
    cursorValid = copy.cursorValid;
    edited = copy.edited;
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

// The cursor.

bool MemberSelection::FirstMemberActive() const {
    return cursorValid && cursor == FirstSlot();
}

bool MemberSelection::ActivateFirstMember() {
    DropVanishedEntries();
    return ActivateSlot(FirstSlot());
}

bool MemberSelection::ActivateLastMember() {
    DropVanishedEntries();
    return ActivateSlot(LastSlot());
}

bool MemberSelection::ActivateNextMember() {
    DropVanishedEntries();
    Slot const next = cursorValid ? NextSlot(cursor) : NO_SLOT;
    if (next == NO_SLOT) {
        return ActivateFirstMember();
    }
    ActivateSlot(next);
    if (MemberPool* const pool = basePool) {
        pool->ActiveMember() = activeMember;
    }
    return true;
}

bool MemberSelection::ActivatePreviousMember() {
    DropVanishedEntries();
    Slot const previous = cursorValid ? PreviousSlot(cursor) : NO_SLOT;
    return previous != NO_SLOT ? ActivateSlot(previous) : ActivateLastMember();
}

void MemberSelection::ActivateMember(int index) {
    BringUpToDate();
    DropVanishedEntries();
    if (index >= 0 && static_cast<Slot>(index) < EntryCount()) {
        ActivateSlot(SlotAtIndex(static_cast<Slot>(index)));
    }
}

void MemberSelection::ClearActiveMember() noexcept {
    activeMember = Member();
    cursorValid = false;
}

/// Leaves the active member alone: it is the host's where it differs from the one at the cursor.
void MemberSelection::MoveCursorTo(Slot slot) noexcept {
    cursor = slot;
    cursorValid = slot != NO_SLOT;
}

/// Activates the slot, or clears the active member when there is none.
bool MemberSelection::ActivateSlot(Slot slot) noexcept {
    MoveCursorTo(slot);
    activeMember = cursorValid ? At(slot) : Member();
    return cursorValid;
}

// Adding.

void MemberSelection::AddMembers(MemberPool& pool, std::vector<Member> const& members) {
    if (basePool.Get() != &pool) {
        return;
    }
    AppendRange(members.data(), members.size());
}

void MemberSelection::AppendRangeEdited(Member const* first, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        Append(first[i]);
    }
}

/// Creates a member in the base pool and lets `list` take it; a member that it does not take, or that there is no
/// memory to list, goes again. Member::NIL for none.
template<class List>
Member MemberSelection::ListNewMember(List const& list) {
    MemberPool* const pool = basePool;
    Member const member = pool != nullptr ? pool->CreateNewMember() : Member();
    if (!member.IsValid()) {
        return member;
    }
    bool isListed = false;
    try {
        isListed = list(member);
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
        AddMember(*pool, newMember);
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
    DropVanishedEntries();
    if (!cursorValid) {
        return false;
    }
    if (behind && cursor == LastSlot()) {
        Append(member);
        return true;
    }
    BeginEdits();
    AddEdited(member, [&](SlotOrder& order) { behind ? order.InsertAfter(cursor) : order.InsertBefore(cursor); });
    return true;
}

void MemberSelection::AppendEdited(Member member) {
    DropVanishedEntries();
    if (!edited) { // any more
        Append(member);
        return;
    }
    AddEdited(member, [](SlotOrder& order) { order.Append(); });
}

/// Stores the member in a new slot and puts that into the order. If memory runs out nothing changes.
template<class AddToOrder>
void MemberSelection::AddEdited(Member member, AddToOrder const& addToOrder) {
    appended.push_back(member);
    try {
        addToOrder(edits->order);
    } catch (...) {
        appended.pop_back();
        throw;
    }
    if (edits->index.IsBuilt()) {
        try {
            edits->index.Add(SlotCount() - 1, member, edits->order, [this](Slot slot) { return At(slot); });
        } catch (...) {
            edits->index.Drop(); // it only saves searching
        }
    }
}

void MemberSelection::ReportForeignPool(MemberPool& pool) const {
    MemberPool const* const own = basePool;
    GlobalMessageManager::OutputMessageOnce("Error : Can't add Member to MemberSelection. The Members "
                                            "BasePool is \"%s\" while the MemberSelections "
                                            "BasePool is \"%s\"",
                                            pool.GetName().c_str(), own != nullptr ? own->GetName().c_str() : "NULL");
}

// Removing.

Member MemberSelection::RemoveActiveMember() {
    DropVanishedEntries();
    if (!cursorValid) {
        return Member();
    }
    Slot const removed = cursor;
    Member const member = At(removed);
    if (EntryCount() < 2) {
        ClearActiveMember();
    } else {
        ActivateNextMember();
    }
    EraseSlot(removed);
    return member;
}

Member MemberSelection::RemoveMemberByIndex(int index) {
    DropVanishedEntries();
    if (index < 0 || static_cast<Slot>(index) >= EntryCount()) {
        return Member();
    }
    return RemoveSlot(SlotAtIndex(static_cast<Slot>(index)));
}

void MemberSelection::RemoveMember(Member member) {
    DropVanishedEntries();
    Slot const slot = FindFirst(member);
    if (slot != NO_SLOT) {
        RemoveSlot(slot);
    }
}

Member MemberSelection::RemoveAnyMember() {
    DropVanishedEntries();
    return EntryCount() > 0 ? RemoveSlot(LastSlot()) : Member();
}

Member MemberSelection::RemoveSlot(Slot slot) {
    Member const member = At(slot);
    EraseSlot(slot);
    if (member == activeMember) {
        ActivateFirstMember();
    } else if (cursorValid && cursor == slot) {
        // The host has overwritten the active member: the cursor must not stay on an entry that has gone.
        MoveCursorTo(FirstSlot());
    }
    return member;
}

void MemberSelection::EraseSlot(Slot slot) {
    if (!edited && slot + 1 == SlotCount()) {
        // The end of the list comes off without further ado; the vector stays as it was read.
        if (!appended.empty()) {
            appended.pop_back();
        } else {
            --kept;
        }
    } else {
        BeginEdits();
        edits->order.Erase(slot);
    }
    changed = true;
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

void MemberSelection::Clear() {
    memberVector.clear();
    appended.clear();
    // The first members to come are appended: let them find the memory that is there.
    if (appended.capacity() < memberVector.capacity()) {
        appended.swap(memberVector);
    }
    edited = false;
    kept = 0;
    changed = false;
    ClearActiveMember();
}

// The list behind it.

SelectionEdits& MemberSelection::Edits() {
    if (edits == nullptr) {
        edits = std::make_unique<SelectionEdits>();
    }
    return *edits;
}

void MemberSelection::BeginEdits() {
    if (edited) {
        return;
    }
    Edits().order.Start(SlotCount());
    edits->index.Drop();
    edited = true;
}

/// A host that shrinks the vector it was given takes entries out of the list; nothing may be read where they
/// were. What is left becomes the appended entries of an empty vector, so that the vector itself, which
/// somebody may be walking, stays as the host made it.
void MemberSelection::DropVanishedEntries() {
    if (memberVector.size() >= kept) {
        return;
    }
    std::vector<Member> left;
    left.reserve(SlotCount());
    Slot newCursor = NO_SLOT;
    for (Slot slot = FirstSlot(); slot != NO_SLOT; slot = NextSlot(slot)) {
        if (slot >= kept || slot < memberVector.size()) {
            newCursor = slot == cursor ? static_cast<Slot>(left.size()) : newCursor;
            left.push_back(At(slot));
        }
    }
    appended.swap(left);
    kept = 0;
    edited = false;
    changed = true;
    if (cursorValid && newCursor == NO_SLOT) {
        ActivateSlot(FirstSlot());
    } else if (cursorValid) {
        MoveCursorTo(newCursor);
    }
}

void MemberSelection::ForgetIndex() noexcept {
    edits->index.Drop();
}

MemberSelection::Slot MemberSelection::EditedCount() const noexcept {
    return edits->order.Count();
}

MemberSelection::Slot MemberSelection::FirstSlot() const noexcept {
    if (edited) {
        return edits->order.First();
    }
    return EntryCount() > 0 ? 0 : NO_SLOT;
}

MemberSelection::Slot MemberSelection::LastSlot() const noexcept {
    if (edited) {
        return edits->order.Last();
    }
    return EntryCount() > 0 ? EntryCount() - 1 : NO_SLOT;
}

MemberSelection::Slot MemberSelection::NextSlot(Slot slot) const noexcept {
    if (edited) {
        return edits->order.Next(slot);
    }
    return slot + 1 < EntryCount() ? slot + 1 : NO_SLOT;
}

MemberSelection::Slot MemberSelection::PreviousSlot(Slot slot) const noexcept {
    if (edited) {
        return edits->order.Previous(slot);
    }
    return slot > 0 ? slot - 1 : NO_SLOT;
}

MemberSelection::Slot MemberSelection::SlotAtIndex(Slot index) {
    return edited ? edits->order.AtPosition(index) : index;
}

MemberSelection::Slot MemberSelection::FindFirst(Member member) {
    auto const memberAt = [this](Slot slot) { return At(slot); };
    std::size_t& searched = Edits().searched;
    if (edited && edits->index.IsBuilt()) {
        return edits->index.Find(member, edits->order, memberAt);
    }
    if (EntryCount() >= SMALLEST_INDEXED && searched >= SEARCHES_PER_INDEX * EntryCount()) {
        BeginEdits();
        edits->index.Build(edits->order, memberAt);
        searched = 0;
        return edits->index.Find(member, edits->order, memberAt);
    }
    if (edited && !edits->order.IsAscending()) {
        Slot slot = FirstSlot();
        while (slot != NO_SLOT && At(slot) != member) {
            ++searched;
            slot = NextSlot(slot);
        }
        return slot;
    }
    // In ascending order the two vectors are searched straight through; only a hit need not be a member any
    // more.
    auto const searchIn = [&](std::vector<Member> const& entries, Slot count, Slot firstSlot) {
        for (Slot i = 0; i < count; ++i) {
            auto const from = entries.begin() + static_cast<std::ptrdiff_t>(i);
            auto const end = entries.begin() + static_cast<std::ptrdiff_t>(count);
            auto const found = std::find(from, end, member);
            searched += static_cast<std::size_t>(found - from);
            i = static_cast<Slot>(found - entries.begin());
            if (i < count && (!edited || edits->order.IsLive(firstSlot + i))) {
                return firstSlot + i;
            }
        }
        return NO_SLOT;
    };
    Slot const inVector = searchIn(memberVector, kept, 0);
    return inVector != NO_SLOT ? inVector : searchIn(appended, static_cast<Slot>(appended.size()), kept);
}

void MemberSelection::RecreateMemberVector() {
    DropVanishedEntries();
    if (edited) {
        TakeOverEdits();
    } else {
        TakeOverAppended();
    }
    kept = static_cast<Slot>(memberVector.size());
    if (edits != nullptr) {
        edits->searched = 0;
    }
    ++recreationTimeStamp;
    changed = false;
}

void MemberSelection::TakeOverAppended() {
    memberVector.resize(kept);
    if (kept == 0) {
        memberVector.swap(appended);
        return;
    }
    std::size_t const count = SlotCount();
    if (memberVector.capacity() < count) {
        // Doubling would waste up to half of a large population's vector.
        memberVector.reserve(count + count / 8);
    }
    memberVector.insert(memberVector.end(), appended.begin(), appended.end());
    appended.clear();
}

void MemberSelection::TakeOverEdits() {
    SlotOrder const& order = edits->order;
    bool const inPlace = order.IsAscending(); // then no entry is overwritten before it is read
    std::vector<Member> ordered;
    std::vector<Member>& target = inPlace ? memberVector : ordered;
    Slot const oldKept = kept;
    std::size_t const room = std::max<std::size_t>(EntryCount(), inPlace ? oldKept : 0);
    if (target.capacity() < room) {
        target.reserve(room);
    }
    target.resize(room);

    Slot position = 0;
    Slot newCursor = NO_SLOT;
    for (Slot slot = order.First(); slot != NO_SLOT; slot = order.Next(slot)) {
        if (slot == cursor) {
            newCursor = position;
        }
        target[position++] = slot < oldKept ? memberVector[slot] : appended[slot - oldKept];
    }
    target.resize(position);
    if (!inPlace) {
        memberVector.swap(ordered);
    }
    appended.clear();
    edited = false;
    if (cursorValid) {
        MoveCursorTo(newCursor);
    }
}

} // namespace Gentra
