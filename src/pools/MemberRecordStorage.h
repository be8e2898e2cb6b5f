// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_POOLS_MEMBERRECORDSTORAGE_H
#define GENTRA_SRC_POOLS_MEMBERRECORDSTORAGE_H

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

    /// A record by its place. The block is NO_BLOCK for an address that is no record in use.
    struct Place {
        std::uint32_t block;
        std::uint32_t index;
    };
    static constexpr std::uint32_t NO_BLOCK = 0xFFFFFFFFu;

    /// A record; its contents are undefined.
    [[nodiscard]] unsigned char* Take() {
        if (freeRecords.empty()) {
            Grow();
        }
        Place const place = freeRecords.back();
        freeRecords.pop_back();
        Block const& block = blocks[place.block];
        block.inUse[place.index] = true;
        return block.bytes.get() + place.index * recordSize;
    }

    /// Finds a record that is in use, by any address.
    [[nodiscard]] Place FindInUse(unsigned char const* record) const;
    /// Ends the use of a record.
    void Retire(Place place) { blocks[place.block].inUse[place.index] = false; }
    /// Takes back a record that was retired.
    void GiveBack(Place place) { freeRecords.push_back(place); }

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

    void Grow();

    std::size_t recordSize;
    std::size_t nextBlockSize; ///< In bytes.
    std::vector<Block> blocks; ///< In order of allocation.
    std::vector<Place> freeRecords;

    // Where the blocks begin, ascending, and which one begins there.
    std::vector<std::uintptr_t> starts;
    std::vector<std::uint32_t> blockAt;
};

} // namespace Gentra

#endif
