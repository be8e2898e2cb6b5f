// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_MEMBERLIST_H
#define GENTRA_SRC_PROPERTIES_MEMBERLIST_H

#include "ChunkHints.h"

#include "gentra/properties/MemberSelection.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Gentra {

/// The entries of a selection in order: a linked list of chunks of up to CHUNK_SIZE members, with one cursor.
///
/// A change moves members within one chunk or between two neighbours. Neighbours that fit into one chunk are merged, so
/// there are never more than twice as many chunks as the members need. Two helpers are made when they begin to pay, and
/// last until the list is read or cleared: hints where a member is, and counts of members by position. If memory runs
/// out an operation throws and nothing has changed.
class MemberList : public MemberListEnd {
public:
    using Number = std::uint32_t;
    static constexpr Number NONE = 0xFFFFFFFFu;
    static constexpr Number CHUNK_SIZE = 64;

    /// Names an entry until the next change, or none.
    struct Place {
        Number chunk = NONE;
        Number offset = 0;

        [[nodiscard]] bool IsValid() const noexcept { return chunk != NONE; }
        [[nodiscard]] bool operator==(Place const& other) const noexcept = default;
    };

    MemberList() = default;
    MemberList& operator=(MemberList const&) = delete;
    /// A copy is packed, whatever has become of the other one.
    MemberList(MemberList const& other) : MemberList() {
        for (Number chunk = other.firstChunk; chunk != NONE; chunk = other.chunks[chunk].next) {
            Member const* const members = other.chunks[chunk].members.get();
            Number const size = other.Size(chunk);
            Number const front = chunk == other.cursor.chunk ? other.cursor.offset + 1 : 0;
            AppendRange(members, front);
            cursor = front > 0 ? Last() : cursor;
            AppendRange(members + front, size - front);
        }
    }

    // Places; none past either end.

    [[nodiscard]] Number Count() const noexcept { return before + static_cast<Number>(next - first); }
    [[nodiscard]] Member At(Place place) const noexcept {
        assert(place.offset < Size(place.chunk));
        return chunks[place.chunk].members[place.offset];
    }
    [[nodiscard]] Place First() const noexcept { return Count() > 0 ? Place{firstChunk, 0} : Place(); }
    [[nodiscard]] Place Last() const noexcept { return Count() > 0 ? Place{lastChunk, Size(lastChunk) - 1} : Place(); }
    [[nodiscard]] Place Next(Place place) const noexcept {
        assert(place.offset < Size(place.chunk));
        return place.offset + 1 < Size(place.chunk) ? Place{place.chunk, place.offset + 1}
                                                    : Place{chunks[place.chunk].next, 0};
    }
    [[nodiscard]] Place Previous(Place place) const noexcept {
        assert(place.offset < Size(place.chunk));
        Number const previous = chunks[place.chunk].previous;
        if (place.offset > 0) {
            return {place.chunk, place.offset - 1};
        }
        return previous != NONE ? Place{previous, Size(previous) - 1} : Place();
    }

    /// The entry at that position, which must exist. The counts are a binary indexed tree (P. Fenwick, Software:
    /// Practice and Experience 24, 1994) of runs of neighbouring chunks: one chunk each at first, later also those
    /// split off it.
    [[nodiscard]] Place AtPosition(Number position) {
        Closed const closed(*this);
        assert(position < before);
        if (counts.empty()) {
            CountMembers();
        }
        Number run = 0;
        for (Number step = std::bit_floor(static_cast<Number>(runs.size())); step > 0; step /= 2) {
            if (run + step < counts.size() && counts[run + step] <= position) {
                run += step;
                position -= counts[run];
            }
        }
        Number chunk = runs[run];
        Number length = 1;
        for (; position >= chunks[chunk].size; ++length) {
            position -= chunks[chunk].size;
            chunk = chunks[chunk].next;
            assert(chunk != NONE);
        }
        if (length > LONGEST_RUN) {
            counts.clear(); // to be made afresh
        }
        return {chunk, position};
    }

    /// The first entry of that member.
    [[nodiscard]] Place Find(Member member) {
        if (!hints.AreThere() && Count() >= SMALLEST_HINTED && searched >= SEARCHES_PER_HINT * Count()) {
            MakeHints();
        }
        if (!hints.AreThere()) {
            return Search(member);
        }
        Place found;
        bool isOnlyOne = true;
        bool const isCertain = hints.ForEach(member, [&](Number chunk) {
            Place const place = FindIn(chunk, member);
            isOnlyOne = isOnlyOne && (!place.IsValid() || !found.IsValid() || place == found);
            found = place.IsValid() ? place : found;
        });
        return isCertain && isOnlyOne ? found : Search(member);
    }

