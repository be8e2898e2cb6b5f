// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Short lives of random hosts in which one allocation fails: the exception passes through, and all structures stay
// sound. What is lost is found by the leak sanitizer.

#include "WorldModel.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <exception>
#include <optional>

namespace {

using namespace Whole;

/// Lives until the given allocation fails, and returns whether it did.
bool Live(unsigned int seed, std::size_t failing) {
    Choices choices(seed);
    std::optional<World> world(std::in_place, choices);
    Support::FailAllocation(failing);
    try {
        for (int step = 0; step < 60; ++step) {
            world->Step();
        }
    } catch (std::exception const&) { // also where the model finds that something was not carried out
    }
    bool const failed = !Support::AllocationFailureIsDue();
    Support::FailAllocation(0);
    EXPECT_NO_THROW(world->CheckStructures());
    Support::FailAllocation(1, true);
    world.reset(); // pools are destroyed without taking memory
    Support::FailAllocation(0);
    return failed;
}

TEST(AllocationFailures, LeaveEverythingSound) {
    int failures = 0;
    for (unsigned int seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        failures += Live(seed, 1 + seed * 7919 % 2500) ? 1 : 0;
    }
    EXPECT_GT(failures, 300) << "hardly anything fails"; // fewer where only those of the program itself are counted
}

} // namespace
