// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The flock computes with nothing but + - * / and square roots, which every platform rounds alike: the same members
// come out on all of them, to the last bit. It has neighbour queries, triggered behaviours, member construction and a
// pool that reads another.

#include "../../examples/flock/Simulation.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <iostream>

using namespace Gentra;

namespace {

/// FNV-1a over the floats of all members, each from its lowest byte on, whatever the order of bytes in memory.
class Hash {
public:
    void Add(MemberPool& pool) {
        for (Util::RefCountPtr<Property> const& property : pool.GetAllMemberProperties()) {
            for (int i = 0; i < pool.GetNumMembers(); ++i) {
                auto const* const datum =
                    static_cast<unsigned char const*>(property->GetDataFromMemberSelection(pool, i));
                for (int offset = 0; offset < property->GetDataSize(); offset += 4) {
                    Add(std::bit_cast<std::uint32_t>(Datum::Read<float>(datum + offset)));
                }
            }
        }
    }
    [[nodiscard]] std::uint64_t Get() const { return hash; }

private:
    void Add(std::uint32_t bits) {
        for (int shift = 0; shift < 32; shift += 8) {
            hash = (hash ^ ((bits >> shift) & 0xFF)) * 0x100000001B3u;
        }
    }

    std::uint64_t hash = 0xCBF29CE484222325u;
};

TEST(Frames, LeaveTheSameMembersOnEveryPlatform) {
    Flock::Simulation flock(400, 20);
    for (int frame = 0; frame < 600; ++frame) {
        flock.Step();
    }
    Hash hash;
    hash.Add(flock.GetBirds());
    hash.Add(flock.GetHawks());
    std::cout << "frame hash " << std::hex << hash.Get() << std::endl; // for the table of platforms
    EXPECT_EQ(hash.Get(), 0xbe014de1496c3f6eu);
}

} // namespace
