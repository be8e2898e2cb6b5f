// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_CHUNKHINTS_H
#define GENTRA_SRC_PROPERTIES_CHUNKHINTS_H

#include "gentra/properties/Member.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Gentra {

/// Tells in which chunks of a list a member may be: a hash table of chunk numbers, each with some bits of the hash.
///
/// Wherever a member is there is a hint, unless hints crowd the places where it belongs: most often those at a member
/// that is listed very often. A hint that is out of date costs a look in vain, so none is taken back.
class ChunkHints {
public:
    [[nodiscard]] bool AreThere() const noexcept { return !table.empty(); }
    void Drop() noexcept { table.clear(); }
    /// An empty table with room for that many members and a quarter more.
    void Start(std::size_t count) {
        table.assign(count + count / 2 + 16, EMPTY);
        room = count + count / 4;
    }

    /// False when there is no room.
    [[nodiscard]] bool Add(Member member, std::uint32_t chunk) noexcept {
        assert(AreThere());
        std::uint64_t const hash = Hash(member);
        std::uint32_t const hint = chunk << TAG_BITS | Tag(hash);
        std::size_t place = Home(hash);
        for (int tries = MOST_TRIES; table[place] != EMPTY; place = Behind(place)) {
            if (table[place] == hint || --tries == 0) {
                return true;
            }
        }
        if (room == 0 || chunk >= MOST_CHUNKS) {
            return false;
        }
        --room;
        table[place] = hint;
        return true;
    }

    /// Calls `look` with the number of each chunk in which the member may be. False when it may be in others too.
    template<class Look>
    [[nodiscard]] bool ForEach(Member member, Look const& look) const {
        assert(AreThere());
        std::uint64_t const hash = Hash(member);
        std::size_t place = Home(hash);
        for (int tries = MOST_TRIES; table[place] != EMPTY; place = Behind(place)) {
            if ((table[place] & TAG_MASK) == Tag(hash)) {
                look(table[place] >> TAG_BITS);
            }
            if (--tries == 0) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr unsigned int TAG_BITS = 8;
    static constexpr std::uint32_t TAG_MASK = (1u << TAG_BITS) - 1;
    static constexpr std::uint32_t MOST_CHUNKS = (1u << (32 - TAG_BITS)) - 1;
    static constexpr std::uint32_t EMPTY = 0xFFFFFFFFu;
    static constexpr int MOST_TRIES = 1000;

    /// The last step of the generator SplitMix64 (G. Steele et al., OOPSLA 2014): records lie at equal distances, which
    /// a multiplication alone would leave in patterns. The upper half, scaled to the table, is where hints begin.
    [[nodiscard]] static std::uint64_t Hash(Member member) noexcept {
        auto const address = reinterpret_cast<std::uintptr_t>(member.record);
        std::uint64_t hash = address;
        hash = (hash ^ hash >> 30) * 0xBF58476D1CE4E5B9u;
        hash = (hash ^ hash >> 27) * 0x94D049BB133111EBu;
        return hash ^ hash >> 31;
    }
    [[nodiscard]] static std::uint32_t Tag(std::uint64_t hash) noexcept {
        return static_cast<std::uint32_t>(hash >> 16) & TAG_MASK;
    }
    [[nodiscard]] std::size_t Home(std::uint64_t hash) const noexcept {
        return static_cast<std::size_t>(((hash >> 32) * table.size()) >> 32);
    }
    [[nodiscard]] std::size_t Behind(std::size_t place) const noexcept {
        return place + 1 == table.size() ? 0 : place + 1;
    }

    std::vector<std::uint32_t> table; ///< Open addressing; empty while there are no hints.
    std::size_t room = 0;             ///< How many more hints it takes.
};

} // namespace Gentra

#endif
