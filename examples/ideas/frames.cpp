// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Frames: what runs when, on whom, and how much time has passed.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

/// Tells of each member that it runs on.
class Tell : public Behaviour {
public:
    explicit Tell(char const* newName) {
        SetBehaviourName(newName);
        MemberValue(0, "Number", VISIBLE, 0);
    }
    void ProcessMembers(std::vector<Member>& members, Member& current) override {
        std::cout << "  " << name << ":";
        Behaviour::ProcessMembers(members, current);
        std::cout << "\n";
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        std::cout << " " << ReadFlexibleValue(0);
        return true;
    }
};

} // namespace

int main() {
    Util::RefCountPtr<ValueProperty> const number(new ValueProperty("Number"));
    Util::RefCountPtr<ValueProperty> const elapsed(new ValueProperty("TimeElapsed"));
    Util::RefCountPtr<Behaviour> const first(new Tell("first"));
    Util::RefCountPtr<Behaviour> const second(new Tell("second"));
    Util::RefCountPtr<Behaviour> const called(new Tell("called"));
    Builder const builder([&](MemberPool& pool) {
        pool.AddMemberProperty(number);
        pool.AddPoolProperty(elapsed);
        for (auto const& each : {first, second, called}) {
            each->LinkPropertyToVisibleInterface(number, 0);
        }
        pool.LinkActiveBehaviour(first);
        pool.LinkActiveBehaviour(second);
        pool.LinkPassiveBehaviour(called);
        for (number->value = 0; number->value < 4; number->value += 1) {
            pool.AddNewMember();
        }
    });
    MemberPool guests(ContextManager::GetMainContext());
    std::cout << "a frame, which builds the pool first\n";
    guests.ProcessMemberPool();
    std::cout << "a frame of the guest at index 2\n";
    guests.SetSingleMemberUpdateIndex(2);
    guests.ProcessMemberPool();
    guests.SetSingleMemberUpdateIndex(-1);
    std::cout << "a passive behaviour on all, on the active one, on a selection\n";
    guests.ApplyPassiveBehaviour(called);
    guests.ActivateLastMember();
    guests.ApplyPassiveBehaviourOnActiveMember(called);
    MemberSelection some(&guests);
    some.AddMembers(guests, {guests.GetMemberByIndex(3), guests.GetMemberByIndex(1)});
    guests.ApplyBehaviourOnMemberSelection(called, some);
    std::cout << (elapsed->value >= 0 && elapsed->value <= 1 ? "the last frame was no longer than a second ago\n" : "");
}
