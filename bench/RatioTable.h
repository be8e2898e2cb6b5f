// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_BENCH_RATIOTABLE_H
#define GENTRA_BENCH_RATIOTABLE_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace Bench {

/// Asks for a line of the table: the time of one benchmark divided by that of another in the same run, and
/// what it should be at most. Both must compute the same result (SetResult).
void CompareTimes(std::string const& label, std::string const& variant, std::string const& baseline, double limit);

/// Adds a line for a number that is no time.
void ReportFigure(std::string const& label, double figure, double limit);

/// Says what a benchmark computed, so that faster never means different.
inline void SetResult(benchmark::State& state, std::uint64_t hash) {
    state.counters["result"] = static_cast<double>(hash >> 12); // a counter holds 53 bits
}

/// Hash of bytes, FNV-1a (G. Fowler, L. Noll, K. Vo).
inline std::uint64_t HashBytes(unsigned char const* bytes, std::size_t count,
                               std::uint64_t hash = 0xCBF29CE484222325u) {
    for (std::size_t i = 0; i < count; ++i) {
        hash = (hash ^ bytes[i]) * 0x100000001B3u;
    }
    return hash;
}

} // namespace Bench

#endif
