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

    /// A record; its contents are undefined.
    [[nodiscard]] unsigned char* Take();

    /// Whether the address, which may be any, is a record that was taken and not given back.
    [[nodiscard]] bool IsInUse(unsigned char const* record);
    /// Ends the use of a record.
    void Retire(unsigned char* record);
    /// Takes back a record that was retired.
    void GiveBack(unsigned char* record);

    [[nodiscard]] std::size_t RecordSize() const noexcept { return recordSize; }

private:
    /// Sizes of blocks in bytes: the first one, and where doubling ends.
    static constexpr std::size_t FIRST_BLOCK_SIZE = 1024;
    static constexpr std::size_t FIRST_BLOCK_RECORDS = 16;
    static constexpr std::size_t LARGEST_BLOCK_SIZE = 65536;

    struct Block {
        std::unique_ptr<unsigned char[]> bytes;
        std::size_t recordCount;
        std::vector<bool> inUse; ///< Per record, so that none is given back twice.
    };

    void Grow();
    [[nodiscard]] Block* FindBlock(unsigned char const* record);
    [[nodiscard]] std::size_t IndexInBlock(Block const& block, unsigned char const* record) const;

    std::size_t recordSize;
    std::size_t nextBlockSize; ///< In bytes.
    std::vector<Block> blocks; ///< Ascending by address.
    std::size_t lastBlock = 0; ///< Where the last record was found: neighbours follow each other.
    std::vector<unsigned char*> freeRecords;
};

} // namespace Gentra

#endif
