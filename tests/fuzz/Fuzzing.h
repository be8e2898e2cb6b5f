// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_FUZZ_FUZZING_H
#define GENTRA_TESTS_FUZZ_FUZZING_H

#include <gentra/gentra.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <span>

/// Written by each harness: one run on what the fuzzer came up with.
void Fuzz(std::span<unsigned char const> bytes);

/// Ends the process where something does not hold, so that the fuzzer keeps the bytes.
inline void Require(bool holds, char const* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

extern "C" int LLVMFuzzerTestOneInput(unsigned char const* data, std::size_t size) {
    Fuzz({data, size});
    return 0;
}

#endif
