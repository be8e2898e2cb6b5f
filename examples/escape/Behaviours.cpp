// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The model of D. Helbing, I. Farkas and T. Vicsek, Simulating dynamical features of escape panic, Nature 407
// (2000), 487-490.

#include "Behaviours.h"

#include "../support/Building.h"

#include <algorithm>
#include <cmath>

namespace Escape {

namespace {

using namespace Gentra;
using Example::AddScaled;
using Example::Read;
using Math::Vec3;

constexpr float MASS = 80.0f;              // kg
constexpr float RELAXATION_TIME = 0.5f;    // s, to reach the desired velocity
constexpr float REPULSION = 2000.0f;       // A, in N: keeping one's distance
constexpr float REPULSION_RANGE = 0.08f;   // B, in m
constexpr float BODY_STIFFNESS = 1.2e5f;   // k, in kg/s^2: bodies that are pressed
constexpr float SLIDING_FRICTION = 2.4e5f; // kappa, in kg/(m s): bodies that slide along each other
/// Beyond this distance of centres, in m, less than a tenth of a newton is left.
constexpr float REACH = 1.5f;

/// A wall from one point to another.
struct Wall {
    float x1, z1, x2, z2;
};
constexpr Wall WALLS[] = {
    {0, 0, SIDE, 0}, {0, SIDE, SIDE, SIDE}, {0, 0, 0, SIDE}, {SIDE, 0, SIDE, DOOR_LOW}, {SIDE, DOOR_HIGH, SIDE, SIDE},
};

Example::Random randomNumbers;

float Dot(Vec3 const& a, Vec3 const& b) {
    return a.x * b.x + a.z * b.z;
}
/// What all behaviours of people work on: shared by name, so each person has one of each.
class PersonBehaviour : public Behaviour {
protected:
    enum Link { POSITION, VELOCITY, FORCE, RADIUS, PRESSURE, FIRST_OWN };

    explicit PersonBehaviour(char const* newName) {
        SetBehaviourName(newName);
        MemberVec3(POSITION, "Position", SHARED_INTRINSIC, {});
        MemberVec3(VELOCITY, "Velocity", SHARED_INTRINSIC, {});
        MemberVec3(FORCE, "Force", SHARED_INTRINSIC, {});
        MemberValue(RADIUS, "Radius", SHARED_INTRINSIC, LARGEST_RADIUS);
        MemberValue(PRESSURE, "Pressure", SHARED_INTRINSIC, 0);
    }
};

/// Gives a new person a body and a free place in the room.
class Enter : public PersonBehaviour {
public:
    Enter() : PersonBehaviour("Enter") {}

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        for (Member const& each : members) {
            member = each;
            float const radius = randomNumbers.Uniform(SMALLEST_RADIUS, LARGEST_RADIUS);
            UseMemberValue(RADIUS) = radius;
            Vec3& position = UseMemberVec3(POSITION);
            for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
                position = {randomNumbers.Uniform(radius, SIDE - radius), 0,
                            randomNumbers.Uniform(radius, SIDE - radius)};
                if (IsFree(position, radius)) {
                    break;
                }
            }
        }
    }

private:
    static constexpr int MOST_ATTEMPTS = 10'000;

    bool IsFree(Vec3 const& place, float radius) {
        // The construction behaviour has no pool of its own; the people are those who came before.
        std::vector<Member> const& others =
            ContextManager::GetMainContext().GetMemberPoolFromName("People")->GetAllMembers();
        return std::none_of(others.begin(), others.end(), [&](Member other) {
            auto const position = Read<Vec3>(other, fastParams[POSITION]);
            float const distance = radius + Read<float>(other, fastParams[RADIUS]);
            Vec3 const way(place.x - position.x, 0, place.z - position.z);
            return other != member && Dot(way, way) < distance * distance;
        });
    }
};

