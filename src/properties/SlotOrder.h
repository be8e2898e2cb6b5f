// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_SLOTORDER_H
#define GENTRA_SRC_PROPERTIES_SLOTORDER_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Gentra {

/// Which of a growing number of slots are in a list, and in which order.
///
/// At first that is ascending order. Removals leave holes, which a bit per slot tells. Only an insertion in
/// the middle makes links between the slots necessary; from then on they tell the order. Slots are never
/// used again.
class SlotOrder {
public:
    using Slot = std::uint32_t;
    static constexpr Slot NONE = 0xFFFFFFFFu;

    /// Puts the slots 0 to `count` - 1 into the list, in that order.
    void Start(Slot count);

    [[nodiscard]] Slot Count() const noexcept { return liveCount; }
    [[nodiscard]] Slot SlotCount() const noexcept { return slotCount; }
    [[nodiscard]] bool IsLive(Slot slot) const noexcept {
        return (live[slot / WORD_BITS] >> (slot % WORD_BITS) & 1u) != 0;
    }
    [[nodiscard]] bool IsAscending() const noexcept { return links.empty(); }

    // NONE past either end.
    [[nodiscard]] Slot First() const noexcept { return first; }
    [[nodiscard]] Slot Last() const noexcept { return last; }
    [[nodiscard]] Slot Next(Slot slot) const noexcept;
    [[nodiscard]] Slot Previous(Slot slot) const noexcept;

    /// The slot at that position of the list, which must exist. Without links at most logarithmic in the
    /// number of slots, with links linear.
    [[nodiscard]] Slot AtPosition(Slot position);

    /// Each adds slot number SlotCount().
    void Append();
    void InsertAfter(Slot where); ///< Not behind the last one; that is Append().
    void InsertBefore(Slot where);

    void Erase(Slot slot);

private:
    friend struct Validator; // of the tests

    static constexpr Slot WORD_BITS = 64;

    struct Link {
        Slot previous;
        Slot next;
    };

    void ReserveLiveSlot();
    void AddLiveSlot() noexcept;
    void BuildLinks();
    void LinkBetween(Slot previous, Slot next);
    [[nodiscard]] Slot NextLive(Slot slot) const noexcept;
    [[nodiscard]] Slot PreviousLive(Slot slot) const noexcept;

    void BuildCounts();
    void ChangeCount(std::size_t word, std::int32_t change) noexcept;
    [[nodiscard]] Slot SelectLive(Slot position) const noexcept;

    std::vector<std::uint64_t> live; ///< One bit per slot.
    std::vector<Link> links;         ///< Empty while the order is ascending.

    /// Numbers of live slots per word, as a binary indexed tree (P. Fenwick, Software: Practice and
    /// Experience 24, 1994) counted from 1; empty until AtPosition() needs it.
    std::vector<std::uint32_t> counts;

    Slot first = NONE;
    Slot last = NONE;
    Slot liveCount = 0;
    Slot slotCount = 0;
};

} // namespace Gentra

#endif
