// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Intrinsic slots: the pool makes their properties. Shared ones are one for all behaviours that name it, unique ones
// one for each.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

class Step : public Behaviour {
public:
    explicit Step(char const* newName) {
        SetBehaviourName(newName);
        MemberValue(0, "Distance", SHARED_INTRINSIC, 0);
        MemberValue(1, "Steps", UNIQUE_INTRINSIC, 0);
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) += 0.5f;
        UseMemberValue(1) += 1;
        return true;
    }
};

} // namespace

int main() {
    Builder const builder([](MemberPool& pool) {
        pool.LinkActiveBehaviour(new Step("Walk"));
        pool.LinkActiveBehaviour(new Step("Run"));
    });
    MemberPool people(ContextManager::GetMainContext());
    people.ProcessMemberPool();
    people.SetMemberCount(1);
    people.ProcessMemberPool();
    people.ActivateFirstMember();
    for (Util::RefCountPtr<Property> const& property : people.GetAllMemberProperties()) {
        std::cout << property->GetName() << " " << Datum::Read<float>(property->GetData()) << "\n";
    }
}
