// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_SLOTINDEX_H
#define GENTRA_SRC_PROPERTIES_SLOTINDEX_H

#include "SlotOrder.h"

#include "gentra/properties/Member.h"

#include <vector>

namespace Gentra {

/// Finds the first list entry of a member by hashing its record's address.
///
/// Removed entries stay in the table and are passed over, so that a removal costs the index nothing.
/// `MemberAt` is a function from a slot, live or not, to its member.
class SlotIndex {
public:
    using Slot = SlotOrder::Slot;

    [[nodiscard]] bool IsBuilt() const noexcept { return !table.empty(); }
    void Drop() noexcept {
        table.clear();
        nextEqual.clear();
    }

    template<class MemberAt>
    void Build(SlotOrder const& order, MemberAt const& memberAt) {
        Drop();
        std::size_t const capacity = order.Count() + order.Count() / 4 + 16;
        table.assign(capacity, SlotOrder::NONE);
        room = capacity - capacity / 5;
        // Backwards, so that the table ends at the first entry of each member and the chain runs forwards.
        for (Slot slot = order.Last(); slot != SlotOrder::NONE; slot = order.Previous(slot)) {
            Slot& entry = table[Probe(memberAt(slot), memberAt)];
            if (entry == SlotOrder::NONE) {
                --room;
            } else {
                if (nextEqual.empty()) {
                    nextEqual.assign(order.SlotCount(), SlotOrder::NONE);
                }
                nextEqual[slot] = entry;
            }
            entry = slot;
        }
    }

    /// The first entry of that member, or SlotOrder::NONE.
    template<class MemberAt>
    [[nodiscard]] Slot Find(Member member, SlotOrder const& order, MemberAt const& memberAt) {
        return SkipRemoved(table[Probe(member, memberAt)], order);
    }

    /// Takes in the newest slot, whose member is `member`. Drops the index instead when the table is full or
    /// when the member is in the list already, since the order of equal entries would be needed.
    template<class MemberAt>
    void Add(Slot slot, Member member, SlotOrder const& order, MemberAt const& memberAt) {
        Slot& entry = table[Probe(member, memberAt)];
        bool const isNewKey = entry == SlotOrder::NONE;
        if (isNewKey ? room == 0 : SkipRemoved(entry, order) != SlotOrder::NONE) {
            Drop();
            return;
        }
        room -= isNewKey ? 1 : 0;
        entry = slot;
        if (!nextEqual.empty()) {
            nextEqual.resize(order.SlotCount(), SlotOrder::NONE);
        }
    }

private:
    /// Where the member stands in the table, or the free place where it would.
    template<class MemberAt>
    [[nodiscard]] std::size_t Probe(Member member, MemberAt const& memberAt) const {
        std::size_t place = Home(member);
        while (table[place] != SlotOrder::NONE && memberAt(table[place]) != member) {
            place = place + 1 == table.size() ? 0 : place + 1;
        }
        return place;
    }

    [[nodiscard]] std::size_t Home(Member member) const noexcept {
        // Multiplicative hashing by the golden ratio; the upper half, scaled to the table.
        auto const address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(member.record));
        std::uint64_t const hash = (address * 0x9E3779B97F4A7C15u) >> 32;
        return static_cast<std::size_t>((hash * table.size()) >> 32);
    }

    /// Moves a table entry on along its chain to a live slot, or to its end; the last removed slot stays,
    /// since it still names the member. Returns the live slot or NONE.
    [[nodiscard]] Slot SkipRemoved(Slot& entry, SlotOrder const& order) const {
        if (entry == SlotOrder::NONE) {
            return SlotOrder::NONE;
        }
        while (!order.IsLive(entry)) {
            if (nextEqual.empty() || nextEqual[entry] == SlotOrder::NONE) {
                return SlotOrder::NONE;
            }
            entry = nextEqual[entry];
        }
        return entry;
    }

    std::vector<Slot> table;     ///< Slot numbers, open addressing; empty while the index is not built.
    std::vector<Slot> nextEqual; ///< Per slot the next entry of the same member; empty without duplicates.
    std::size_t room = 0;        ///< How many more members the table takes.
};

} // namespace Gentra

#endif
