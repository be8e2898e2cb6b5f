// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A random host that the fuzzer drives, compared with the model after every step.

#include "Fuzzing.h"

#include "whole/WorldModel.h"

void Fuzz(std::span<unsigned char const> bytes) {
    Whole::Choices choices(bytes);
    Whole::World world(choices);
    try {
        while (!choices.IsUsedUp()) {
            world.Step();
            world.Check();
        }
    } catch (std::exception const& disagreement) {
        std::fprintf(stderr, "%s\n", world.Operations().c_str());
        Require(false, disagreement.what());
    }
}
