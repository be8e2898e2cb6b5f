// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_WHOLE_CHOICES_H
#define GENTRA_TESTS_WHOLE_CHOICES_H

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>

namespace Whole {

/// What decides what a random host does: random numbers of a seed, or the bytes of a fuzzer.
class Choices {
public:
    explicit Choices(std::uint32_t seed) : engine(seed) {}
    explicit Choices(std::span<unsigned char const> newBytes) : bytes(newBytes), fromBytes(true) {}

    /// A number from 0 to `bound` - 1, of at most 256 numbers; 0 when the bytes are used up.
    unsigned int Below(std::size_t bound) {
        std::uint32_t choice = 0;
        if (!fromBytes) {
            choice = static_cast<std::uint32_t>(engine());
        } else if (!IsUsedUp()) {
            choice = bytes[used++];
        }
        return choice % static_cast<unsigned int>(bound);
    }
    /// Once in so many times.
    bool OneIn(unsigned int times) { return Below(times) == times - 1; }
    template<class Container>
    auto& OneOf(Container& container) {
        return container[Below(std::size(container))];
    }
    [[nodiscard]] bool IsUsedUp() const { return fromBytes && used == bytes.size(); }

private:
    std::mt19937 engine;
    std::span<unsigned char const> bytes;
    std::size_t used = 0;
    bool fromBytes = false;
};

} // namespace Whole

#endif
