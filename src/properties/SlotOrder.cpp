// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "SlotOrder.h"

#include <algorithm>
#include <bit>

namespace Gentra {

namespace {

/// The lowest set bit of a number, which is how far a node of a binary indexed tree reaches back.
std::size_t LowestBit(std::size_t number) noexcept {
    return number & (~number + 1);
}

/// The position of the set bit number `rank` (from 0) of a word: first its byte, from the numbers of bits up
/// to each byte, all at once (S. Vigna, Broadword implementation of rank/select queries, WEA 2008).
unsigned int SelectBit(std::uint64_t word, unsigned int rank) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    constexpr std::uint64_t highs = ones << 7;
    std::uint64_t sums = word - ((word >> 1) & 0x5555555555555555u);
    sums = (sums & 0x3333333333333333u) + ((sums >> 2) & 0x3333333333333333u);
    sums = ((sums + (sums >> 4)) & 0x0F0F0F0F0F0F0F0Fu) * ones; // per byte: bits in it and below
    std::uint64_t const bytesBefore = (((rank * ones) | highs) - sums) & highs;
    auto const shift = static_cast<unsigned int>(((bytesBefore >> 7) * ones) >> 56) * 8;
    rank -= static_cast<unsigned int>(((sums << 8) >> shift) & 0xFFu);
    std::uint64_t byte = (word >> shift) & 0xFFu;
    for (; rank > 0; --rank) {
        byte &= byte - 1;
    }
    return shift + static_cast<unsigned int>(std::countr_zero(byte));
}

} // namespace

void SlotOrder::Start(Slot count) {
    links.clear();
    counts.clear();
    live.assign((count + WORD_BITS - 1) / WORD_BITS, ~std::uint64_t{0});
    if (count % WORD_BITS != 0) {
        live.back() >>= WORD_BITS - count % WORD_BITS;
    }
    slotCount = count;
    liveCount = count;
    first = count > 0 ? 0 : NONE;
    last = count > 0 ? count - 1 : NONE;
}

SlotOrder::Slot SlotOrder::Next(Slot slot) const noexcept {
    if (slot == last) {
        return NONE;
    }
    return IsAscending() ? NextLive(slot) : links[slot].next;
}

SlotOrder::Slot SlotOrder::Previous(Slot slot) const noexcept {
    if (slot == first) {
        return NONE;
    }
    return IsAscending() ? PreviousLive(slot) : links[slot].previous;
}

SlotOrder::Slot SlotOrder::NextLive(Slot slot) const noexcept {
    std::size_t word = (slot + 1) / WORD_BITS;
    std::uint64_t bits = live[word] & (~std::uint64_t{0} << ((slot + 1) % WORD_BITS));
    while (bits == 0) {
        bits = live[++word];
    }
    return static_cast<Slot>(word) * WORD_BITS + static_cast<Slot>(std::countr_zero(bits));
}

SlotOrder::Slot SlotOrder::PreviousLive(Slot slot) const noexcept {
    std::size_t word = (slot - 1) / WORD_BITS;
    std::uint64_t bits = live[word] & (~std::uint64_t{0} >> (WORD_BITS - 1 - (slot - 1) % WORD_BITS));
    while (bits == 0) {
        bits = live[--word];
    }
    return static_cast<Slot>(word) * WORD_BITS + (WORD_BITS - 1) - static_cast<Slot>(std::countl_zero(bits));
}

SlotOrder::Slot SlotOrder::AtPosition(Slot position) {
    if (IsAscending()) {
        if (liveCount == slotCount) {
            return position;
        }
        if (counts.empty()) {
            BuildCounts();
        }
        return SelectLive(position);
    }
    Slot slot = NONE;
    if (position < liveCount / 2) {
        slot = first;
        for (Slot i = 0; i < position; ++i) {
            slot = links[slot].next;
        }
    } else {
        slot = last;
        for (Slot i = liveCount - 1; i > position; --i) {
            slot = links[slot].previous;
        }
    }
    return slot;
}

