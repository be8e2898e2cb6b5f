// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// User data: a block of the host's own in each record, set up and torn down by a functor.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

namespace {

struct Inventory {
    std::uint16_t apples;
    std::uint16_t pears;
};

class Baskets : public InstanceCreationFunctor {
public:
    void CreateInstance(unsigned char* datum, int) override {
        Datum::Write(datum, Inventory{static_cast<std::uint16_t>(++created), 2});
    }
    void DeleteInstance(unsigned char* datum, int) override {
        std::cout << "a basket with " << Datum::Read<Inventory>(datum).apples << " apples goes\n";
    }

private:
    int created = 0;
};

class Count : public Behaviour {
public:
    Count() {
        SetBehaviourName("Count");
        Parameter const basket(FLEXIBLE, FIXEDSIZEDATA, "Basket", VISIBLE, nullptr);
        AddParameterToInterface(&basket);
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        apples += Datum::Read<Inventory>(ReadFlexibleUserData(0)).apples;
        return true;
    }
    int apples = 0;
};

} // namespace

int main() {
    Baskets baskets;
    MemberPool gardeners(ContextManager::GetMainContext());
    Util::RefCountPtr<Property> const basket(new FixedSizeDataProperty("Basket", sizeof(Inventory), &baskets));
    gardeners.AddMemberProperty(basket);
    gardeners.SetMemberCount(3);
    for (int i = 0; i < 3; ++i) {
        auto const held = Datum::Read<Inventory>(basket->GetDataFromMemberSelection(gardeners, i));
        std::cout << held.apples << " apples, " << held.pears << " pears\n";
    }
    Util::RefCountPtr<Count> const count(new Count);
    count->LinkPropertyToVisibleInterface(basket, 0);
    gardeners.LinkPassiveBehaviour(count);
    count->PushLinkedParamsToFastParams(); // the pool has been filled outside a pass
    gardeners.ApplyPassiveBehaviour(*count);
    std::cout << count->apples << " apples in all\n";
    gardeners.DeleteMember(gardeners.RemoveMemberByIndex(1));
}
