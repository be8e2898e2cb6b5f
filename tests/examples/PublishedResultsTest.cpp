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

/// A property of a member, to be set.
template<class T>
void Set(MemberPool& pool, int member, char const* name, T const& value) {
    Datum::Write(pool.GetMemberByIndex(member).record + pool.GetDataOffsetFromPropertyName(name), value);
}
template<class T>
T Get(MemberPool& pool, int member, char const* name) {
    return Datum::Read<T>(pool.GetMemberByIndex(member).record + pool.GetDataOffsetFromPropertyName(name));
}

TEST(EscapeHost, PushesByTheFormula) {
    Escape::Simulation simulation(2, 2.0f, 0.001f, 1);
    MemberPool& people = simulation.GetPool();
    // One stands at the lower wall, the other 0.55 m to the right of it and too near by 0.05 m.
    Math::Vec3 const places[] = {{4.0f, 0, 0.28f}, {4.55f, 0, 0.28f}};
    Math::Vec3 const velocities[] = {{1.0f, 0, -0.5f}, {0.5f, 0, 0.25f}};
    for (int i = 0; i < 2; ++i) {
        Set(people, i, "Position", places[i]);
        Set(people, i, "Velocity", velocities[i]);
        Set(people, i, "Radius", 0.3f);
    }
    simulation.Step();
    double const toDoor = std::hypot(15 - 4.0, 7.5 - 0.28);
    double const driveX = 80 * (2 * (15 - 4.0) / toDoor - 1.0) / 0.5;
    double const driveZ = 80 * (2 * (7.5 - 0.28) / toDoor + 0.5) / 0.5;
    double const body = 2000 * std::exp(0.05 / 0.08) + 1.2e5 * 0.05; // pushes back, to the left
    double const wall = 2000 * std::exp(0.02 / 0.08) + 1.2e5 * 0.02; // pushes up
    double const slidingBody = 2.4e5 * 0.05 * (0.25 + 0.5);          // the other drags it up
    double const slidingWall = 2.4e5 * 0.02 * 1.0;                   // the wall brakes it
    auto const force = Get<Math::Vec3>(people, 0, "Force");
    EXPECT_NEAR(force.x, driveX - body - slidingWall, 10);
    EXPECT_NEAR(force.z, driveZ + wall + slidingBody, 10);
    EXPECT_NEAR(Get<Math::Vec3>(people, 0, "Velocity").x, 1.0 + 0.001 * static_cast<double>(force.x) / 80, 1e-4);
}

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
    EXPECT_GT(panic, 0.5);
    EXPECT_LT(panic / 5.0, 0.5 * calm / 0.8) << "people get in each other's way";
}

TEST(EscapeHost, KeepsPeopleInTheRoomAndApart) {
    struct Row {
        int people;
        float speed;
    };
    for (Row const& row : {Row{120, 3.0f}, {300, 10.0f}}) {
        SCOPED_TRACE(row.people);
        Escape::Simulation simulation(row.people, row.speed, 0.002f, 2);
        MemberPool& people = simulation.GetPool();
        while (simulation.GetTime() < 3) {
            simulation.Step();
        }
        ASSERT_EQ(simulation.GetNumPeople() + static_cast<int>(simulation.GetLeavingTimes().size()), row.people);
        for (int i = 0; i < people.GetNumMembers(); ++i) {
            auto const at = Get<Math::Vec3>(people, i, "Position");
            bool const isInDoor = at.x > 14.9f && std::fabs(at.z - 7.5f) < 1;
            EXPECT_TRUE(isInDoor || (at.x > 0 && at.x < 15 && at.z > 0 && at.z < 15)) << at.x << ' ' << at.z;
            EXPECT_LT(std::hypot(Get<Math::Vec3>(people, i, "Velocity").x, Get<Math::Vec3>(people, i, "Velocity").z),
                      1.1f * row.speed);
            for (int j = 0; j < i; ++j) {
                auto const there = Get<Math::Vec3>(people, j, "Position");
                float const touching = Get<float>(people, i, "Radius") + Get<float>(people, j, "Radius");
                EXPECT_GT(std::hypot(at.x - there.x, at.z - there.z), 0.6f * touching);
            }
        }
    }
}

TEST(AlignmentHost, TurnsAllAtOnce) {
    // The first two see each other across the edge, the third sees the second only, the fourth nobody.
    Alignment::Simulation simulation(4, 10.0f, 0, 1);
    MemberPool& particles = simulation.GetPool();
    float const half = 0.5f * std::numbers::pi_v<float>;
    Math::Vec3 const places[] = {{9.7f, 0, 9.9f}, {0.3f, 0, 0.1f}, {1.2f, 0, 0.1f}, {5, 0, 5}};
    float const headings[] = {0, half, half, -half};
    for (int i = 0; i < 4; ++i) {
        Set(particles, i, "Position", places[i]);
        Set(particles, i, "Heading", headings[i]);
    }
    simulation.Step();
    float const expected[] = {0.5f * half, std::atan2(2.0f, 1.0f), half, -half};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(Get<float>(particles, i, "Heading"), expected[i], 1e-5f);
    }
    EXPECT_NEAR(Get<Math::Vec3>(particles, 0, "Position").x, 9.73f, 1e-5f) << "along the old heading";
    EXPECT_NEAR(Get<Math::Vec3>(particles, 1, "Position").z, 0.13f, 1e-5f);
    EXPECT_NEAR(simulation.Order(), 0.25 * std::hypot(std::sqrt(0.5) + std::sqrt(0.2), std::sqrt(0.5) + std::sqrt(0.8)),
                1e-5);
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
            EXPECT_GT(order, noise <= 1 ? 0.9 : noise <= 3 ? 0.4 : 0.0);
            previous = order;
        }
        double const random = std::sqrt(std::numbers::pi) / (2 * std::sqrt(crowd.particles));
        double const order = MeanOrder(crowd.particles, crowd.side, 2 * std::numbers::pi_v<float>, crowd.steps);
        EXPECT_NEAR(order, random, 0.1 * random);
    }
}

} // namespace
