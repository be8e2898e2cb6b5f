// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/String.h"

#include <algorithm>

namespace Util {

namespace {

constexpr std::size_t CHUNK_SIZE = 5552; // Adler-32's: the most bytes whose sums cannot overflow 32 bits
constexpr std::size_t GROUP_SIZE = 16;
constexpr unsigned int MODULUS = 65521; // the largest prime below 2^16

char Fold(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Bytes count as signed, so those from 0x80 up lower the sum.
unsigned int Amount(char c) noexcept {
    return static_cast<unsigned int>(static_cast<signed char>(c));
}

} // namespace

unsigned int String::Hash() const noexcept {
    unsigned int a = 0; // not 1, as in Adler-32
    unsigned int b = 0;
    char const* next = data();
    std::size_t remaining = size();

    while (remaining > 0) {
        std::size_t const chunk = std::min(remaining, CHUNK_SIZE);
        char const* const groupsEnd = next + chunk / GROUP_SIZE * GROUP_SIZE;
        char const* const chunkEnd = next + chunk;

        while (next != groupsEnd) {
            a += Amount(Fold(*next++));
            b += a;
        }
        // The rest of a chunk is not folded, and only a chunk with a rest is reduced. Both are on purpose:
        // stored property IDs are made from these values.
        if (next != chunkEnd) {
            while (next != chunkEnd) {
                a += Amount(*next++);
                b += a;
            }
            a %= MODULUS;
            b %= MODULUS;
        }
        remaining -= chunk;
    }
    return (b << 16) | a;
}

} // namespace Util
