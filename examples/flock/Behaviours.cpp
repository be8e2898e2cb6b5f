// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Separation, alignment and cohesion: C. Reynolds, Flocks, herds and schools: a distributed behavioral model,
// Computer Graphics 21 (1987), 25-34.

#include "Behaviours.h"

#include "../support/Building.h"

#include <algorithm>
#include <cmath>

namespace Flock {

namespace {

using namespace Gentra;
using Example::AddScaled;
using Example::Read;
using Math::Vec3;

Example::Random randomNumbers;

float Length(Vec3 const& v) {
    return std::sqrt(v.x * v.x + v.z * v.z);
}
/// What all behaviours of birds work on: shared by name, so each bird has one of each.
class BirdBehaviour : public Behaviour {
protected:
    enum Link { POSITION, VELOCITY, STEERING, FIRST_OWN };

    explicit BirdBehaviour(char const* newName) {
        SetBehaviourName(newName);
        MemberVec3(POSITION, "Position", SHARED_INTRINSIC, {});
        MemberVec3(VELOCITY, "Velocity", SHARED_INTRINSIC, {});
        MemberVec3(STEERING, "Steering", SHARED_INTRINSIC, {});
    }
    /// Makes the pool's active member the one in work.
    void TakeMember() { member = GetOwnerPool()->ActiveMember(); }
};

/// Places a new bird somewhere in the box.
class Settle : public BirdBehaviour {
public:
    Settle() : BirdBehaviour("Settle") { FlexibleValue(FIRST_OWN, "Box"); }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        float const half = 0.5f * ReadFlexibleValue(FIRST_OWN);
        for (Member const& each : members) {
            member = each;
            UseMemberVec3(POSITION) = {randomNumbers.Uniform(-half, half), 0, randomNumbers.Uniform(-half, half)};
            UseMemberVec3(VELOCITY) = {randomNumbers.Uniform(-1, 1), 0, randomNumbers.Uniform(-1, 1)};
        }
    }
};

/// Keeps a bird near its neighbours, on their course and out of their way.
class Gather : public BirdBehaviour {
public:
    Gather() : BirdBehaviour("Gather") {}

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        SpatialOrganizer& organizer = GetSpatialOrganizer(*GetOwnerPool());
        organizer.Rebuild(); // for where the birds are now, also when no time has passed
        organizer.Refresh();
        MemberSelection neighbours(GetOwnerPool());
        Basic_Parameter const positionOf = fastParams[POSITION];
        Basic_Parameter const velocityOf = fastParams[VELOCITY];
        for (Member const& each : members) {
            auto const position = Read<Vec3>(each, positionOf);
            neighbours.Clear();
            organizer.GetMembersInRadius(neighbours, position, SIGHT, each);
            std::vector<Member> const& seen = neighbours.GetAllMembers();
            Vec3 apart;
            Vec3 course;
            Vec3 middle;
            for (Member const neighbour : seen) {
                auto const other = Read<Vec3>(neighbour, positionOf);
                Vec3 const way(position.x - other.x, 0, position.z - other.z);
                float const squared = way.x * way.x + way.z * way.z;
                float const crowding = std::max(ROOM * ROOM / (squared + 0.01f) - 1, 0.0f);
                AddScaled(apart, way, crowding);
                AddScaled(course, Read<Vec3>(neighbour, velocityOf), 1);
                AddScaled(middle, way, -1);
            }
            member = each;
            Vec3& steering = UseMemberVec3(STEERING) = {};
            if (!seen.empty()) {
                float const share = 1 / static_cast<float>(seen.size());
                Vec3 const& velocity = UseMemberVec3(VELOCITY);
                AddScaled(steering, apart, SEPARATION);
                AddScaled(steering, {share * course.x - velocity.x, 0, share * course.z - velocity.z}, ALIGNMENT);
                AddScaled(steering, middle, COHESION * share);
            }
        }
    }

private:
    static constexpr float SIGHT = 2.0f; // how far a bird looks
    static constexpr float ROOM = 0.6f;  // that it wants for itself
    static constexpr float SEPARATION = 6.0f;
    static constexpr float ALIGNMENT = 2.0f;
    static constexpr float COHESION = 3.0f;
};

/// Drives a bird off hawks, and aside with the wind.
class Flee : public BirdBehaviour {
public:
    Flee() : BirdBehaviour("Flee") {
        FlexibleMemberSelection(FIRST_OWN, "Hawks");
        FlexibleVec3(FIRST_OWN + 1, "Wind");
        MemberValue(FIRST_OWN + 2, "Courage", UNIQUE_INTRINSIC, -1);
    }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        MemberSelection& hawks = UseFlexibleConstMemberSelection(FIRST_OWN);
        Property* const hawkPosition = GetPropertyByName("Position", hawks);
        Vec3 const wind = ReadFlexibleVec3(FIRST_OWN + 1);
        for (Member const& each : members) {
            member = each;
            Vec3& steering = UseMemberVec3(STEERING);
            AddScaled(steering, wind, 1);
            float& courage = UseMemberValue(FIRST_OWN + 2);
            if (courage < 0) {
                courage = randomNumbers.Uniform(0, 3);
            }
            if (hawkPosition == nullptr) {
                continue;
            }
            Vec3 const& position = UseMemberVec3(POSITION);
            for (Member const hawk : hawks.GetAllMembers()) {
                Vec3 const& danger = UseMemberVectorFromProperty(*hawkPosition, hawk);
                Vec3 const way(position.x - danger.x, 0, position.z - danger.z);
                float const distance = Length(way);
                if (distance > 0 && distance < FEAR - courage) {
                    AddScaled(steering, way, PANIC / distance);
                }
            }
        }
    }

