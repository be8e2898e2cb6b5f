// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_MEMBERSELECTION_H
#define GENTRA_PROPERTIES_MEMBERSELECTION_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Member.h"
#include "gentra/util/WeakPtr.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Gentra {

class MemberList;
class MemberPool;

/// The open end of the list of a selection, where members are appended without a call.
struct MemberListEnd {
    Member* first = nullptr;  ///< Where the last piece of the list begins, null without one,
    Member* next = nullptr;   ///< where the next member goes,
    Member* limit = nullptr;  ///< and where that is no longer so simple.
    std::uint32_t before = 0; ///< How many members there are in the other pieces.
};

/// An ordered list of members of one pool, the base pool, with a cursor on one active member.
///
/// Members may occur more than once. A vector of them is made on demand: any number of changes costs one rebuild, and
/// each rebuild raises the recreation time stamp. The vector is a copy. Until the next rebuild it stays as it was read,
/// so a caller may walk it while members come and go; and what a caller does to it lasts as long and changes nobody's
/// list.
///
/// Appending costs what it costs a vector. Removing and inserting at the cursor, by value or at the end costs the same
/// for any number of members, by index it grows with the logarithm. (Members that occur more than once may cost more.)
/// A cleared selection keeps its memory and is refilled without allocating.
///
/// While the cursor is valid, the active member is the one at the cursor. ActivateNextMember() and
/// ActivatePreviousMember() wrap around, so a walk ends when FirstMemberActive() is true again.
///
/// A selection never owns members: those that are removed stay alive (deleting is MemberPool::DeleteMember). When its
/// base pool is destroyed it has no base pool any more, and the members in it must not be used.
class GENTRA_EXPORT MemberSelection {
public:
    /// An empty selection of members of `newBasePool`, which may be null.
    explicit MemberSelection(MemberPool* newBasePool);

    /// @{
    /// The copy holds the same members in the same order, with its cursor at the same place.
    MemberSelection(MemberSelection const& other);
    MemberSelection& operator=(MemberSelection const& other);
    /// @}
    ~MemberSelection();

    /// The pool of the members, or null.
    [[nodiscard]] MemberPool* GetBasePool() const noexcept { return basePool.Get(); }

    // Queries.

    /// The length of the list. Does not rebuild.
    [[nodiscard]] int GetNumMembers() const noexcept { return static_cast<int>(Count()); }

    /// A vector of all members in order. The reference stays valid as long as the selection; its contents change at the
    /// next rebuild (any reading operation after a change) and at Clear(). What a caller does to the vector changes no
    /// list, but until then all see it who read the vector: GetMemberByIndex(), behaviours that run over it,
    /// organizers, copies. To sort or prune, take a copy.
    std::vector<Member>& GetAllMembers() {
        BringUpToDate();
        return memberVector;
    }

    /// The member at `index` of the vector, counted from 0, or Member::NIL when there is none.
    [[nodiscard]] Member GetMemberByIndex(int index) {
        BringUpToDate();
        auto const position = static_cast<std::size_t>(index); // a negative index is beyond the end
        return position < memberVector.size() ? memberVector[position] : Member();
    }

    /// Whether the vector, brought up to date, is still the one of that stamp.
    [[nodiscard]] bool IsTimeStampUpToDate(unsigned int stamp) {
        BringUpToDate();
        return stamp == recreationTimeStamp;
    }

    /// The number of rebuilds so far (wraps at 2^32), without rebuilding.
    [[nodiscard]] unsigned int GetLastRecreationTimeStamp() const noexcept { return recreationTimeStamp; }

    // The cursor.

    /// The active member, or Member::NIL. Callers may overwrite it; the cursor stays where it is.
    [[nodiscard]] Member& ActiveMember() noexcept { return activeMember; }
    /// Whether ActiveMember() is not Member::NIL.
    [[nodiscard]] bool IsActiveMemberValid() const noexcept { return activeMember.IsValid(); }
    /// Whether the cursor stands at the first member; false without a valid cursor.
    [[nodiscard]] bool FirstMemberActive() const noexcept;

    /// Activates the first member; on an empty selection clears the active member and returns false.
    bool ActivateFirstMember();
    /// Activates the last member, likewise.
    bool ActivateLastMember();
    /// Activates the next member, from the last or without a valid cursor the first one. Moving one step
    /// forward also makes the member the active one of the base pool; no other operation does that.
    bool ActivateNextMember();
    /// Activates the previous member, from the first or without a valid cursor the last one.
    bool ActivatePreviousMember();
    /// Activates the member at `index` counted from 0; out of range nothing changes.
    void ActivateMember(int index);
    /// Leaves no member active and the cursor not valid.
    void ClearActiveMember() noexcept;

