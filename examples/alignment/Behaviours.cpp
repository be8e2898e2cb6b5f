// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// The model of T. Vicsek, A. Czirok, E. Ben-Jacob, I. Cohen and O. Shochet, Novel type of phase transition in a
// system of self-driven particles, Physical Review Letters 75 (1995), 1226-1229.

#include "Behaviours.h"

#include "../support/Building.h"

#include <cmath>

namespace Alignment {

namespace {

using namespace Gentra;
using Example::Read;
using Math::Vec3;

constexpr float PI = 3.14159265f;

Example::Random randomNumbers;

/// What all behaviours of particles work on: shared by name, so each particle has one of each.
class ParticleBehaviour : public Behaviour {
protected:
    enum Link { POSITION, HEADING, NEW_HEADING, SIDE, FIRST_OWN };

    explicit ParticleBehaviour(char const* newName) {
        SetBehaviourName(newName);
        MemberVec3(POSITION, "Position", SHARED_INTRINSIC, {});
        MemberValue(HEADING, "Heading", SHARED_INTRINSIC, 0);
        MemberValue(NEW_HEADING, "NewHeading", SHARED_INTRINSIC, 0);
        FlexibleValue(SIDE, "Side");
    }
};

/// Gives a new particle a place in the square and a heading.
class Scatter : public ParticleBehaviour {
public:
    Scatter() : ParticleBehaviour("Scatter") {}

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        float const side = ReadFlexibleValue(SIDE);
        for (Member const& each : members) {
            member = each;
            UseMemberVec3(POSITION) = {randomNumbers.Uniform(0, side), 0, randomNumbers.Uniform(0, side)};
            UseMemberValue(HEADING) = randomNumbers.Uniform(-PI, PI);
        }
    }
};

/// Takes the mean heading of all within the radius, the particle itself included, and some noise.
class Align : public ParticleBehaviour {
public:
    Align() : ParticleBehaviour("Align") {
        FlexibleValue(FIRST_OWN, "Radius");
        FlexibleValue(FIRST_OWN + 1, "Noise");
        FlexibleValue(FIRST_OWN + 2, "TimeStep");
    }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        SpatialOrganizer& organizer = GetSpatialOrganizer(*GetOwnerPool());
        organizer.Update(0, 0, ReadFlexibleValue(FIRST_OWN + 2)); // exact for where particles are now
        MemberSelection neighbours(GetOwnerPool());
        float const noise = ReadFlexibleValue(FIRST_OWN + 1);
        for (Member const& each : members) {
            member = each;
            neighbours.Clear();
            FindNeighbours(neighbours, organizer, UseMemberVec3(POSITION));
            float sine = 0;
            float cosine = 0;
            for (Member const neighbour : neighbours.GetAllMembers()) {
                float const heading = Read<float>(neighbour, fastParams[HEADING]);
                sine += std::sin(heading);
                cosine += std::cos(heading);
            }
            UseMemberValue(NEW_HEADING) = std::atan2(sine, cosine) + randomNumbers.Uniform(-0.5f * noise, 0.5f * noise);
        }
    }

private:
    /// The square is periodic, the organizer is not: near an edge it is asked again from where the particle
    /// would be beyond the opposite one, and in a corner from three such places.
    void FindNeighbours(MemberSelection& found, SpatialOrganizer& organizer, Vec3 const& position) const {
        float const side = ReadFlexibleValue(SIDE);
        float const radius = ReadFlexibleValue(FIRST_OWN);
        auto const beyond = [&](float coordinate) {
            return coordinate < radius          ? coordinate + side
                   : coordinate > side - radius ? coordinate - side
                                                : coordinate;
        };
        float const x = beyond(position.x);
        float const z = beyond(position.z);
        organizer.GetMembersInRadius(found, position, radius, Member::NIL);
        if (x != position.x) {
            organizer.GetMembersInRadius(found, {x, 0, position.z}, radius, Member::NIL);
        }
        if (z != position.z) {
            organizer.GetMembersInRadius(found, {position.x, 0, z}, radius, Member::NIL);
        }
        if (x != position.x && z != position.z) {
            organizer.GetMembersInRadius(found, {x, 0, z}, radius, Member::NIL);
        }
    }
};

/// Goes on along the heading that everybody could see, and takes the new one.
class Move : public ParticleBehaviour {
public:
    Move() : ParticleBehaviour("Move") {
        FlexibleValue(FIRST_OWN, "Speed");
        FlexibleValue(FIRST_OWN + 1, "TimeStep");
    }

    void ProcessMembers(std::vector<Member>& members, Member&) override {
        float const way = ReadFlexibleValue(FIRST_OWN) * ReadFlexibleValue(FIRST_OWN + 1);
        float const side = ReadFlexibleValue(SIDE);
        for (Member const& each : members) {
            member = each;
            Vec3& position = UseMemberVec3(POSITION);
            float& heading = UseMemberValue(HEADING);
            position.x = Wrapped(position.x + way * std::cos(heading), side);
            position.z = Wrapped(position.z + way * std::sin(heading), side);
            heading = UseMemberValue(NEW_HEADING);
        }
    }

private:
    static float Wrapped(float coordinate, float side) {
        return coordinate < 0 ? coordinate + side : coordinate >= side ? coordinate - side : coordinate;
    }
};

} // namespace

void RegisterBehaviours(std::uint32_t seed) {
    randomNumbers.Seed(seed);
    static Example::Factory<Scatter> const scatter("Scatter");
    static Example::Factory<Align> const align("Align");
    static Example::Factory<Move> const move("Move");
}

} // namespace Alignment