private:
    static constexpr float FEAR = 8.0f; // distance at which the most timid bird flees
    static constexpr float PANIC = 30.0f;
};

/// Turns a tired bird towards home. Passive: it does not handle triggers itself, so its pool runs it on the
/// bird that is active when it is triggered.
class Home : public BirdBehaviour {
public:
    Home() : BirdBehaviour("Home") { FlexibleVec3(FIRST_OWN, "Home"); }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        Vec3 const home = ReadFlexibleVec3(FIRST_OWN);
        for (Member const& each : members) {
            member = each;
            Vec3 const& position = UseMemberVec3(POSITION);
            Vec3 const way(home.x - position.x, 0, home.z - position.z);
            AddScaled(UseMemberVec3(STEERING), way, 8 / std::max(Length(way), 1.0f));
        }
    }
};

/// Counts a bird's strength down, and sends it home for a while when there is none left.
class Rest : public BirdBehaviour {
public:
    Rest() : BirdBehaviour("Rest") {
        FlexibleBehaviourTrigger(FIRST_OWN, "GoHome");
        MemberValue(FIRST_OWN + 1, "Strength", SHARED_INTRINSIC, 0);
        PoolValue(FIRST_OWN + 2, "Tired birds", SHARED_INTRINSIC);
    }
    void CheckForUpdate() override {
        if (ReadyToUse()) {
            UsePoolValue(FIRST_OWN + 2) = 0;
        }
    }
    bool TriggerLiveBehaviour() override {
        TakeMember();
        float& strength = UseMemberValue(FIRST_OWN + 1);
        if (strength < 1) {
            strength += randomNumbers.Uniform(0, 4000);
        }
        strength -= 1;
        if (strength < 60) {
            UsePoolValue(FIRST_OWN + 2) += 1;
            TriggerFlexibleBehaviour(FIRST_OWN);
        }
        return true;
    }
};

/// Circles on a course that changes now and then.
class Hunt : public BirdBehaviour {
public:
    Hunt() : BirdBehaviour("Hunt") { MemberVec3(FIRST_OWN, "Course", SHARED_INTRINSIC, {1, 0, 0}); }

    bool TriggerLiveBehaviour() override {
        TakeMember();
        Vec3& course = UseMemberVec3(FIRST_OWN);
        AddScaled(course, {-course.z, 0, course.x}, randomNumbers.Uniform(-0.15f, 0.15f));
        float const length = Length(course);
        course = {course.x / length, 0, course.z / length};
        UseMemberVec3(STEERING) = {12 * course.x, 0, 12 * course.z};
        return true;
    }
};

/// Moves by velocity and steering, not faster than the limit, and turns back at the edge of the box.
class Fly : public BirdBehaviour {
public:
    Fly() : BirdBehaviour("Fly") {
        FlexibleValue(FIRST_OWN, "TimeStep");
        FlexibleValue(FIRST_OWN + 1, "Box");
        FlexibleValue(FIRST_OWN + 2, "Limit");
    }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        float const step = ReadFlexibleValue(FIRST_OWN);
        float const half = 0.5f * ReadFlexibleValue(FIRST_OWN + 1);
        float const limit = ReadFlexibleValue(FIRST_OWN + 2);
        for (Member const& each : members) {
            member = each;
            Vec3& velocity = UseMemberVec3(VELOCITY);
            Vec3& position = UseMemberVec3(POSITION);
            AddScaled(velocity, UseMemberVec3(STEERING), step);
            velocity.x += step * TurnBack(position.x, half);
            velocity.z += step * TurnBack(position.z, half);
            float const speed = std::max(Length(velocity), 0.01f);
            float const wanted = std::clamp(speed, 0.6f * limit, limit);
            velocity.x *= wanted / speed;
            velocity.z *= wanted / speed;
            AddScaled(position, velocity, step);
            position.x = std::clamp(position.x, -half, half);
            position.z = std::clamp(position.z, -half, half);
        }
    }

private:
    static float TurnBack(float coordinate, float half) {
        constexpr float MARGIN = 6.0f;
        float const beyond = std::fabs(coordinate) - (half - MARGIN);
        return beyond > 0 ? std::copysign(4 * beyond, -coordinate) : 0;
    }
};

} // namespace

void RegisterBehaviours(std::uint32_t seed) {
    randomNumbers.Seed(seed);
    static Example::Factory<Settle> const settle("Settle");
    static Example::Factory<Gather> const gather("Gather");
    static Example::Factory<Flee> const flee("Flee");
    static Example::Factory<Home> const home("Home");
    static Example::Factory<Rest> const rest("Rest");
    static Example::Factory<Hunt> const hunt("Hunt");
    static Example::Factory<Fly> const fly("Fly");
}

} // namespace Flock
