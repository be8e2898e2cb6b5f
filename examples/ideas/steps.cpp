// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Time: a step of the host's own, fixed or none, instead of the clock's. And members that the host makes by itself.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

class Fall : public Behaviour {
public:
    Fall() {
        SetBehaviourName("Fall");
        MemberValue(0, "Height", SHARED_INTRINSIC, 100);
        FlexibleValue(1, "TimeStep");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) -= 10 * ReadFlexibleValue(1);
        return true;
    }
};

/// Looks at all members of another pool: a pool is the selection of its members.
class Watch : public Behaviour {
public:
    Watch() {
        SetBehaviourName("Watch");
        FlexibleMemberSelection(0, "Watched");
    }
    void ProcessMembers(std::vector<Member>&, Member&) override {
        MemberSelection& stones = UseFlexibleMemberSelection(0);
        Property* const height = GetPropertyByName("Height", stones);
        for (Member const stone : stones.GetAllMembers()) {
            std::cout << UseMemberValueFromProperty(*height, stone) << ' ';
        }
        std::cout << "high\n";
    }
};

} // namespace

int main() {
    MemberPool stones(ContextManager::GetMainContext());
    MemberPool watchers(ContextManager::GetMainContext());
    Util::RefCountPtr<ValueProperty> const step(new ValueProperty("TimeStep"));
    Util::RefCountPtr<MemberSelectionProperty> const watched(new MemberSelectionProperty("Watched"));
    MemberSelection* everybody = &stones;
    watched->SetPoolData(&everybody); // in no pool: one that enters a pool gets a selection of its own
    Builder const builder([&](MemberPool& pool) {
        Util::RefCountPtr<Behaviour> const behaviour(&pool == &stones ? static_cast<Behaviour*>(new Fall) : new Watch);
        if (&pool == &stones) {
            pool.AddPoolProperty(step);
            behaviour->LinkPropertyToVisibleInterface(step, 0);
        } else {
            behaviour->LinkPropertyToVisibleInterface(watched, 0);
        }
        pool.LinkActiveBehaviour(behaviour);
    });
    ContextManager::GetMainContext().ForceConstructAllMemberPools();

    stones.SetMemberCount(1);
    // A member that nobody lists until it is complete.
    Member const second = stones.CreateNewMember();
    Datum::Write(second.record + stones.GetDataOffsetFromPropertyName("Height"), 50.0f);
    stones.AddMember(stones, second);

    for (float const seconds : {0.5f, 0.5f, 0.0f, 0.5f}) { // a fixed step, but for a pause
        step->value = seconds;
        stones.ProcessMemberPool();
        watchers.ProcessMemberPool();
    }
}
