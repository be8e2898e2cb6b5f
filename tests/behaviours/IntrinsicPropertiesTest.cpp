// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;
using TestPtr = RefCountPtr<TestBehaviour>;
using Strings = std::vector<std::string>;

TestPtr New(char const* name = "B") {
    return TestPtr(new TestBehaviour(name));
}

void Declare(TestBehaviour& behaviour, PropertyOwner owner, PropertyType type, char const* name, Scope scope) {
    Parameter const parameter(owner, type, name, scope, nullptr);
    behaviour.AddParameterToInterface(&parameter);
}

struct Linking : testing::Test {
    MessageLog log;
    Pool pool{"A"};
};

TEST_F(Linking, RefusesABehaviourThatAPoolOwns) {
    Pool other("Z");
    TestPtr const behaviour = New();
    pool.LinkActiveBehaviour(behaviour);
    other.LinkActiveBehaviour(behaviour);
    pool.LinkPassiveBehaviour(behaviour);
    std::string const form = "Error :: PoolConstruction :: The Pool \"";
    std::string const rest = "\" cannot use the Behaviour \"B\", because it's already linked to the Pool \"A\"";
    EXPECT_EQ(log.Take(), (Messages{form + "Z" + rest, form + "A" + rest}));
    pool.LinkMemberConstructionBehaviour(New("member"));
    EXPECT_EQ(pool.GetBehaviourByName("member")->GetName(), "member");
    EXPECT_TRUE(pool.GetBehaviourByName("Member") == Behaviour::NIL);
}

TEST_F(Linking, GivesUniqueIntrinsicsNamesOfTheirOwn) {
    for (char const* const name : {"own_x", "own_01", "own_4294967296", "own_", "owner"}) {
        pool.AddPoolProperty(Value(name));
    }
    for (char const* const name : {"own", "own_1", "own_2", "own_5"}) {
        TestPtr const behaviour = New();
        behaviour->FlexibleValue(0, "before");
        behaviour->MemberValue(0, "own", UNIQUE_INTRINSIC, 0);
        pool.LinkActiveBehaviour(behaviour);
        EXPECT_EQ(behaviour->linkedProperties[1]->GetName(), name);
        EXPECT_EQ(behaviour->linkedProperties[1]->GetLinkIndex(), 1);
        if (name == Util::String("own_2")) {
            pool.AddPoolProperty(Value("own_4294967295"));
            pool.AddPoolProperty(Value("own_0"));
        }
    }
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(Linking, MakesPoolPropertiesFirstUnderDefaultIds) {
    TestPtr const behaviour = New();
    behaviour->MemberVec3(0, "m", SHARED_INTRINSIC, {1, 2, 3});
    behaviour->MemberValue(0, "v", SHARED_INTRINSIC, 0);
    behaviour->PoolValue(0, "p", UNIQUE_INTRINSIC);
    std::vector<Util::String> names{"stale"};
    behaviour->GetUnlinkedIntrinsicValueParamsByName(names);
    EXPECT_EQ(names, (std::vector<Util::String>{"p", "v"}));
    behaviour->GetUnlinkedIntrinsicVectorParamsByName(names);
    EXPECT_EQ(names, (std::vector<Util::String>{"m"}));
    Strings order;
    Listener const listener(Property::EVENT, [&](Util::Event const& event) {
        order.push_back((*static_cast<PropertyPtr*>(event.subject))->GetName());
        if (order.size() == 2) {
            pool.InitializeMemberPool();
        }
    });
    pool.LinkActiveBehaviour(behaviour);
    EXPECT_EQ(Strings(order.begin(), order.begin() + 2), (Strings{"p", "m"}));
    EXPECT_TRUE(pool.GetPropertyFromName("v") == Property::NIL) << "it ends where a listener clears the pool";
    for (PropertyPtr const& link : behaviour->linkedProperties) {
        EXPECT_EQ(link->GetOwnerPool(), nullptr) << link->GetName();
    }
}

TEST_F(Linking, FailsConstructionWhenTheHostTookTheName) {
    pool.AddMemberProperty(Value("reserved"));
    TestPtr const behaviour = New();
    behaviour->MemberValue(0, "first", SHARED_INTRINSIC, 0);
    behaviour->MemberValue(0, "reserved", SHARED_INTRINSIC, 0);
    behaviour->MemberValue(0, "last", SHARED_INTRINSIC, 0);
    pool.LinkActiveBehaviour(behaviour);
    pool.CompileMemberPool();
    EXPECT_EQ(log.Take(),
              (Messages{"Error: A Property called 'reserved' is already internally used by a behaviour, please use "
                        "a different name for this Property",
                        "Error :: MemberPoolCompilation :: due to errors during the construction phase the pool "
                        "\"A\" will not get compiled"}));
    EXPECT_EQ(Names(pool.GetAllProperties()), (Strings{"reserved", "first"}));
    EXPECT_TRUE(behaviour->linkedProperties[2] == Property::NIL);
}

TEST_F(Linking, KeepsALinkToAPoolPropertyThatIsInNoPool) {
    PropertyPtr const outside = Value("Shared");
    outside->scope = SHARED_INTRINSIC;
    outside->SetPropertyOwner(POOL);
    TestPtr const behaviour = New();
    behaviour->PoolValue(0, "Shared", SHARED_INTRINSIC);
    ASSERT_TRUE(behaviour->LinkPropertyToInterface(outside, 0));
    pool.LinkActiveBehaviour(behaviour);
    EXPECT_EQ(behaviour->linkedProperties[0], outside);
}

TEST_F(Linking, ReportsWhatItCannotMake) {
    TestPtr const behaviour = New();
    Declare(*behaviour, FLEXIBLE, VALUE, "shared", SHARED_INTRINSIC);
    Declare(*behaviour, FLEXIBLE, VALUE, "unique", UNIQUE_INTRINSIC);
    Declare(*behaviour, MEMBER, BEHAVIOUR, "b", SHARED_INTRINSIC);
    Declare(*behaviour, POOL, VALUE, "twice", SHARED_INTRINSIC);
    Declare(*behaviour, POOL, VALUE, "twice", SHARED_INTRINSIC);
    pool.LinkActiveBehaviour(behaviour);
    std::string const form =
        "Error: An Intrinsic Parameter of a Behaviour could not be added to the MemberPool, because it's "
        "type is neither MEMBER nor ";
    EXPECT_EQ(log.Take(), (Messages{form + "POOL", form + "CONSTANT", form + "CONSTANT",
                                    "Error: PropertyFactory could not build the intrinsic property for a behaviour"}));
    EXPECT_EQ(Names(pool.GetAllProperties()), Strings{"twice"});
    EXPECT_TRUE(behaviour->linkedProperties[4] == Property::NIL) << "only the first of that name is found";
    std::vector<PropertyPtr> none{PropertyPtr(nullptr)};
    behaviour->LinkIntrinsicPropertiesToInterface(none);
    EXPECT_TRUE(log.Take().empty());
}

} // namespace
