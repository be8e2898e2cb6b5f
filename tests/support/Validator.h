// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_VALIDATOR_H
#define GENTRA_TESTS_SUPPORT_VALIDATOR_H

#include "../../src/pools/MemberPropertyTable.h"
#include "../../src/properties/SelectionEdits.h"

#include <gentra/gentra.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <set>
#include <stdexcept>
#include <vector>

namespace Gentra {

/// Walks the structures inside and throws std::logic_error where they contradict themselves.
struct Validator {
    using Slot = SlotOrder::Slot;

    static void Require(bool holds, char const* what) {
        if (!holds) {
            throw std::logic_error(what);
        }
    }

    using Records = std::optional<std::set<unsigned char*>>;

    /// `alive` are the records that ought to be in use, where that is known.
    static void CheckPool(MemberPool const& pool, Records const& alive) {
        MemberPropertyTable const& table = *pool.memberProperties;
        CheckLayout(table);
        PropertyTable const& ofPool = *pool.poolProperties;
        Require(ofPool.positions.size() == (ofPool.properties != nullptr ? ofPool.properties->size() : 0),
                "the positions of pool properties");
        if (table.storage != nullptr) {
            CheckStorage(*table.storage, static_cast<std::size_t>(table.recordSize), alive);
        } else {
            Require(!alive || alive->empty(), "members without records");
        }
        Require(pool.construction == nullptr && !pool.clearing, "the pool is at rest");
    }

    static void CheckSelection(MemberSelection const& selection) {
        Require(selection.kept <= selection.memberVector.size(), "the list reaches beyond the vector");
        if (!selection.edited) {
            Require(!selection.cursorValid || selection.cursor < selection.SlotCount(),
                    "the cursor is beyond the list");
            return;
        }
        SlotOrder const& order = selection.edits->order;
        Require(order.slotCount == selection.SlotCount(), "slots and entries");
        CheckOrder(order);
        Require(!selection.cursorValid || order.IsLive(selection.cursor), "the cursor is at a removed entry");
    }

    /// How many records are in use.
    static std::ptrdiff_t CountRecords(MemberPool const& pool) {
        std::ptrdiff_t count = 0;
        if (MemberRecordStorage const* const storage = pool.memberProperties->storage.get()) {
            for (auto const& block : storage->blocks) {
                count += std::count(block.inUse.get(), block.inUse.get() + block.recordCount, true);
            }
        }
        return count;
    }

private:
    /// The data lie end to end in the record, each byte in one place.
    static void CheckLayout(MemberPropertyTable const& table) {
        std::vector<MemberPropertyTable::Place> places = table.places;
        Require(places.size() == table.table.positions.size(), "a place for each property");
        places.insert(places.end(), table.placesOnly.begin(), table.placesOnly.end());
        std::sort(places.begin(), places.end(), [](auto const& a, auto const& b) {
            return a.offset != b.offset ? a.offset < b.offset : a.size < b.size;
        });
        int end = 0;
        for (MemberPropertyTable::Place const& place : places) {
            Require(place.offset == end, "a gap or an overlap in the record");
            end += place.size;
        }
        Require(end == table.recordSize, "the record's size");
    }

    /// Each record is either in use or once on the stack of free ones.
    static void CheckStorage(MemberRecordStorage const& storage, std::size_t recordSize, Records const& alive) {
        Require(storage.recordSize == recordSize, "the storage's record size");
        std::set<unsigned char*> records;
        std::set<unsigned char*> inUse;
        for (auto const& block : storage.blocks) {
            for (std::uint32_t i = 0; i < block.recordCount; ++i) {
                records.insert(block.bytes.get() + i * recordSize);
                if (block.inUse[i]) {
                    inUse.insert(block.bytes.get() + i * recordSize);
                }
            }
        }
        Require(!alive || inUse == *alive, "records in use are not those of the members");
        std::set<unsigned char*> free;
        for (auto const& place : storage.freeRecords) {
            free.insert(storage.blocks.at(place.block).bytes.get() + place.index * recordSize);
        }
        Require(free.size() == storage.freeRecords.size(), "a record is free twice");
        Require(free.size() + inUse.size() == records.size(), "a record is lost");
        Require(std::none_of(free.begin(), free.end(), [&](auto* record) { return inUse.contains(record); }),
                "a record is free and in use");

        Require(std::is_sorted(storage.starts.begin(), storage.starts.end()), "the blocks' starts are out of order");
        for (std::size_t i = 0; i < storage.blocks.size(); ++i) {
            auto const start = reinterpret_cast<std::uintptr_t>(storage.blocks.at(storage.blockAt.at(i)).bytes.get());
            Require(storage.starts.at(i) == start, "a block's start");
        }
    }

    static void CheckOrder(SlotOrder const& order) {
        Slot live = 0;
        for (std::uint64_t const word : order.live) {
            live += static_cast<Slot>(std::popcount(word));
        }
        Require(live == order.liveCount, "the number of entries");
        if (order.links.empty()) {
            return;
        }
        Slot previous = SlotOrder::NONE;
        Slot count = 0;
        for (Slot slot = order.first; slot != SlotOrder::NONE; slot = order.links.at(slot).next, ++count) {
            Require(order.IsLive(slot) && order.links.at(slot).previous == previous, "the chain of entries");
            previous = slot;
        }
        Require(previous == order.last && count == live, "the end of the chain");
    }
};

} // namespace Gentra

#endif