/// Works out the force on each person: from the wish to leave, from the others and from the walls.
class Push : public PersonBehaviour {
public:
    Push() : PersonBehaviour("Push") {
        FlexibleValue(FIRST_OWN, "DesiredSpeed");
        FlexibleValue(FIRST_OWN + 1, "TimeStep");
        PoolValue(FIRST_OWN + 2, "Damping", SHARED_INTRINSIC);
    }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        MemberPool& pool = *GetOwnerPool();
        SpatialOrganizer& organizer = GetSpatialOrganizer(pool);
        organizer.Update(0, 0, ReadFlexibleValue(FIRST_OWN + 1)); // exact for where people are now
        MemberSelection neighbours(&pool);
        float const desiredSpeed = ReadFlexibleValue(FIRST_OWN);
        float highestPressure = 0;
        for (Member const& each : members) {
            member = each;
            Body const body = BodyOf(each);
            Vec3 force = Drive(body, desiredSpeed);
            float& pressure = UseMemberValue(PRESSURE) = 0;
            neighbours.Clear();
            organizer.GetMembersInRadius(neighbours, body.position, REACH, each);
            for (Member const other : neighbours.GetAllMembers()) {
                pressure += AddContact(force, body, BodyOf(other));
            }
            for (Wall const& wall : WALLS) {
                pressure += AddContact(force, body, NearestOf(wall, body.position));
            }
            UseMemberVec3(FORCE) = force;
            highestPressure = std::max(highestPressure, pressure);
        }
        // Friction grows with the overlap as pressure does.
        UsePoolValue(FIRST_OWN + 2) = SLIDING_FRICTION / BODY_STIFFNESS * highestPressure / MASS;
    }

private:
    struct Body {
        Vec3 position;
        Vec3 velocity;
        float radius;
    };

    [[nodiscard]] Body BodyOf(Member one) const {
        return {Read<Vec3>(one, fastParams[POSITION]), Read<Vec3>(one, fastParams[VELOCITY]),
                Read<float>(one, fastParams[RADIUS])};
    }

    /// A wall pushes like a body without extent that stands at its nearest point.
    static Body NearestOf(Wall const& wall, Vec3 const& from) {
        return {{std::clamp(from.x, wall.x1, wall.x2), 0, std::clamp(from.z, wall.z1, wall.z2)}, {}, 0};
    }

    /// Everybody wants to get through the door, and on once outside.
    static Vec3 Drive(Body const& body, float desiredSpeed) {
        Vec3 direction(SIDE - body.position.x, 0, 0.5f * SIDE - body.position.z);
        if (direction.x <= 0) {
            direction = {1, 0, 0};
        }
        float const scale = desiredSpeed / std::sqrt(Dot(direction, direction));
        constexpr float PER_SPEED = MASS / RELAXATION_TIME;
        return {PER_SPEED * (scale * direction.x - body.velocity.x), 0,
                PER_SPEED * (scale * direction.z - body.velocity.z)};
    }

    /// Adds the force that the obstacle exerts on the body, and returns with how much of it bodies press each other.
    static float AddContact(Vec3& force, Body const& body, Body const& obstacle) {
        Vec3 const way(body.position.x - obstacle.position.x, 0, body.position.z - obstacle.position.z);
        float const distance = std::sqrt(Dot(way, way));
        if (distance <= 0 || distance > REACH) {
            return 0;
        }
        Vec3 const normal(way.x / distance, 0, way.z / distance);
        Vec3 const tangent(-normal.z, 0, normal.x);
        float const overlap = body.radius + obstacle.radius - distance;
        float const pressed = overlap > 0 ? overlap : 0;
        AddScaled(force, normal, REPULSION * std::exp(overlap / REPULSION_RANGE) + BODY_STIFFNESS * pressed);
        Vec3 const relative(obstacle.velocity.x - body.velocity.x, 0, obstacle.velocity.z - body.velocity.z);
        AddScaled(force, tangent, SLIDING_FRICTION * pressed * Dot(relative, tangent));
        return BODY_STIFFNESS * pressed;
    }
};

/// Moves each person by its force.
class Walk : public PersonBehaviour {
public:
    Walk() : PersonBehaviour("Walk") { FlexibleValue(FIRST_OWN, "TimeStep"); }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        float const step = ReadFlexibleValue(FIRST_OWN);
        for (Member const& each : members) {
            member = each;
            Vec3& velocity = UseMemberVec3(VELOCITY);
            AddScaled(velocity, UseMemberVec3(FORCE), step / MASS);
            AddScaled(UseMemberVec3(POSITION), velocity, step);
        }
    }
};

} // namespace

void RegisterBehaviours(std::uint32_t seed) {
    randomNumbers.Seed(seed);
    static Example::Factory<Enter> const enter("Enter");
    static Example::Factory<Push> const push("Push");
    static Example::Factory<Walk> const walk("Walk");
}

} // namespace Escape