    // Changes. The cursor stays at its entry.

    void Append(Member member) {
        Closed const closed(*this);
        if (lastChunk == NONE || IsFull(lastChunk)) {
            MakeRoomBehind(lastChunk);
        }
        Put({lastChunk, chunks[lastChunk].size}, member);
    }

    void AppendRange(Member const* members, std::size_t count) {
        Number const oldCount = Count();
        try {
            for (std::size_t run = 0; count > 0; members += run, count -= run) {
                run = std::min(count, static_cast<std::size_t>(limit - next));
                next = std::copy_n(members, run, next);
                if (run == 0) { // full, or the helpers want to hear of it
                    Append(*members);
                    run = 1;
                }
            }
        } catch (...) {
            while (Count() > oldCount) {
                Erase(Last());
            }
            throw;
        }
    }

    /// The cursor must be valid.
    void InsertAtCursor(Member member, bool behind) {
        Closed const closed(*this);
        Number const chunk = cursor.chunk;
        assert(cursor.offset < chunks[chunk].size);
        Number const roomy = IsFull(chunk) ? MakeRoomBehind(chunk) : chunk;
        if (roomy != chunk) {
            Move(chunk, CHUNK_SIZE / 2, roomy);
        }
        Put({cursor.chunk, cursor.offset + (behind ? 1 : 0)}, member);
        if (roomy != chunk) { // each half may fit into its neighbour
            MergeWithNext(roomy);
            MergeWithNext(chunks[chunk].previous);
        }
    }

    /// The caller moves the cursor when it was here.
    Member Erase(Place place) {
        Closed const closed(*this);
        Chunk& chunk = chunks[place.chunk];
        assert(place.offset < chunk.size && chunk.size <= before);
        Member* const at = chunk.members.get() + place.offset;
        Member const member = *at;
        std::copy(at + 1, chunk.members.get() + chunk.size, at);
        --chunk.size;
        --before;
        Count(place.chunk, static_cast<Number>(-1));
        cursor.offset -= cursor.chunk == place.chunk && cursor.offset > place.offset ? 1 : 0;
        if (!MergeWithNext(place.chunk)) {
            MergeWithNext(chunk.previous);
        }
        return member;
    }

    /// Erases the entries whose members `goes` names. A cursor at one of them is nowhere then.
    template<class Goes>
    void EraseAll(Goes const& goes) {
        Closed const closed(*this);
        counts.clear();
        for (Number chunk = firstChunk; chunk != NONE; chunk = chunks[chunk].next) {
            EraseIn(chunk, goes);
        }
        for (Number chunk = firstChunk; chunk != NONE;) {
            chunk = MergeWithNext(chunk) ? chunk : chunks[chunk].next;
        }
    }

    /// Keeps the memory.
    void Clear() noexcept {
        DropHelpers();
        cursor = Place();
        if (firstChunk == lastChunk) {
            next = first;
            return;
        }
        Closed const closed(*this);
        while (firstChunk != lastChunk) {
            Unlink(lastChunk);
        }
        chunks[firstChunk].size = 0;
        before = 0;
    }

    /// Writes all members to `out`, which has room for them.
    void Read(Member* out) {
        for (Number chunk = firstChunk; chunk != NONE; chunk = chunks[chunk].next) {
            out = std::copy_n(chunks[chunk].members.get(), Size(chunk), out);
        }
        DropHelpers();
    }

    Place cursor;

private:
    friend struct Validator; // of the tests

    static constexpr Number FIRST_CAPACITY = 8;
    static constexpr Number LONGEST_RUN = 16;
    /// Making hints costs about as much as looking at each member this many times.
    static constexpr std::size_t SEARCHES_PER_HINT = 4;
    /// Below this size a search is cheaper than any hint.
    static constexpr Number SMALLEST_HINTED = 64;

    struct Chunk {
        std::unique_ptr<Member[]> members;
        Number capacity = 0; ///< CHUNK_SIZE, or less while it is the only chunk.
        Number size = 0;     ///< Of the last chunk only while the list is closed: see MemberListEnd.
        Number previous = NONE;
        Number next = NONE;
        Number run = 0; ///< While members are counted.
    };

