// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Small versions of the two examples that repeat published simulations. The bands are those of the publications
// where they give numbers, and as wide as the few runs need.

#include "../../examples/alignment/Simulation.h"
#include "../../examples/escape/Simulation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace {

using namespace Gentra;

/// Persons per second through the door of a crowded room, between the 40th and the 120th who leave.
double Outflow(float desiredSpeed) {
    Escape::Simulation simulation(200, desiredSpeed, 0.002f, 1);
    std::vector<double> const& times = simulation.GetLeavingTimes();
    while (times.size() < 120 && simulation.GetTime() < 200) {
        simulation.Step();
    }
    return times.size() < 120 ? 0 : 80 / (times[119] - times[39]);
}

TEST(EscapeHost, IsSlowerWhenFaster) {
    double const calm = Outflow(0.8f);
    double const brisk = Outflow(1.75f);
    double const panic = Outflow(5.0f);
    // While it is crowded, more leave than the 0.73 a second of the whole time.
    EXPECT_GT(calm, 0.7);
    EXPECT_LT(calm, 1.3);
    EXPECT_GT(brisk, 1.15 * calm);
    EXPECT_GT(brisk, 1.15 * panic);
    EXPECT_LT(panic / 5.0, 0.5 * calm / 0.8) << "people get in each other's way";
}

TEST(EscapeHost, KeepsPeopleInTheRoomAndApart) {
    Escape::Simulation simulation(120, 3.0f, 0.002f, 2);
    MemberPool& people = simulation.GetPool();
    int const position = people.GetDataOffsetFromPropertyName("Position");
    int const radius = people.GetDataOffsetFromPropertyName("Radius");
    for (int step = 0; step < 5000; ++step) {
        simulation.Step();
    }
    ASSERT_GT(simulation.GetLeavingTimes().size(), 3u);
    ASSERT_EQ(simulation.GetNumPeople() + static_cast<int>(simulation.GetLeavingTimes().size()), 120);
    std::vector<Member> const& all = people.GetAllMembers();
    for (Member const one : all) {
        auto const at = Datum::Read<Math::Vec3>(one.record + position);
        bool const isInDoor = at.x > 14.5f && std::fabs(at.z - 7.5f) < 2;
        EXPECT_TRUE(isInDoor || (at.x > 0 && at.x < 15 && at.z > 0 && at.z < 15)) << at.x << ' ' << at.z;
        for (Member const other : all) {
            auto const there = Datum::Read<Math::Vec3>(other.record + position);
            float const touching = Datum::Read<float>(one.record + radius) + Datum::Read<float>(other.record + radius);
            EXPECT_TRUE(one == other || std::hypot(at.x - there.x, at.z - there.z) > 0.7f * touching);
        }
    }
}

TEST(EscapeHost, RepeatsItselfForASeed) {
    auto const run = [](std::uint32_t seed) {
        Escape::Simulation simulation(40, 2.0f, 0.002f, seed);
        while (simulation.GetNumPeople() > 20 && simulation.GetTime() < 60) {
            simulation.Step();
        }
        return simulation.GetLeavingTimes();
    };
    std::vector<double> const first = run(1);
    EXPECT_EQ(first.size(), 20u);
    EXPECT_EQ(run(1), first);
    EXPECT_NE(run(2), first);
}

/// The mean order parameter in the steady state.
double MeanOrder(int particles, float side, float noise, int steps) {
    Alignment::Simulation simulation(particles, side, noise, 1);
    double sum = 0;
    for (int step = -steps / 4; step < steps; ++step) {
        simulation.Step();
        sum += step >= 0 ? simulation.Order() : 0;
    }
    return sum / steps;
}

TEST(AlignmentHost, OrdersLessWithMoreNoise) {
    struct Crowd {
        int particles;
        float side;
        int steps;
    };
    for (Crowd const& crowd : {Crowd{40, 3.1f, 1200}, {100, 5.0f, 600}, {400, 10.0f, 300}}) {
        SCOPED_TRACE(crowd.particles);
        double previous = 1.01;
        for (float const noise : {0.5f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f}) {
            double const order = MeanOrder(crowd.particles, crowd.side, noise, crowd.steps);
            double const half = 0.5 * static_cast<double>(noise);
            EXPECT_LT(order, previous);
            EXPECT_LT(order, noise <= 2 ? 1.01 * std::sin(half) / half : 1.0);
            EXPECT_GT(order, noise <= 1 ? 0.8 : 0.0);
            previous = order;
        }
        double const random = std::sqrt(std::numbers::pi) / (2 * std::sqrt(crowd.particles));
        double const order = MeanOrder(crowd.particles, crowd.side, 2 * std::numbers::pi_v<float>, crowd.steps);
        EXPECT_NEAR(order, random, 0.1 * random);
    }
}

} // namespace
