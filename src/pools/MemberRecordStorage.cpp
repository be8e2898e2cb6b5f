// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "MemberRecordStorage.h"

#include <algorithm>

namespace Gentra {

MemberRecordStorage::MemberRecordStorage(std::size_t newRecordSize)
    : recordSize(newRecordSize), nextBlockSize(std::min(FIRST_BLOCK_SIZE, FIRST_BLOCK_RECORDS * newRecordSize)) {}

void MemberRecordStorage::Grow() {
    auto const count = static_cast<std::uint32_t>(std::max<std::size_t>(nextBlockSize / recordSize, 1));
    auto const number = static_cast<std::uint32_t>(blocks.size());
    // Whatever can run out of memory comes first.
    freeRecords.reserve(freeRecords.size() + count);
    starts.reserve(starts.size() + 1);
    blockAt.reserve(blockAt.size() + 1);
    blocks.push_back(
        {std::make_unique_for_overwrite<unsigned char[]>(count * recordSize), std::make_unique<bool[]>(count), count});

    auto const start = reinterpret_cast<std::uintptr_t>(blocks.back().bytes.get());
    auto const place = std::upper_bound(starts.begin(), starts.end(), start) - starts.begin();
    starts.insert(starts.begin() + place, start);
    blockAt.insert(blockAt.begin() + place, number);
    // Ascending, so that the highest address is handed out first.
    for (std::uint32_t i = 0; i < count; ++i) {
        freeRecords.push_back({number, i});
    }
    nextBlockSize = std::min(nextBlockSize * 2, LARGEST_BLOCK_SIZE);
}

MemberRecordStorage::Place MemberRecordStorage::FindInUse(unsigned char const* record) const {
    auto const address = reinterpret_cast<std::uintptr_t>(record);
    // A binary search without branches: which way it goes is chance, and a wrong guess costs more than a
    // step.
    std::uintptr_t const* base = starts.data();
    for (std::size_t length = starts.size(); length > 1; length -= length / 2) {
        base += base[length / 2] <= address ? length / 2 : 0;
    }
    if (starts.empty() || address < *base) {
        return {NO_BLOCK, 0};
    }
    std::uint32_t const number = blockAt[static_cast<std::size_t>(base - starts.data())];
    std::size_t const offset = address - *base;
    if (offset >= blocks[number].recordCount * recordSize) {
        return {NO_BLOCK, 0};
    }
    // A block that is larger than LARGEST_BLOCK_SIZE holds one record, so these fit 32 bits, which divide
    // faster.
    auto const index =
        offset < recordSize ? 0 : static_cast<std::uint32_t>(offset) / static_cast<std::uint32_t>(recordSize);
    bool const isInUse = offset == index * recordSize && blocks[number].inUse[index];
    return {isInUse ? number : NO_BLOCK, index};
}

} // namespace Gentra
