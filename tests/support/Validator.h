// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_VALIDATOR_H
#define GENTRA_TESTS_SUPPORT_VALIDATOR_H

#include "../../src/pools/MemberPropertyTable.h"
#include "../../src/properties/MemberList.h"

#include <gentra/gentra.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

namespace Gentra {

/// Walks the structures inside and throws std::logic_error where they contradict themselves.
struct Validator {
    static void Require(bool holds, char const* what) {
        if (!holds) {
            throw std::logic_error(what);
        }
    }

    using Records = std::set<unsigned char*>;

    static void CheckPool(MemberPool const& pool) {
        MemberPropertyTable const& table = *pool.memberProperties;
        CheckLayout(table);
        PropertyTable const& ofPool = *pool.poolProperties;
        Require(ofPool.positions.size() == (ofPool.properties != nullptr ? ofPool.properties->size() : 0),
                "the positions of pool properties");
        if (table.storage != nullptr) {
            CheckStorage(*table.storage, static_cast<std::size_t>(table.recordSize));
        }
        Require(pool.newborn == nullptr && !pool.clearing && !pool.IsInUse(), "the pool is at rest");
    }

    static void CheckSelection(MemberSelection const& selection) {
        if (selection.entries != nullptr) {
            CheckList(*selection.entries);
        }
        Require(selection.readUpTo == selection.listEnd->next || selection.changed || selection.Count() > 0,
                "an empty list that was not read");
    }

    static Records RecordsInUse(MemberPool const& pool) {
        MemberRecordStorage const* const storage = pool.memberProperties->storage.get();
        return storage != nullptr ? RecordsOf(*storage, true) : Records();
    }

private:
    /// The data lie end to end in the record, each byte in one place, with an entry of the table or without.
    static void CheckLayout(MemberPropertyTable const& table) {
        Require(table.places.size() == table.table.positions.size(), "a place for each property");
        Require(table.layout.size() == table.places.size() + table.bare.size(), "data and places");
        int end = 0;
        for (auto const& datum : table.layout) {
            auto const isSame = [&](auto const& other) {
                return other.offset == datum.offset && other.size == datum.size && other.type == datum.type;
            };
            Require(datum.offset == end, "a gap or an overlap in the record");
            Require(std::any_of(table.places.begin(), table.places.end(), isSame) ||
                        std::any_of(table.bare.begin(), table.bare.end(), isSame),
                    "a datum of nobody");
            end += datum.size;
        }
        Require(end == table.recordSize, "the record's size");
    }

    static Records RecordsOf(MemberRecordStorage const& storage, bool inUse) {
        Records records;
        for (auto const& block : storage.blocks) {
            for (std::uint32_t i = 0; i < block.recordCount; ++i) {
                if (block.inUse[i] == inUse) {
                    records.insert(block.bytes.get() + i * storage.recordSize);
                }
            }
        }
        return records;
    }

    /// Each record is either in use or once on the stack of free ones.
    static void CheckStorage(MemberRecordStorage const& storage, std::size_t recordSize) {
        Require(storage.recordSize == recordSize, "the storage's record size");
        Records free;
        for (auto const& place : storage.freeRecords) {
            free.insert(storage.blocks.at(place.block).bytes.get() + place.index * recordSize);
        }
        Require(free.size() == storage.freeRecords.size(), "a record is free twice");
        Require(free == RecordsOf(storage, false), "the records that are free");
        Require(storage.pending == 0, "a record is on its way");
        for (std::size_t i = 0; i < storage.blocks.size(); ++i) {
            auto const& start = storage.starts.at(i);
            auto const* const bytes = storage.blocks.at(start.block).bytes.get();
            Require(start.address == reinterpret_cast<std::uintptr_t>(bytes), "a block's start");
            Require(i == 0 || storage.starts[i - 1].address < start.address, "the blocks' starts are out of order");
        }
    }

    /// The chunks are one chain, none of them empty beside others, no two neighbours so small that one could hold both.
    static void CheckList(MemberList const& list) {
        MemberList::Number const none = MemberList::NONE;
        MemberList::Number previous = none;
        MemberList::Number before = 0;
        std::size_t length = 0;
        bool hasCursor = !list.cursor.IsValid();
        for (MemberList::Number chunk = list.firstChunk; chunk != none; chunk = list.chunks.at(chunk).next, ++length) {
            Require(list.chunks.at(chunk).previous == previous, "the chain of chunks");
            MemberList::Number const size = list.Size(chunk);
            Require(size <= list.chunks[chunk].capacity, "more members than a chunk holds");
            Require(size > 0 || list.firstChunk == list.lastChunk, "an empty chunk");
            if (previous != none) {
                Require(list.chunks[chunk].capacity == MemberList::CHUNK_SIZE, "a small chunk");
                Require(list.Size(previous) + size > MemberList::CHUNK_SIZE, "neighbours that fit into one chunk");
            }
            hasCursor = hasCursor || (chunk == list.cursor.chunk && list.cursor.offset < size);
            before += chunk != list.lastChunk ? size : 0;
            previous = chunk;
        }
        Require(previous == list.lastChunk && before == list.before, "the end of the chain of chunks");
        Require(hasCursor, "the cursor is at no entry");
        for (MemberList::Number chunk = list.freeChunk; chunk != none; chunk = list.chunks.at(chunk).next, ++length) {
            Require(list.chunks.at(chunk).size == 0, "a free chunk with members");
        }
        Require(length == list.chunks.size(), "a chunk is lost");
    }
};

} // namespace Gentra

#endif
