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

class Linking : public testing::Test {
protected:
    MessageLog log;
    Pool pool{"A"};
    Pool other{"Z"};
};

TEST_F(Linking, RefusesABehaviourThatAPoolOwns) {
    TestPtr const behaviour = New();
    pool.LinkActiveBehaviour(behaviour);
    other.LinkActiveBehaviour(behaviour);
    pool.LinkPassiveBehaviour(behaviour);
    std::string const form = "Error :: PoolConstruction :: The Pool \"";
    std::string const rest = "\" cannot use the Behaviour \"B\", because it's already linked to the Pool \"A\"";
    EXPECT_EQ(log.Take(), (Messages{form + "Z" + rest, form + "A" + rest}));
    EXPECT_EQ(pool.GetAllBehaviours().size(), 1u);
    EXPECT_TRUE(other.GetAllBehaviours().empty());
    other.LinkMemberConstructionBehaviour(behaviour);
    EXPECT_EQ(other.GetAllBehaviours().size(), 1u) << "construction behaviours may serve several pools";
    pool.InitializeMemberPool();
    EXPECT_EQ(behaviour->GetOwnerPool(), nullptr);
    {
        Pool passing;
        passing.LinkPassiveBehaviour(behaviour);
        EXPECT_EQ(behaviour->GetOwnerPool(), &passing);
    }
    EXPECT_EQ(behaviour->GetOwnerPool(), nullptr);
}

TEST_F(Linking, ListsBehavioursByKind) {
    pool.LinkPoolConstructionBehaviour(New("pool"));
    pool.LinkMemberConstructionBehaviour(New("member"));
    pool.LinkPassiveBehaviour(New("passive"));
    pool.LinkActiveBehaviour(New("active"));
    Strings names;
    for (BehaviourPtr const& behaviour : pool.GetAllBehaviours()) {
        names.push_back(behaviour->GetName());
    }
    EXPECT_EQ(names, (Strings{"active", "passive", "member", "pool"}));
    EXPECT_EQ(pool.GetBehaviourByName("member")->GetName(), "member");
}

TEST_F(Linking, SharesSharedIntrinsicsByName) {
    TestPtr const first = New();
    TestPtr const second = New();
    for (TestPtr const& behaviour : {first, second}) {
        behaviour->MemberValue(0, "energy", SHARED_INTRINSIC, 5);
        pool.LinkActiveBehaviour(behaviour);
    }
    EXPECT_EQ(Names(pool.GetAllProperties()), Strings{"energy"});
    EXPECT_TRUE(first->linkedProperties[0] == second->linkedProperties[0]);
    pool.CompileMemberPool();
    pool.SetMemberCount(1);
    first->member = second->member = pool.GetMemberByIndex(0);
    EXPECT_EQ(first->UseMemberValue(0), 5.0f);
    first->UseMemberValue(0) = 6;
    EXPECT_EQ(second->UseMemberValue(0), 6.0f);
}

TEST_F(Linking, GivesUniqueIntrinsicsNamesOfTheirOwn) {
    pool.AddPoolProperty(Value("own_x"));
    pool.AddPoolProperty(Value("own_01"));
    pool.AddPoolProperty(Value("own_4294967296"));
    pool.AddPoolProperty(Value("owner"));
    for (int i = 0; i < 3; ++i) {
        TestPtr const behaviour = New();
        behaviour->FlexibleValue(0, "before");
        behaviour->MemberValue(0, "own", UNIQUE_INTRINSIC, 0);
        pool.LinkActiveBehaviour(behaviour);
        EXPECT_EQ(behaviour->linkedProperties[1]->GetName(), i == 0 ? "own" : "own_" + std::to_string(i));
        EXPECT_EQ(behaviour->linkedProperties[1]->GetLinkIndex(), 1);
    }
    EXPECT_EQ(Names(pool.GetAllMemberProperties()), (Strings{"own", "own_1", "own_2"}));
    pool.AddPoolProperty(Value("own_4294967295"));
    TestPtr const last = New();
    last->PoolValue(0, "own", UNIQUE_INTRINSIC);
    pool.LinkActiveBehaviour(last);
    EXPECT_EQ(last->linkedProperties[0]->GetName(), "own_4");
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
        PropertyPtr const& property = *static_cast<PropertyPtr*>(event.subject);
        order.push_back(property->GetName());
        EXPECT_TRUE(property->GetPropertyID() ==
                    (static_cast<int>(property->GetName().Hash()) ^ pool.GetMemberPoolID()));
    });
    pool.LinkActiveBehaviour(behaviour);
    EXPECT_EQ(order, (Strings{"p", "m", "v"}));
    EXPECT_EQ(pool.GetPropertyFromName("m")->vector.y, 2.0f);
    behaviour->GetUnlinkedIntrinsicValueParamsByName(names);
    EXPECT_TRUE(names.empty());
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
    pool.InitializeMemberPool();
    pool.LinkActiveBehaviour(behaviour);
    pool.CompileMemberPool();
    EXPECT_TRUE(behaviour->ReadyToUse()) << "a later build may succeed";
}

TEST_F(Linking, ReportsWhatItCannotMake) {
    TestPtr const behaviour = New();
    Declare(*behaviour, FLEXIBLE, VALUE, "shared", SHARED_INTRINSIC);
    Declare(*behaviour, FLEXIBLE, VALUE, "unique", UNIQUE_INTRINSIC);
    Declare(*behaviour, MEMBER, BEHAVIOUR, "b", SHARED_INTRINSIC);
    pool.LinkActiveBehaviour(behaviour);
    std::string const form =
        "Error: An Intrinsic Parameter of a Behaviour could not be added to the MemberPool, because it's "
        "type is neither MEMBER nor ";
    EXPECT_EQ(log.Take(), (Messages{form + "POOL", form + "CONSTANT", form + "CONSTANT",
                                    "Error: PropertyFactory could not build the intrinsic property for a behaviour"}));
    EXPECT_TRUE(pool.GetAllProperties().empty());
    pool.CompileMemberPool();
    EXPECT_FALSE(behaviour->ReadyToUse());
}

TEST_F(Linking, KeepsAPropertyOutsideTheTablesWhenThePoolHasOneOfItsName) {
    // A unique pool parameter gets a new name; two shared ones of one behaviour meet in the pool's table.
    TestPtr const behaviour = New();
    Declare(*behaviour, POOL, VALUE, "twice", SHARED_INTRINSIC);
    Declare(*behaviour, POOL, VALUE, "twice", SHARED_INTRINSIC);
    pool.LinkActiveBehaviour(behaviour);
    EXPECT_EQ(pool.GetAllProperties().size(), 1u);
    EXPECT_TRUE(behaviour->linkedProperties[1] == Property::NIL) << "by name only the first entry is found";
    TestPtr const second = New();
    second->PoolValue(0, "twice", UNIQUE_INTRINSIC);
    pool.LinkActiveBehaviour(second);
    EXPECT_EQ(Names(pool.GetAllProperties()), (Strings{"twice", "twice_1"}));
}

TEST_F(Linking, LeavesAnIntrinsicRefusedByAFullPoolUnready) {
    pool.AddMemberProperty(Value("v"));
    pool.SetMemberCount(1);
    TestPtr const behaviour = New();
    behaviour->MemberValue(0, "late", SHARED_INTRINSIC, 0);
    pool.LinkActiveBehaviour(behaviour);
    pool.CompileMemberPool();
    EXPECT_FALSE(behaviour->ReadyToUse());
    EXPECT_EQ(behaviour->fastParams[0].dataOffset, -1);
}

} // namespace
