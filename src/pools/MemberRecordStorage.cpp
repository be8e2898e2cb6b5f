// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "MemberRecordStorage.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace Gentra {

MemberRecordStorage::MemberRecordStorage(std::size_t newRecordSize)
    : recordSize(newRecordSize),
      nextBlockSize(std::min(FIRST_BLOCK_SIZE, FIRST_BLOCK_RECORDS * newRecordSize)) {}

unsigned char* MemberRecordStorage::Take() {
    if (freeRecords.empty()) {
        Grow();
    }
    unsigned char* const record = freeRecords.back();
    freeRecords.pop_back();
    Block& block = *FindBlock(record);
    block.inUse[IndexInBlock(block, record)] = true;
    return record;
}

bool MemberRecordStorage::IsInUse(unsigned char const* record) {
    Block const* const block = FindBlock(record);
    if (block == nullptr) {
        return false;
    }
    std::size_t const index = IndexInBlock(*block, record);
    return block->bytes.get() + index * recordSize == record && block->inUse[index];
}

void MemberRecordStorage::Retire(unsigned char* record) {
    Block& block = *FindBlock(record);
    block.inUse[IndexInBlock(block, record)] = false;
}

void MemberRecordStorage::GiveBack(unsigned char* record) {
    freeRecords.push_back(record);
}

void MemberRecordStorage::Grow() {
    std::size_t const count = std::max<std::size_t>(nextBlockSize / recordSize, 1);
    Block block{std::make_unique_for_overwrite<unsigned char[]>(count * recordSize), count,
                std::vector<bool>(count, false)};
    unsigned char* const start = block.bytes.get();
    freeRecords.reserve(freeRecords.size() + count);

    auto const place = std::upper_bound(
        blocks.begin(), blocks.end(), start,
        [](unsigned char const* address, Block const& b) { return std::less<>()(address, b.bytes.get()); });
    lastBlock =
        static_cast<std::size_t>(std::distance(blocks.begin(), blocks.insert(place, std::move(block))));
    // Ascending, so that the highest address is handed out first.
    for (std::size_t i = 0; i < count; ++i) {
        freeRecords.push_back(start + i * recordSize);
    }
    nextBlockSize = std::min(nextBlockSize * 2, LARGEST_BLOCK_SIZE);
}

MemberRecordStorage::Block* MemberRecordStorage::FindBlock(unsigned char const* record) {
    // Addresses of different blocks are compared, which only the function objects define.
    std::less<> const before;
    auto const holds = [&](Block const& block) {
        unsigned char const* const start = block.bytes.get();
        return !before(record, start) && before(record, start + block.recordCount * recordSize);
    };
    if (lastBlock < blocks.size() && holds(blocks[lastBlock])) {
        return &blocks[lastBlock];
    }
    auto const behind = std::upper_bound(
        blocks.begin(), blocks.end(), record,
        [&](unsigned char const* address, Block const& b) { return before(address, b.bytes.get()); });
    if (behind == blocks.begin() || !holds(*std::prev(behind))) {
        return nullptr;
    }
    lastBlock = static_cast<std::size_t>(std::distance(blocks.begin(), std::prev(behind)));
    return &blocks[lastBlock];
}

std::size_t MemberRecordStorage::IndexInBlock(Block const& block, unsigned char const* record) const {
    return static_cast<std::size_t>(record - block.bytes.get()) / recordSize;
}

} // namespace Gentra
