// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

namespace {

using namespace Gentra;
using Support::TestBehaviour;

class Factory : public BehaviourFactory {
public:
    Factory(char const* key, char const* newProduct) : BehaviourFactory(key), product(newProduct) {}
    Util::RefCountPtr<Behaviour> CreateBehaviour() override { return new TestBehaviour(product); }

private:
    char const* product;
};

// The registry is never emptied, so one test tells its whole story, with factories that outlive it.
TEST(Registry, ListsFactoriesByNameAndMakesBehaviours) {
    EXPECT_TRUE(ContextManager::GetBehavioursByName().empty());
    EXPECT_EQ(ContextManager::GetNewBehaviourFromIndex(0)->GetName(), "");
    static Factory wander("Wander", "wandering");
    static Factory avoid("Avoid", "avoiding");
    static Factory flee("flee", "fleeing");
    static Factory second("Avoid", "second");
    for (Factory* const factory : {&wander, &avoid, &flee, &second}) {
        factory->Init();
    }
    EXPECT_EQ(ContextManager::GetBehavioursByName(), (std::vector<Util::String>{"Avoid", "Wander", "flee"}));
    char const* const byIndex[] = {"avoiding", "wandering", "fleeing"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ContextManager::GetNewBehaviourFromIndex(i)->GetName(), byIndex[i]);
    }
    EXPECT_EQ(ContextManager::GetNewBehaviourFromName("Avoid")->GetName(), "avoiding") << "the first registration wins";
    EXPECT_FALSE(ContextManager::GetNewBehaviourFromName("Avoid") == ContextManager::GetNewBehaviourFromName("Avoid"));
    for (int const beyond : {-1, 3}) {
        EXPECT_EQ(ContextManager::GetNewBehaviourFromIndex(beyond)->GetName(), "");
    }
    Util::RefCountPtr<Behaviour> const none = ContextManager::GetNewBehaviourFromName("avoid");
    EXPECT_EQ(none->GetName(), "");
    EXPECT_FALSE(none->ReadyToUse() || none == Behaviour::NIL);
    flee = Factory("Escape", "escaping");
    EXPECT_EQ(ContextManager::GetBehavioursByName()[2], "flee") << "the key of registration";
    EXPECT_EQ(ContextManager::GetNewBehaviourFromName("Escape")->GetName(), "escaping") << "the present name";
    EXPECT_EQ(ContextManager::GetNewBehaviourFromName("flee")->GetName(), "");
}

} // namespace
