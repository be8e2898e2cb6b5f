// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Three ways to write the same behaviour, from the shortest to the fastest.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

class Fall : public Behaviour {
public:
    Fall() {
        MemberVec3(POSITION, "Position", UNIQUE_INTRINSIC, {0, 100, 0});
        MemberVec3(VELOCITY, "Velocity", UNIQUE_INTRINSIC, {});
        FlexibleValue(GRAVITY, "Gravity");
    }

protected:
    enum Slot { POSITION, VELOCITY, GRAVITY };
    static constexpr float STEP = 0.25f;

    static void Step(Math::Vec3& position, Math::Vec3& velocity, float gravity) {
        velocity.y -= gravity * STEP;
        position.y += velocity.y * STEP;
    }
};

/// The library walks; one call for each member.
class FallOneByOne : public Fall {
public:
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        Step(UseMemberVec3(POSITION), UseMemberVec3(VELOCITY), ReadFlexibleValue(GRAVITY));
        return true;
    }
};

/// A loop of its own: no call for each member.
class FallInALoop : public Fall {
public:
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        for (Member const each : members) {
            member = each;
            Step(UseMemberVec3(POSITION), UseMemberVec3(VELOCITY), ReadFlexibleValue(GRAVITY));
        }
    }
};

/// What is the same for all members is taken out of the loop. All data must be member data or a constant for this.
class FallWithOffsets : public Fall {
public:
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        int const position = fastParams[POSITION].dataOffset;
        int const velocity = fastParams[VELOCITY].dataOffset;
        float const gravity = ReadFlexibleConstValue(GRAVITY);
        for (Member const each : members) {
            Step(*reinterpret_cast<Math::Vec3*>(each.record + position),
                 *reinterpret_cast<Math::Vec3*>(each.record + velocity), gravity);
        }
    }
};

} // namespace

int main() {
    Util::RefCountPtr<ValueProperty> const gravity(new ValueProperty("Gravity"));
    gravity->value = 10;
    Util::RefCountPtr<Behaviour> const ways[] = {new FallOneByOne, new FallInALoop, new FallWithOffsets};
    Builder const builder([&](MemberPool& pool) {
        pool.AddPoolProperty(gravity);
        for (auto const& way : ways) {
            way->LinkPropertyToVisibleInterface(gravity, 0);
            pool.LinkActiveBehaviour(way);
        }
    });
    MemberPool stones(ContextManager::GetMainContext());
    stones.ProcessMemberPool();
    stones.SetMemberCount(10'000);
    for (int frame = 0; frame < 8; ++frame) {
        stones.ProcessMemberPool();
    }
    for (char const* const name : {"Position", "Position_1", "Position_2"}) { // each behaviour has its own
        auto const at =
            Datum::Read<Math::Vec3>(stones.GetPropertyFromName(name)->GetDataFromMemberSelection(stones, 9999));
        std::cout << name << ": " << at.y << " above ground\n";
    }
}
