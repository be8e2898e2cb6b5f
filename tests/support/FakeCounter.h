// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_FAKECOUNTER_H
#define GENTRA_TESTS_SUPPORT_FAKECOUNTER_H

#include "../../src/util/HighResolutionCounter.h"

namespace Support {

/// Stands in for the system's counter while it lives: 1000 counts per second, at a time that the test sets.
class FakeCounter {
public:
    FakeCounter() {
        now = 0;
        countsPerSecond = 1000;
        Util::ReplaceHighResolutionCounter(&source);
    }
    FakeCounter(FakeCounter const&) = delete;
    FakeCounter& operator=(FakeCounter const&) = delete;
    ~FakeCounter() { Util::ReplaceHighResolutionCounter(nullptr); }

    static inline std::int64_t now = 0;
    static inline std::int64_t countsPerSecond = 1000;

private:
    static inline Util::CounterSource const source = {[] { return now; }, [] { return countsPerSecond; }};
};

} // namespace Support

#endif