    // Adding.

    /// Appends a member of `pool`. When that is not the base pool nothing is added, and logged once:
    /// "Error : Can't add Member to MemberSelection. The Members BasePool is \"%s\" while the
    /// MemberSelections BasePool is \"%s\"".
    void AddMember(MemberPool& pool, Member member) {
        if (basePool.Get() != &pool) {
            ReportForeignPool(pool);
            return;
        }
        Append(member);
    }

    /// Appends members of `pool` in vector order; when that is not the base pool does nothing, silently.
    void AddMembers(MemberPool& pool, std::vector<Member> const& members);

    /// Creates a member in the base pool and appends it here and, when this is not the pool itself, to the
    /// pool. Does nothing without a base pool or when the pool yields no member.
    void AddNewMember();

    /// @{
    /// Inserts a member, of whatever pool, right behind or before the cursor; false without a valid cursor.
    /// The cursor and the active member stay.
    bool InsertMemberAfterActiveMember(Member member);
    bool InsertMemberBeforeActiveMember(Member member);
    /// @}

    /// @{
    /// Creates a member in the base pool and inserts it in this selection only. False without
    /// a base pool or a new member; without a valid cursor the new member is deleted again, and the result is false.
    bool InsertNewMemberAfterActiveMember();
    bool InsertNewMemberBeforeActiveMember();
    /// @}

    // Removing.

    /// Removes the member at the cursor, which moves on as by ActivateNextMember(), and returns it;
    /// Member::NIL without a valid cursor. Removing the only member leaves none active.
    Member RemoveActiveMember();
    /// Removes and returns the member at `index`; Member::NIL out of range. If it was the active one, the
    /// first member becomes active.
    Member RemoveMemberByIndex(int index);
    /// Removes the first entry equal to `member`, if any. If it was the active one, the first member becomes
    /// active.
    void RemoveMember(Member member);
    /// Removes every entry of each of the members, in one go. If the active one was among them, the first member
    /// becomes active.
    void RemoveMembers(std::vector<Member> const& members);
    /// Removes and returns the last member; Member::NIL on an empty selection. If it was the active one, the
    /// first member becomes active.
    Member RemoveAnyMember();
    /// Adds new members (AddNewMember) or removes members from the end until there are `count`; negative
    /// counts as 0.
    void SetMemberCount(int count);
    /// Empties the selection and clears the active member; the time stamp stays.
    void Clear() noexcept;

protected:
    /// Null for none. What is listed stays.
    void SetBasePool(MemberPool* newBasePool);

    /// Rebuilds the vector and raises the time stamp.
    void RecreateMemberVector();

private:
    friend class GridOrganizer;
    friend class MemberSelectionProperty;
    friend class SpatialOrganizer;
    friend struct Validator; // of the tests

    /// A pointer that becomes null when the selection is destroyed or given to another owner.
    [[nodiscard]] Util::WeakPtr<MemberSelection> Watch();

    /// Appends `count` members of the base pool.
    void AppendRange(Member const* first, std::size_t count);

    [[nodiscard]] std::uint32_t Count() const noexcept {
        return listEnd->before + static_cast<std::uint32_t>(listEnd->next - listEnd->first);
    }

    void BringUpToDate() {
        if (changed || listEnd->next != readUpTo) {
            RecreateMemberVector();
        }
    }

    void Append(Member member) {
        if (listEnd->next != listEnd->limit) {
            *listEnd->next++ = member;
        } else {
            AppendWithRoom(member);
        }
    }
    void AppendWithRoom(Member member);

    void ReportForeignPool(MemberPool& pool) const;
    MemberList& List();
    template<class Move>
    bool MoveCursor(Move const& move);
    bool InsertAtCursor(Member member, bool behind);
    template<class Take>
    Member ListNewMember(Take const& take);
    bool InsertNewAtCursor(bool behind);
    template<class Find>
    Member Remove(Find const& find);

    Util::WeakPtr<MemberPool> basePool;
    std::vector<Member> memberVector;    ///< As of the last rebuild.
    MemberListEnd* listEnd;              ///< Of `entries`; without one of a list that is always empty.
    Member const* readUpTo = nullptr;    ///< Where the end was at the last rebuild.
    std::unique_ptr<MemberList> entries; ///< Made for the first member.
    std::unique_ptr<Util::WeakSource<MemberSelection>> life; ///< Made when somebody watches.
    std::uint32_t recreationTimeStamp = 0;
    Member activeMember;
    bool changed = false; ///< Whether the list has changed since, other than by what was appended to its end.
    bool shared = false;  ///< Whether a member-selection property was told to point at it; not copied.
};

} // namespace Gentra

#endif
