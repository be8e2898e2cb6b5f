// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Behaviours.h"

#include "../support/Building.h"

#include <cmath>

using namespace Gentra;

namespace Console {

namespace {

/// Adds a value to a value.
class Add : public Behaviour {
public:
    Add() {
        SetBehaviourName("Add");
        MemberValue(0, "Value", VISIBLE, 0);
        FlexibleValue(1, "Amount");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) += ReadFlexibleValue(1);
        return true;
    }
};

/// Moves by a vector.
class Move : public Behaviour {
public:
    Move() {
        SetBehaviourName("Move");
        MemberVec3(0, "Position", SHARED_INTRINSIC, {});
        FlexibleVec3(1, "Velocity");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        Math::Vec3& position = UseMemberVec3(0);
        Math::Vec3 const velocity = ReadFlexibleVec3(1);
        position = {position.x + velocity.x, position.y + velocity.y, position.z + velocity.z};
        return true;
    }
};

/// Keeps members apart: each steps away from the others that are nearer than a radius.
class Repel : public Behaviour {
public:
    Repel() {
        SetBehaviourName("Repel");
        MemberVec3(0, "Position", SHARED_INTRINSIC, {});
        FlexibleValue(1, "Radius");
    }
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        MemberPool& pool = *GetOwnerPool();
        SpatialOrganizer& organizer = GetSpatialOrganizer(pool);
        organizer.Rebuild();
        organizer.Refresh();
        MemberSelection near(&pool);
        for (Member const each : members) {
            member = each;
            Math::Vec3& position = UseMemberVec3(0);
            near.Clear();
            organizer.GetMembersInRadius(near, position, ReadFlexibleValue(1), each);
            for (Member const other : near.GetAllMembers()) {
                auto const from = Example::Read<Math::Vec3>(other, fastParams[0]);
                float const distance = std::hypot(position.x - from.x, position.z - from.z);
                // Members at one place go opposite ways.
                float const x = distance > 0 ? (position.x - from.x) / distance : (each.record < other.record ? -1 : 1);
                float const z = distance > 0 ? (position.z - from.z) / distance : 0;
                Example::AddScaled(position, {x, 0, z}, 0.5f * (ReadFlexibleValue(1) - distance));
            }
        }
    }
};

} // namespace

void RegisterBehaviours() {
    static Example::Factory<Add> const add("Add");
    static Example::Factory<Move> const move("Move");
    static Example::Factory<Repel> const repel("Repel");
}

} // namespace Console
