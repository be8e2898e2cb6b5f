// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Random hosts. Other seeds by hand: GENTRA_SEEDS="first count" in the environment. A single one tells its operations
// as they happen.

#include "WorldModel.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <sstream>
#include <utility>

namespace {

using namespace Whole;

constexpr int STEPS = 300;

std::pair<unsigned int, unsigned int> Seeds() {
    std::pair<unsigned int, unsigned int> seeds(1, 200);
    if (char const* const wanted = std::getenv("GENTRA_SEEDS")) {
        std::istringstream(wanted) >> seeds.first >> seeds.second;
    }
    return seeds;
}

TEST(RandomHosts, AgreeWithAModelAfterEveryStep) {
    auto const [first, count] = Seeds();
    std::size_t runs = 0;
    for (unsigned int seed = first; seed - first < count; ++seed) {
        Choices choices(seed);
        World world(choices, count == 1);
        int step = 0;
        try {
            for (; step < STEPS; ++step) {
                world.Step();
                world.Check();
            }
        } catch (std::exception const& disagreement) {
            FAIL() << "seed " << seed << ", step " << step << ": " << disagreement.what() << world.Operations();
        }
        runs += world.CountRuns();
    }
    EXPECT_TRUE(count < 50 || runs > count * 50) << runs << " runs: hardly anything happens";
}

} // namespace
