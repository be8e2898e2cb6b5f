// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Triggers: a behaviour that runs another one, which the host chooses, when something happens.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

/// Counts down and triggers what it is linked to at zero.
class Countdown : public Behaviour {
public:
    Countdown() {
        SetBehaviourName("Countdown");
        MemberValue(0, "Fuse", SHARED_INTRINSIC, 3);
        FlexibleBehaviourTrigger(1, "At zero");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        float& fuse = UseMemberValue(0);
        fuse -= 1;
        if (fuse == 0) {
            TriggerFlexibleBehaviour(1); // on the active member, that is, this one
        }
        return true;
    }
};

/// What happens to one member.
class Light : public Behaviour {
public:
    Light() {
        SetBehaviourName("Light");
        MemberValue(0, "Colour", VISIBLE, 0);
    }
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        for (Member const each : members) {
            member = each;
            std::cout << "  a rocket lights up in colour " << UseMemberValue(0) << "\n";
        }
    }
};

} // namespace

int main() {
    Util::RefCountPtr<ValueProperty> const colour(new ValueProperty("Colour"));
    Util::RefCountPtr<Behaviour> const light(new Light);
    Builder const builder([&](MemberPool& pool) {
        pool.AddMemberProperty(colour);
        light->LinkPropertyToVisibleInterface(colour, 0);
        pool.LinkPassiveBehaviour(light); // runs when it is triggered
        Util::RefCountPtr<BehaviourProperty> const atZero(new BehaviourProperty("At zero"));
        atZero->SetBehaviour(light.Get());
        Util::RefCountPtr<Behaviour> const countdown(new Countdown);
        countdown->LinkPropertyToVisibleInterface(atZero, 0);
        pool.LinkActiveBehaviour(countdown);
    });
    MemberPool rockets(ContextManager::GetMainContext());
    rockets.ProcessMemberPool();
    for (int frame = 1; frame <= 5; ++frame) {
        if (frame <= 2) {
            colour->value = static_cast<float>(frame);
            rockets.AddNewMember();
        }
        std::cout << "frame " << frame << "\n";
        rockets.ProcessMemberPool();
    }
}