void SlotOrder::Append() {
    Slot const slot = slotCount;
    bool const linked = !IsAscending();
    ReserveLiveSlot();
    if (linked) {
        links.push_back({last, NONE});
    }
    AddLiveSlot();
    if (linked) {
        if (last != NONE) {
            links[last].next = slot;
        }
    }
    last = slot;
    if (first == NONE) {
        first = slot;
    }
}

void SlotOrder::InsertAfter(Slot where) {
    BuildLinks();
    LinkBetween(where, links[where].next);
}

void SlotOrder::InsertBefore(Slot where) {
    BuildLinks();
    LinkBetween(where == first ? NONE : links[where].previous, where);
}

void SlotOrder::Erase(Slot slot) {
    if (!IsAscending()) {
        if (slot != first) {
            links[links[slot].previous].next = links[slot].next;
        }
        if (slot != last) {
            links[links[slot].next].previous = links[slot].previous;
        }
    }
    Slot const next = slot == first ? Next(slot) : NONE;
    Slot const previous = slot == last ? Previous(slot) : NONE;
    if (slot == first) {
        first = next;
    }
    if (slot == last) {
        last = previous;
    }
    live[slot / WORD_BITS] &= ~(std::uint64_t{1} << (slot % WORD_BITS));
    --liveCount;
    if (!counts.empty()) {
        ChangeCount(slot / WORD_BITS, -1);
    }
}

/// Makes room for one more slot. What can run out of memory is done before anything changes.
void SlotOrder::ReserveLiveSlot() {
    if (live.size() * WORD_BITS == slotCount) {
        live.push_back(0);
    }
}

void SlotOrder::AddLiveSlot() noexcept {
    std::size_t const word = slotCount / WORD_BITS;
    live[word] |= std::uint64_t{1} << (slotCount % WORD_BITS);
    ++slotCount;
    ++liveCount;
    if (word + 1 >= counts.size()) {
        counts.clear(); // a tree for more words is built when it is next needed
    } else {
        ChangeCount(word, +1);
    }
}

void SlotOrder::BuildLinks() {
    if (!IsAscending()) {
        return;
    }
    links.reserve(slotCount + slotCount / 8 + 1); // for this insertion and those to come
    links.resize(slotCount);
    Slot previous = NONE;
    for (Slot slot = first; slot != NONE;) {
        Slot const next = slot == last ? NONE : NextLive(slot);
        links[slot] = {previous, next};
        previous = slot;
        slot = next;
    }
}

/// Adds the next slot between two neighbours, of which the first may be NONE.
void SlotOrder::LinkBetween(Slot previous, Slot next) {
    Slot const slot = slotCount;
    ReserveLiveSlot();
    links.push_back({previous, next});
    AddLiveSlot();
    links[next].previous = slot;
    if (previous != NONE) {
        links[previous].next = slot;
    } else {
        first = slot;
    }
}

void SlotOrder::BuildCounts() {
    counts.assign(live.size() + 1, 0);
    for (std::size_t node = 1; node <= live.size(); ++node) {
        counts[node] += static_cast<std::uint32_t>(std::popcount(live[node - 1]));
        std::size_t const parent = node + LowestBit(node);
        if (parent <= live.size()) {
            counts[parent] += counts[node];
        }
    }
}

void SlotOrder::ChangeCount(std::size_t word, std::int32_t change) noexcept {
    for (std::size_t node = word + 1; node < counts.size(); node += LowestBit(node)) {
        counts[node] += static_cast<std::uint32_t>(change);
    }
}

SlotOrder::Slot SlotOrder::SelectLive(Slot position) const noexcept {
    std::size_t word = 0;
    for (std::size_t step = std::bit_floor(live.size()); step > 0; step /= 2) {
        // Without a branch: which way it goes is chance.
        std::uint32_t const count = counts[std::min(word + step, live.size())];
        bool const isBehind = word + step <= live.size() && count <= position;
        word += isBehind ? step : 0;
        position -= isBehind ? count : 0;
    }
    return static_cast<Slot>(word) * WORD_BITS + SelectBit(live[word], position);
}

} // namespace Gentra
