// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/ShortID.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <ctime>

namespace Util {

namespace {

constexpr std::size_t STATE_SIZE = 624;
constexpr std::size_t MIDDLE = 397;
constexpr std::uint32_t UPPER_MASK = 0x80000000u;
constexpr std::uint32_t LOWER_MASK = 0x7FFFFFFFu;
constexpr std::uint32_t MATRIX = 0x9908B0DFu;

/// Mersenne Twister MT19937 without tempering, see ShortID::Generate().
class RandomSource {
public:
    std::int32_t Next() {
        if (!seeded) {
            Seed();
        }
        if (index == STATE_SIZE) {
            Regenerate();
        }
        return static_cast<std::int32_t>(state[index++]);
    }

private:
    static std::uint32_t SeedByte() { return static_cast<std::uint32_t>(std::rand()) & 0xFFu; }

    void Seed() {
        std::srand(static_cast<unsigned int>(std::time(nullptr)));
        for (std::uint32_t& word : state) {
            std::uint32_t const r1 = SeedByte();
            std::uint32_t const r2 = SeedByte();
            std::uint32_t const r3 = SeedByte();
            std::uint32_t const r4 = SeedByte();
            word = (r2 << 24) | (r1 << 16) | (r3 << 8) | r4;
        }
        index = 0;
        seeded = true;
    }

    /// Works in place, so that the last words use early words that are already new.
    void Regenerate() {
        for (std::size_t k = 0; k < STATE_SIZE; ++k) {
            std::uint32_t const y = (state[k] & UPPER_MASK) | (state[(k + 1) % STATE_SIZE] & LOWER_MASK);
            state[k] = state[(k + MIDDLE) % STATE_SIZE] ^ (y >> 1) ^ ((y & 1u) != 0 ? MATRIX : 0u);
        }
        index = 0;
    }

    std::array<std::uint32_t, STATE_SIZE> state{};
    std::size_t index = 0;
    bool seeded = false;
};

// Objects draw IDs while the library loads, so the source must be usable before any constructor has run.
constinit RandomSource randomSource;

} // namespace

int ShortID::Generate() {
    return randomSource.Next();
}

} // namespace Util