    /// Closes the end of the list for as long as it lives: all sizes are those of the chunks.
    class Closed {
    public:
        explicit Closed(MemberList& newList) noexcept : list(newList) {
            if (list.lastChunk != NONE) {
                assert(list.first != nullptr); // it is open
                list.chunks[list.lastChunk].size = static_cast<Number>(list.next - list.first);
                list.before = list.Count();
                list.first = list.next = list.limit = nullptr;
            }
        }
        Closed(Closed const&) = delete;
        Closed& operator=(Closed const&) = delete;
        ~Closed() {
            if (list.lastChunk != NONE) {
                Chunk const& last = list.chunks[list.lastChunk];
                assert(list.first == nullptr && last.size <= list.before && last.next == NONE);
                bool const unheard = !list.hints.AreThere() && list.counts.empty();
                list.before -= last.size;
                list.first = last.members.get();
                list.next = list.first + last.size;
                list.limit = unheard ? list.first + last.capacity : list.next;
            }
        }

    private:
        MemberList& list;
    };

    [[nodiscard]] Number Size(Number chunk) const noexcept {
        return chunk == lastChunk && first != nullptr ? static_cast<Number>(next - first) : chunks[chunk].size;
    }
    [[nodiscard]] bool IsFull(Number chunk) const noexcept { return chunks[chunk].size == chunks[chunk].capacity; }

    /// Puts the member before the entry at that place, in a chunk that is not full.
    void Put(Place place, Member member) noexcept {
        Chunk& chunk = chunks[place.chunk];
        assert(chunk.size < chunk.capacity && place.offset <= chunk.size);
        Member* const at = chunk.members.get() + place.offset;
        Member* const end = chunk.members.get() + chunk.size;
        std::copy_backward(at, end, end + 1);
        *at = member;
        ++chunk.size;
        ++before;
        Count(place.chunk, 1);
        cursor.offset += cursor.chunk == place.chunk && cursor.offset >= place.offset ? 1 : 0;
        Hint(member, place.chunk);
    }

    /// Gives a full chunk more room, or links an empty one behind it; returns which one has room now.
    Number MakeRoomBehind(Number chunk) {
        assert(chunk == NONE ? firstChunk == NONE : IsFull(chunk));
        if (chunk != NONE && chunks[chunk].capacity < CHUNK_SIZE) {
            auto larger = std::make_unique<Member[]>(std::size_t{2} * chunks[chunk].capacity);
            std::copy_n(chunks[chunk].members.get(), chunks[chunk].size, larger.get());
            chunks[chunk].members = std::move(larger);
            chunks[chunk].capacity *= 2;
            return chunk;
        }
        if (freeChunk == NONE) {
            AllocateChunk();
        }
        Number const newChunk = freeChunk;
        Number const following = chunk != NONE ? chunks[chunk].next : NONE;
        freeChunk = chunks[newChunk].next;
        assert(chunks[newChunk].size == 0);
        chunks[newChunk].run = chunk != NONE ? chunks[chunk].run : 0;
        chunks[newChunk].previous = chunk;
        chunks[newChunk].next = following;
        (chunk != NONE ? chunks[chunk].next : firstChunk) = newChunk;
        (following != NONE ? chunks[following].previous : lastChunk) = newChunk;
        return newChunk;
    }

    void AllocateChunk() {
        if (chunks.size() == chunks.capacity()) {
            chunks.reserve(chunks.size() + chunks.size() / 4 + 1); // doubling would show in a large population
        }
        Number const capacity = chunks.empty() ? FIRST_CAPACITY : CHUNK_SIZE;
        auto members = std::make_unique<Member[]>(capacity);
        freeChunk = static_cast<Number>(chunks.size());
        chunks.emplace_back();
        chunks.back().members = std::move(members);
        chunks.back().capacity = capacity;
    }

    /// Moves the members from an offset on to the end of the next chunk, or of the one before.
    void Move(Number from, Number offset, Number to) noexcept {
        Member const* const members = chunks[from].members.get();
        Number const count = chunks[from].size - offset;
        assert(offset <= chunks[from].size && chunks[to].size + count <= chunks[to].capacity);
        std::copy_n(members + offset, count, chunks[to].members.get() + chunks[to].size);
        for (Number i = offset; i < chunks[from].size; ++i) {
            Hint(members[i], to);
        }
        if (cursor.chunk == from && cursor.offset >= offset) {
            cursor = {to, cursor.offset - offset + chunks[to].size};
        }
        Count(from, 0 - count);
        Count(to, count);
        chunks[from].size = offset;
        chunks[to].size += count;
    }

