// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A behaviour of one's own: slots for what it needs, and a walk over the members that looks at others near by.
#include "Builder.h"

#include <cmath>
#include <iostream>

using namespace Gentra;

namespace {

/// Moves each member away from the members of a selection that are nearer than a radius.
class Avoid : public Behaviour {
public:
    Avoid() {
        SetBehaviourName("Avoid");
        MemberVec3(POSITION, "Position", SHARED_INTRINSIC, {});
        FlexibleMemberSelection(OTHERS, "Others");
        FlexibleValue(RADIUS, "Radius");
        FlexibleValue(STEP, "Step");
    }

    void ProcessMembers(std::vector<Member>& members, Member& current) override {
        MemberSelection near(nullptr);
        for (Member const each : members) {
            current = member = each;
            MemberSelection& others = UseFlexibleMemberSelection(OTHERS);
            if (near.GetBasePool() != others.GetBasePool()) { // once, where all members see the same others
                near = MemberSelection(others.GetBasePool());
            }
            StepAwayFrom(others, near);
        }
    }

private:
    enum Slot { POSITION, OTHERS, RADIUS, STEP };

    void StepAwayFrom(MemberSelection& others, MemberSelection& near) {
        near.Clear();
        Math::Vec3& position = UseMemberVec3(POSITION);
        GetSpatialOrganizer(others).GetMembersInRadius(near, position, ReadFlexibleValue(RADIUS), member);
        Property* const theirs = GetPropertyByName("Position", others);
        for (Member const other : near.GetAllMembers()) {
            Math::Vec3 const& from = UseMemberVectorFromProperty(*theirs, other);
            float const distance = std::hypot(position.x - from.x, position.z - from.z);
            if (distance > 0) {
                position.x += ReadFlexibleValue(STEP) * (position.x - from.x) / distance;
                position.z += ReadFlexibleValue(STEP) * (position.z - from.z) / distance;
            }
        }
    }
};

} // namespace

int main() {
    MemberPool cats(ContextManager::GetMainContext());
    MemberPool mice(ContextManager::GetMainContext());
    Util::RefCountPtr<VectorProperty> const cat(new VectorProperty("Position"));
    Util::RefCountPtr<MemberSelectionProperty> const hunters(new MemberSelectionProperty("Hunters"));
    Util::RefCountPtr<ValueProperty> const sight(new ValueProperty("Sight"));
    Util::RefCountPtr<ValueProperty> const pace(new ValueProperty("Pace"));
    sight->value = 5;
    pace->value = 1;
    Builder const builder([&](MemberPool& pool) {
        if (&pool == &cats) {
            cats.AddMemberProperty(cat);
            cats.SetMemberCount(1);
            return;
        }
        hunters->SetBasePoolID(cats.GetMemberPoolID());
        mice.AddPoolProperty(hunters);
        mice.AddPoolProperty(sight);
        mice.AddPoolProperty(pace);
        Util::RefCountPtr<Behaviour> const avoid(new Avoid);
        avoid->LinkPropertyToVisibleInterface(hunters, 0); // the slots that the host sees
        avoid->LinkPropertyToVisibleInterface(sight, 1);
        avoid->LinkPropertyToVisibleInterface(pace, 2);
        mice.LinkActiveBehaviour(avoid);
    });
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    hunters->AddMemberToSelection(cats, cats.GetMemberByIndex(0));
    mice.SetMemberCount(1);
    Util::RefCountPtr<Property> const mouse = mice.GetPropertyFromName("Position");
    Math::Vec3 start(3, 0, 0);
    mouse->SetDataToMemberSelection(&start, mice, 0);
    for (int frame = 0; frame < 4; ++frame) {
        mice.ProcessMemberPool();
        auto const at = Datum::Read<Math::Vec3>(mouse->GetDataFromMemberSelection(mice, 0));
        std::cout << "the mouse is " << at.x << " away\n";
    }
}
