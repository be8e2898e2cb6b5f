// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Short lives of random hosts in which one allocation fails: the exception passes through, and all structures stay
// sound. What is lost is found by the leak sanitizer.

#include "WorldModel.h"

#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <optional>

namespace {

using namespace Whole;

enum End { UNHARMED, PASSED_THROUGH, DISAGREED };

/// Lives until the given allocation fails; 0 for none.
End Live(unsigned int seed, std::size_t failing) {
    Choices choices(seed);
    std::optional<World> world(std::in_place, choices);
    End end = UNHARMED;
    Support::FailAllocation(failing);
    try {
        for (int step = 0; step < 60; ++step) {
            world->Step();
            if (failing == 0) {
                world->Check();
            }
        }
    } catch (std::bad_alloc const&) {
        end = PASSED_THROUGH;
    } catch (std::exception const& disagreement) { // something was not carried out, as the model finds
        end = DISAGREED;
        EXPECT_TRUE(failing > 0) << disagreement.what();
    }
    Support::FailAllocation(0);
    EXPECT_NO_THROW(world->CheckStructures());
    Support::FailAllocation(1, true);
    world.reset(); // pools are destroyed without taking memory
    Support::FailAllocation(0);
    return end;
}

TEST(AllocationFailures, LeaveEverythingSound) {
    int ends[3] = {};
    for (unsigned int seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ++ends[Live(seed, 1 + seed * 7919 % 2500)];
        if (seed % 10 == 0) {
            Live(seed, 0); // nothing is left of those who failed
        }
    }
    EXPECT_GT(ends[PASSED_THROUGH], 300) << "hardly anything fails"; // fewer where only the program's own are counted
    EXPECT_EQ(ends[DISAGREED], 0) << "the exception passes through";
}

} // namespace