    /// Merges the chunk, which may be none, with the next one if both fit into one.
    bool MergeWithNext(Number chunk) noexcept {
        Number const following = chunk != NONE ? chunks[chunk].next : NONE;
        if (following == NONE || chunks[chunk].size + chunks[following].size > CHUNK_SIZE) {
            return false;
        }
        Move(following, 0, chunk);
        Unlink(following);
        return true;
    }

    /// Leaves the chunk without those that go, which may be all; members are not counted meanwhile.
    template<class Goes>
    void EraseIn(Number chunk, Goes const& goes) {
        Member* const members = chunks[chunk].members.get();
        Place const oldCursor = cursor;
        Number kept = 0;
        for (Number i = 0; i < chunks[chunk].size; ++i) {
            bool const stays = !goes(members[i]);
            if (oldCursor == Place{chunk, i}) {
                cursor = stays ? Place{chunk, kept} : Place();
            }
            members[kept] = members[i];
            kept += stays ? 1 : 0;
        }
        assert(counts.empty() && kept <= chunks[chunk].size);
        before -= chunks[chunk].size - kept;
        chunks[chunk].size = kept;
    }

    /// Takes a chunk whose members have gone, and which is not the only one, out of the list and keeps it.
    void Unlink(Number chunk) noexcept {
        assert(firstChunk != lastChunk && cursor.chunk != chunk);
        Number const previous = chunks[chunk].previous;
        Number const following = chunks[chunk].next;
        if (!counts.empty() && runs[chunks[chunk].run] == chunk) {
            runs[chunks[chunk].run] = following; // of the same run, or not asked for any more
        }
        (previous != NONE ? chunks[previous].next : firstChunk) = following;
        (following != NONE ? chunks[following].previous : lastChunk) = previous;
        chunks[chunk].size = 0;
        chunks[chunk].next = freeChunk;
        freeChunk = chunk;
    }

    void DropHelpers() noexcept {
        searched = 0;
        if (hints.AreThere() || !counts.empty()) {
            Closed const closed(*this); // appending need not tell them any more
            hints.Drop();
            counts.clear();
        }
    }

    // Finding a member.

    [[nodiscard]] Place FindIn(Number chunk, Member member) const noexcept {
        Member const* const members = chunks[chunk].members.get();
        Number const size = Size(chunk);
        auto const offset = static_cast<Number>(std::find(members, members + size, member) - members);
        return offset < size ? Place{chunk, offset} : Place();
    }
    [[nodiscard]] Place Search(Member member) noexcept {
        for (Number chunk = firstChunk; chunk != NONE; chunk = chunks[chunk].next) {
            Place const place = FindIn(chunk, member);
            searched += place.IsValid() ? place.offset : Size(chunk);
            if (place.IsValid()) {
                return place;
            }
        }
        return {};
    }
    void MakeHints() {
        Closed const closed(*this);
        hints.Start(before);
        for (Number chunk = firstChunk; chunk != NONE; chunk = chunks[chunk].next) {
            for (Number i = 0; i < chunks[chunk].size; ++i) {
                Hint(chunks[chunk].members[i], chunk);
            }
        }
        searched = 0;
    }
    /// When there is no room for a hint all are dropped, and made afresh for the next search.
    void Hint(Member member, Number chunk) noexcept {
        if (hints.AreThere() && !hints.Add(member, chunk)) {
            hints.Drop();
            searched = SEARCHES_PER_HINT * before;
        }
    }

    // Counting members.

    void CountMembers() {
        runs.clear();
        for (Number chunk = firstChunk; chunk != NONE; chunk = chunks[chunk].next) {
            chunks[chunk].run = static_cast<Number>(runs.size());
            runs.push_back(chunk);
        }
        counts.assign(runs.size() + 1, 0);
        for (Number const chunk : runs) {
            Count(chunk, chunks[chunk].size);
        }
    }
    void Count(Number chunk, Number change) noexcept {
        for (std::size_t i = chunks[chunk].run + 1; i < counts.size(); i += i & (0 - i)) {
            counts[i] += change;
        }
    }

    std::vector<Chunk> chunks;
    Number firstChunk = NONE;
    Number lastChunk = NONE;
    Number freeChunk = NONE;    ///< The first of those that are not in the list, linked by `next`.
    std::size_t searched = 0;   ///< Members looked at by searches since the helpers were dropped.
    ChunkHints hints;           ///< Where members are.
    std::vector<Number> counts; ///< Of members by run, counted from 1; empty while nobody asks for positions.
    std::vector<Number> runs;   ///< The first chunk of each.
};

} // namespace Gentra

#endif
