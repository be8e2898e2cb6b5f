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

TEST(PlugIns, AreJudgedByTheirFirstStamp) {
    static constexpr char fitting[] =
        GENTRA_PLUG_IN_STAMP(GENTRA_VERSION_MAJOR, GENTRA_VERSION_MINOR, GENTRA_POINTER_SIZE);
    auto const stamp = [](int major, int minor, std::size_t pointerSize) {
        return std::string(1, '\0') + "Gentra plug-in: version " + std::to_string(major) + "." + std::to_string(minor) +
               ", pointers of " + std::to_string(pointerSize) + " bytes, " +
               (GENTRA_CHECKED != 0 ? "checked" : "unchecked") + std::string(1, '\0');
    };
    std::string const here =
        "but this is Gentra " + std::to_string(GENTRA_VERSION_MAJOR) + "." + std::to_string(GENTRA_VERSION_MINOR);
    std::size_t const size = sizeof(void*);
    struct {
        std::string file;
        std::string expected;
    } const cases[] = {{fitting, ""},
                       {stamp(GENTRA_VERSION_MAJOR, 0, size), ""},
                       {stamp(GENTRA_VERSION_MAJOR, 0, size).substr(0, 47), "it is no Gentra plug-in"},
                       {stamp(GENTRA_VERSION_MAJOR + 1, 0, size),
                        "it was built with Gentra " + std::to_string(GENTRA_VERSION_MAJOR + 1) + ".0, " + here},
                       {stamp(GENTRA_VERSION_MAJOR, 99, size),
                        "it was built with Gentra " + std::to_string(GENTRA_VERSION_MAJOR) + ".99, " + here},
                       {stamp(GENTRA_VERSION_MAJOR, 0, 2),
                        "it was built for pointers of 2 bytes, but this is a program with " + std::to_string(size)},
                       {"Gentra plug-in: version " + stamp(GENTRA_VERSION_MAJOR, 0, size) + stamp(99, 0, size), ""},
                       {stamp(-1, 0, size) + stamp(GENTRA_VERSION_MAJOR, 0, size), ""},
                       {"Gentra plug-in: version 99999999999.0, pointers of 8 bytes", "it is no Gentra plug-in"},
                       {stamp(GENTRA_VERSION_MAJOR, 0, size) + "!", ""},
                       {"Gentra plug-in: version 1.0, pointers of " + std::to_string(size) + " bytes, " +
                            (GENTRA_CHECKED != 0 ? "unchecked" : "checked"),
                        GENTRA_CHECKED != 0 ? "it was built without checks of accesses, but this Gentra makes them"
                                            : "it was built to check accesses, but this Gentra does not"},
                       {"", "it is no Gentra plug-in"}};
    for (auto const& [file, expected] : cases) {
        EXPECT_EQ(PlugIn::WhyRefused(file), expected);
    }
}

} // namespace
