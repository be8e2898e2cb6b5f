// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A second source of the test program that includes everything: the headers must bear it.
#include <gentra/gentra.h>

#include <gtest/gtest.h>

TEST(Headers, MayBeIncludedFromTwoSourcesOfAProgram) {
    EXPECT_EQ(Gentra::Member::NIL, Gentra::Member());
}
