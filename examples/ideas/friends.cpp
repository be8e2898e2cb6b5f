// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Selections as data: each member has a list of others, and a behaviour that works on all of them.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

/// Moves each opinion half-way to the mean of those that the member listens to.
class Listen : public Behaviour {
public:
    Listen() {
        SetBehaviourName("Listen");
        MemberValue(0, "Opinion", VISIBLE, 0);
        MemberValue(1, "Next", UNIQUE_INTRINSIC, 0);
        FlexibleMemberSelection(2, "Friends");
    }
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        Property& opinion = *linkedProperties[0];
        for (Member const each : members) {
            member = each;
            std::vector<Member> const& friends = UseFlexibleMemberSelection(2).GetAllMembers();
            float sum = 0;
            for (Member const other : friends) {
                sum += UseMemberValueFromProperty(opinion, other);
            }
            float const own = UseMemberValue(0);
            UseMemberValue(1) = friends.empty() ? own : 0.5f * own + 0.5f * sum / static_cast<float>(friends.size());
        }
        for (Member const each : members) { // all at once, so that the order does not matter
            member = each;
            UseMemberValue(0) = UseMemberValue(1);
        }
    }
};

} // namespace

int main() {
    Util::RefCountPtr<ValueProperty> const opinion(new ValueProperty("Opinion"));
    Util::RefCountPtr<MemberSelectionProperty> const friends(new MemberSelectionProperty("Friends"));
    MemberPool people(ContextManager::GetMainContext());
    friends->SetBasePoolID(people.GetMemberPoolID());
    Builder const builder([&](MemberPool& pool) {
        pool.AddMemberProperty(opinion);
        pool.AddMemberProperty(friends);
        Util::RefCountPtr<Behaviour> const listen(new Listen);
        listen->LinkPropertyToVisibleInterface(opinion, 0);
        listen->LinkPropertyToVisibleInterface(friends, 1);
        pool.LinkActiveBehaviour(listen);
    });
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    for (opinion->value = 0; opinion->value <= 8; opinion->value += 4) {
        people.AddNewMember();
    }
    for (int i = 0; i < 2; ++i) { // the last one listens to nobody
        friends->GetMemberSelection(people, i)->AddMember(people, people.GetMemberByIndex(i + 1));
    }
    for (int frame = 0; frame < 4; ++frame) {
        for (Member const each : people.GetAllMembers()) {
            std::cout << Datum::Read<float>(each.record + opinion->GetDataOffset()) << ' ';
        }
        std::cout << "\n";
        people.ProcessMemberPool();
    }
}
