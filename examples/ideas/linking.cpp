// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Linking: one behaviour works on a value of each member, of the pool, or of nobody, as its slot is linked.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

class Grow : public Behaviour {
public:
    Grow() {
        SetBehaviourName("Grow");
        MemberValue(0, "Size", VISIBLE, 0);
        FlexibleValue(1, "Rate");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) += ReadFlexibleValue(1);
        return true;
    }
};

} // namespace

int main() {
    Util::RefCountPtr<ValueProperty> const size(new ValueProperty("Size"));
    Util::RefCountPtr<ValueProperty> const rates[] = {new ValueProperty("Of each member"),
                                                      new ValueProperty("Of the pool"), new ValueProperty("Of nobody")};
    int linked = 0;
    Builder const builder([&](MemberPool& pool) {
        pool.AddMemberProperty(size);
        pool.AddMemberProperty(rates[0]);
        pool.AddPoolProperty(rates[1]);
        Util::RefCountPtr<Behaviour> const grow(new Grow);
        grow->LinkPropertyToVisibleInterface(size, 0);
        grow->LinkPropertyToVisibleInterface(rates[linked], 1);
        pool.LinkActiveBehaviour(grow);
    });
    for (int i = 0; i < 3; ++i) {
        rates[i]->value = static_cast<float>(i + 1);
    }
    MemberPool trees(ContextManager::GetMainContext());
    for (; linked < 3; ++linked) {
        ContextManager::GetMainContext().ForceReconstructAllMemberPools();
        trees.SetMemberCount(1);
        trees.ProcessMemberPool();
        std::cout << rates[linked]->GetName() << ": " << Datum::Read<float>(size->GetDataFromMemberSelection(trees, 0))
                  << "\n";
    }
}
