// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_POOLS_MEMBERRECORDSTORAGE_H
#define GENTRA_SRC_POOLS_MEMBERRECORDSTORAGE_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Gentra {

/// The memory of a pool's member records: blocks of equal records that grow geometrically. Records that are
/// given back are handed out again, last in first out.
class MemberRecordStorage {
public:
    /// `newRecordSize` is in bytes and at least 1.
    explicit MemberRecordStorage(std::size_t newRecordSize);

    /// A record by its place.
    struct Place {
        std::uint32_t block;
        std::uint32_t index;
        [[nodiscard]] bool operator==(Place const& other) const noexcept = default;
    };
    static constexpr Place NOWHERE{0xFFFFFFFFu, 0};

    /// A record that is not in use yet; its contents are undefined.
    [[nodiscard]] Place Take() {
        if (freeRecords.empty()) {
            Grow();
        }
        Place const place = freeRecords.back();
        freeRecords.pop_back();
        ++pending;
        return place;
    }
    [[nodiscard]] unsigned char* At(Place place) const noexcept {
        assert(place.block < blocks.size() && place.index < blocks[place.block].recordCount);
        return blocks[place.block].bytes.get() + place.index * recordSize;
    }
    /// Begins the use of a record that was taken.
    void Use(Place place) noexcept {
        assert(!IsInUse(place) && pending > 0);
        blocks[place.block].inUse[place.index] = true;
        --pending;
    }
    /// Ends the use of a record, or throws when there will be no memory to give it back, and nothing has changed.
    void Retire(Place place) {
        assert(IsInUse(place));
        if (freeRecords.size() + pending == freeRecords.capacity()) {
            freeRecords.reserve(2 * freeRecords.capacity());
        }
        blocks[place.block].inUse[place.index] = false;
        ++pending;
    }
    /// Takes back a record that was taken or retired.
    void GiveBack(Place place) noexcept {
        assert(!IsInUse(place) && pending > 0 && freeRecords.size() < freeRecords.capacity());
        freeRecords.push_back(place);
        --pending;
    }

    [[nodiscard]] bool IsInUse(Place place) const noexcept {
        assert(place.block < blocks.size() && place.index < blocks[place.block].recordCount);
        return blocks[place.block].inUse[place.index];
    }
    /// Finds a record that is in use, by any address; NOWHERE when there is none.
    [[nodiscard]] Place FindInUse(unsigned char const* record) const noexcept;

private:
    friend struct Validator; // of the tests

    /// Sizes of blocks in bytes: the first one, and where doubling ends.
    static constexpr std::size_t FIRST_BLOCK_SIZE = 1024;
    static constexpr std::size_t FIRST_BLOCK_RECORDS = 16;
    static constexpr std::size_t LARGEST_BLOCK_SIZE = 65536;

    struct Block {
        std::unique_ptr<unsigned char[]> bytes;
        std::unique_ptr<bool[]> inUse; ///< Per record, so that none is given back twice.
        std::uint32_t recordCount;
    };
    /// Where a block begins.
    struct Start {
        std::uintptr_t address;
        std::uint32_t block;
    };

    void Grow();

    std::size_t recordSize;
    std::size_t nextBlockSize; ///< In bytes.
    std::vector<Block> blocks; ///< In order of allocation.
    std::vector<Place> freeRecords;
    std::size_t pending = 0;   ///< Records that are neither free nor in use. There is room to give them back.
    std::vector<Start> starts; ///< Ascending by address.
};

} // namespace Gentra

#endif
