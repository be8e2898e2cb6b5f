// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "MemberRecordStorage.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace Gentra {

MemberRecordStorage::MemberRecordStorage(std::size_t newRecordSize)
    : recordSize(newRecordSize), nextBlockSize(std::min(FIRST_BLOCK_SIZE, FIRST_BLOCK_RECORDS * newRecordSize)) {}

void MemberRecordStorage::Grow() {
    assert(freeRecords.empty() && recordSize > 0);
    auto const count = static_cast<std::uint32_t>(std::max<std::size_t>(nextBlockSize / recordSize, 1));
    auto const number = static_cast<std::uint32_t>(blocks.size());
    Block block{std::make_unique_for_overwrite<unsigned char[]>(count * recordSize), std::make_unique<bool[]>(count),
                count};
    Start const start{reinterpret_cast<std::uintptr_t>(block.bytes.get()), number};
    auto const isBefore = [](Start const& a, Start const& b) { return a.address < b.address; };
    // Whatever can run out of memory comes first.
    if (freeRecords.capacity() < pending + count) {
        freeRecords.reserve(pending + count);
    }
    starts.insert(std::upper_bound(starts.begin(), starts.end(), start, isBefore), start);
    try {
        blocks.push_back(std::move(block));
    } catch (...) {
        std::erase_if(starts, [&](Start const& each) { return each.block == number; });
        throw;
    }
    // Ascending, so that the highest address is handed out first.
    for (std::uint32_t i = 0; i < count; ++i) {
        freeRecords.push_back({number, i});
    }
    assert(starts.size() == blocks.size());
    nextBlockSize = std::min(nextBlockSize * 2, LARGEST_BLOCK_SIZE);
}

MemberRecordStorage::Place MemberRecordStorage::FindInUse(unsigned char const* record) const noexcept {
    auto const address = reinterpret_cast<std::uintptr_t>(record);
    // A binary search without branches: which way it goes is chance, and a wrong guess costs more than a
    // step.
    Start const* start = starts.data();
    for (std::size_t length = starts.size(); length > 1; length -= length / 2) {
        start += start[length / 2].address <= address ? length / 2 : 0;
    }
    if (starts.empty() || address < start->address) {
        return NOWHERE;
    }
    Block const& block = blocks[start->block];
    std::size_t const offset = address - start->address;
    if (offset >= block.recordCount * recordSize) {
        return NOWHERE;
    }
    // A block that is larger than LARGEST_BLOCK_SIZE holds one record, so these fit 32 bits, which divide
    // faster.
    std::uint32_t const index =
        offset < recordSize ? 0 : static_cast<std::uint32_t>(offset) / static_cast<std::uint32_t>(recordSize);
    return offset == index * recordSize && block.inUse[index] ? Place{start->block, index} : NOWHERE;
}

} // namespace Gentra
