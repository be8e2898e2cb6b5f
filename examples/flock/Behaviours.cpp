// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Behaviours.h"

#include <gentra/gentra.h>

#include <cmath>
#include <random>

namespace Flock {

namespace {

using namespace Gentra;
using Math::Vec3;

std::mt19937 randomNumbers;

float Random(float low, float high) {
    // By hand: the standard's distributions differ between libraries.
    return low + (high - low) * (static_cast<float>(randomNumbers() >> 8) / 16777216.0f);
}

float Length(Vec3 const& v) {
    return std::sqrt(v.x * v.x + v.z * v.z);
}

/// What all behaviours of birds work on: shared by name, so each bird has one of each.
class BirdBehaviour : public Behaviour {
protected:
    enum Link { POSITION, VELOCITY, FIRST_OWN };

    explicit BirdBehaviour(char const* newName) {
        SetBehaviourName(newName);
        MemberVec3(POSITION, "Position", SHARED_INTRINSIC, {});
        MemberVec3(VELOCITY, "Velocity", SHARED_INTRINSIC, {});
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
            UseMemberVec3(POSITION) = {Random(-half, half), Random(0, half), Random(-half, half)};
            UseMemberVec3(VELOCITY) = {Random(-1, 1), 0, Random(-1, 1)};
        }
    }
};

/// Pulls a bird to a leader of its own choice, and aside with the wind.
class Steer : public BirdBehaviour {
public:
    Steer() : BirdBehaviour("Steer") {
        FlexibleMemberSelection(FIRST_OWN, "Leaders");
        FlexibleVec3(FIRST_OWN + 1, "Wind");
        MemberValue(FIRST_OWN + 2, "Favourite", UNIQUE_INTRINSIC, -1);
    }
    bool TriggerLiveBehaviour() override {
        TakeMember();
        Vec3& velocity = UseMemberVec3(VELOCITY);
        Vec3 const wind = ReadFlexibleVec3(FIRST_OWN + 1);
        velocity.x += 0.01f * wind.x;
        velocity.z += 0.01f * wind.z;

        MemberSelection& leaders = UseFlexibleConstMemberSelection(FIRST_OWN);
        Property* const leaderPosition = GetPropertyByName("Position", leaders);
        float& favourite = UseMemberValue(FIRST_OWN + 2);
        if (favourite < 0) {
            favourite = std::floor(Random(0, static_cast<float>(leaders.GetNumMembers())));
        }
        Member const leader = UseMemberInSelection(leaders, static_cast<int>(favourite));
        if (leaderPosition == nullptr || !leader.IsValid()) {
            return true;
        }
        Vec3 const& position = UseMemberVec3(POSITION);
        Vec3 const& target = UseMemberVectorFromProperty(*leaderPosition, leader);
        Vec3 const way(target.x - position.x, 0, target.z - position.z);
        float const distance = Length(way);
        if (distance > 0) {
            // Towards the leader from afar, around it when near.
            float const pull = distance > 12 ? 0.12f : -0.04f;
            velocity.x += (pull * way.x - 0.10f * way.z) / distance;
            velocity.z += (pull * way.z + 0.10f * way.x) / distance;
        }
        return true;
    }
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
            float const distance = Length(way);
            if (distance > 0) {
                UseMemberVec3(VELOCITY) = {2.5f * way.x / distance, 0, 2.5f * way.z / distance};
            }
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
            strength += Random(0, 900);
        }
        strength -= 1;
        if (strength < 60) {
            UsePoolValue(FIRST_OWN + 2) += 1;
            TriggerFlexibleBehaviour(FIRST_OWN);
        }
        return true;
    }
};

/// Moves by the velocity, which it limits, and stays inside the box.
class Fly : public BirdBehaviour {
public:
    explicit Fly(char const* newName = "Fly", float newLimit = 4.0f) : BirdBehaviour(newName), limit(newLimit) {
        FlexibleValue(FIRST_OWN, "TimeElapsed");
        FlexibleValue(FIRST_OWN + 1, "Box");
    }
    bool TriggerLiveBehaviour() override {
        TakeMember();
        Vec3& velocity = UseMemberVec3(VELOCITY);
        Vec3& position = UseMemberVec3(POSITION);
        float const speed = Length(velocity);
        if (speed > limit) {
            velocity.x *= limit / speed;
            velocity.z *= limit / speed;
        }
        // Frames come as fast as the machine makes them; the example's clock ticks at least every hundredth
        // second.
        float const step = std::fmax(ReadFlexibleValue(FIRST_OWN), 0.01f) * 2.0f;
        float const half = 0.5f * ReadFlexibleValue(FIRST_OWN + 1);
        Advance(position.x, velocity.x, step, half);
        Advance(position.z, velocity.z, step, half);
        return true;
    }

private:
    static void Advance(float& coordinate, float& speed, float step, float half) {
        coordinate += speed * step;
        if (coordinate < -half || coordinate > half) {
            coordinate = coordinate < 0 ? -half : half;
            speed = -speed;
        }
    }
    float limit;
};

/// Flies, and turns now and then.
class Lead : public Fly {
public:
    Lead() : Fly("Lead", 6.0f) { MemberValue(FIRST_OWN + 2, "Course", SHARED_INTRINSIC, 0); }

    bool TriggerLiveBehaviour() override {
        TakeMember();
        float& course = UseMemberValue(FIRST_OWN + 2);
        course += Random(-0.15f, 0.15f);
        Vec3& velocity = UseMemberVec3(VELOCITY);
        velocity.x += 0.4f * std::cos(course);
        velocity.z += 0.4f * std::sin(course);
        return Fly::TriggerLiveBehaviour();
    }
};

template<class Kind>
class Factory : public BehaviourFactory {
public:
    explicit Factory(char const* newName) : BehaviourFactory(newName) { Init(); }
    Util::RefCountPtr<Behaviour> CreateBehaviour() override { return new Kind; }
};

} // namespace

void RegisterBehaviours(std::uint32_t seed) {
    randomNumbers.seed(seed);
    static Factory<Settle> const settle("Settle");
    static Factory<Steer> const steer("Steer");
    static Factory<Home> const home("Home");
    static Factory<Rest> const rest("Rest");
    static Factory<Fly> const fly("Fly");
    static Factory<Lead> const lead("Lead");
}

} // namespace Flock
