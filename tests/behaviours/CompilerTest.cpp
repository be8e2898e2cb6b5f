// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <algorithm>
#include <random>
#include <tuple>

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;

void Declare(TestBehaviour& behaviour, PropertyOwner owner, PropertyType type, char const* name,
             Scope scope = VISIBLE) {
    Parameter const parameter(owner, type, name, scope, nullptr);
    behaviour.AddParameterToInterface(&parameter);
}

/// Properties of each owner: in no pool, of a pool, of members.
struct Compiling : testing::Test {
    Compiling() {
        pool.AddMemberProperty(before);
        pool.AddMemberProperty(ofMembers);
        pool.AddPoolProperty(ofPool);
        pool.SetMemberCount(2);
        log.Take();
    }
    PropertyPtr Of(PropertyOwner owner) const {
        return owner == MEMBER ? PropertyPtr(ofMembers) : owner == POOL ? PropertyPtr(ofPool) : PropertyPtr(free);
    }

    MessageLog log;
    Pool pool;
    RefCountPtr<VectorProperty> before = Vector("before");
    RefCountPtr<ValueProperty> ofMembers = Value("m", 1);
    RefCountPtr<ValueProperty> ofPool = Value("p", 2);
    RefCountPtr<ValueProperty> free = Value("f", 3);
    TestBehaviour behaviour{"B"};
};

TEST_F(Compiling, RefusesWrongLinks) {
    Declare(behaviour, FLEXIBLE, VALUE, "value");
    Declare(behaviour, POOL, VECTOR, "vector", UNIQUE_INTRINSIC);
    for (int const position : {1, 2, -1}) {
        EXPECT_FALSE(behaviour.LinkPropertyToInterface(free, position));
    }
    EXPECT_FALSE(behaviour.LinkPropertyToVisibleInterface(Property::NIL, 0));
    EXPECT_FALSE(behaviour.LinkPropertyToVisibleInterface(PropertyPtr(nullptr), 0));
    EXPECT_FALSE(behaviour.LinkPropertyToVisibleInterface(free, 1));
    EXPECT_FALSE(behaviour.LinkPropertyToVisibleInterface(free, -1));
    EXPECT_TRUE(behaviour.linkedProperties == std::vector(2, Property::NIL));
    std::string const link = " :: Construction :: Parameter \"f\" could not be linked to Behaviour \"B\", because the ";
    EXPECT_EQ(log.Take(),
              (Messages{"Error" + link + "PropertyType did not match the interface.",
                        "Bug" + link + "LinkPosition is not valid.", "Bug" + link + "LinkPosition is not valid.",
                        "Error :: Construction :: Property could not be linked to the visible Interface "
                        "of a Behaviour, because the LinkPosition is not valid.",
                        "Error :: Construction :: Property could not be linked to the visible Interface "
                        "of a Behaviour, because the LinkPosition is not valid."}));
}

TEST_F(Compiling, AcceptsLinksByOwner) {
    std::string const form = "Error :: Compiler :: Behaviour \"B\" :: ";
    std::string const constant = form + "Member Property linked to Constant Parameter \"e\"";
    std::string const member = form + "Non-Member Property linked to Member Parameter \"e\"";
    std::string const invalid = form + "Parameter \"e\" of the Parameter Interface has an invalid ParameterLinkType";
    Messages const success{"Success :: Compiler :: Behaviour \"B\" :: Linked Successfully!"};
    auto const broken = static_cast<PropertyOwner>(9);
    struct Row {
        PropertyOwner entry;
        PropertyOwner property;
        std::string error;
        int offset;
        float value;
    };
    for (Row const& row :
         {Row{POOL, POOL, "", -1, 2}, Row{POOL, FLEXIBLE, "", -1, 3}, Row{POOL, MEMBER, constant, -1, 0},
          Row{MEMBER, MEMBER, "", 12, 0}, Row{MEMBER, POOL, member, -1, 0}, Row{MEMBER, FLEXIBLE, member, -1, 0},
          Row{FLEXIBLE, MEMBER, "", 12, 1}, Row{FLEXIBLE, POOL, "", -1, 2}, Row{FLEXIBLE, FLEXIBLE, "", -1, 3},
          Row{broken, POOL, invalid, -1, 0}}) {
        TestBehaviour fresh("B");
        Declare(fresh, row.entry, VALUE, "e");
        ASSERT_TRUE(fresh.LinkPropertyToVisibleInterface(Of(row.property), 0));
        bool const expected = row.error.empty();
        EXPECT_EQ(fresh.PushLinkedParamsToFastParams(), expected);
        EXPECT_EQ(fresh.ReadyToUse(), expected);
        EXPECT_EQ(log.Take(), expected ? success : (Messages{row.error, form + "Disabled"}));
        Basic_Parameter const& fast = fresh.fastParams[0];
        EXPECT_EQ(fast.dataOffset, row.offset);
        EXPECT_EQ(fast.value, row.value);
        EXPECT_EQ(fast.property, expected ? Of(row.property).Get() : nullptr);
        EXPECT_TRUE(!expected || fast.owner == (row.entry == FLEXIBLE ? row.property : row.entry));
        for (float const change : {10.0f, -10.0f}) { // only pool properties are read again
            Of(row.property)->value += change;
            fresh.RefreshConstants();
            EXPECT_EQ(fast.value, row.value + (expected && row.property == POOL && change > 0 ? change : 0));
        }
    }
}

TEST_F(Compiling, ReportsEachEntryUpToTheFirstUnlinkedOne) {
    std::string const form = "Error :: Compiler :: Behaviour \"B\" :: ";
    EXPECT_TRUE(behaviour.PushLinkedParamsToFastParams()) << "no interface at all";
    log.Take();
    for (char const* const name : {"wrong type", "right", "unlinked", "unseen"}) {
        Declare(behaviour, FLEXIBLE, VALUE, name);
    }
    behaviour.linkedProperties[0] = behaviour.linkedProperties[3] = before;
    behaviour.linkedProperties[1] = ofPool;
    EXPECT_FALSE(behaviour.PushLinkedParamsToFastParams());
    EXPECT_EQ(log.Take(), (Messages{form + "PropertyType Mismatch", form + "Parameter \"unlinked\" not linked ",
                                    form + "Disabled"}));
    EXPECT_EQ(behaviour.fastParams[1].value, 2.0f) << "entries that passed keep what they were given";
    EXPECT_FALSE(behaviour.ReadyToUse());
    behaviour.linkedProperties.assign(4, ofPool);
    EXPECT_TRUE(behaviour.PushLinkedParamsToFastParams());
    behaviour.ClearLinkedParameters();
    EXPECT_TRUE(behaviour.ReadyToUse()) << "clearing links does not disable";
    EXPECT_EQ(behaviour.fastParams[1].property, ofPool.Get());
}

TEST_F(Compiling, ReadsAndWritesValuesAndVectorsByKind) {
    RefCountPtr<VectorProperty> const vectors[] = {Vector("p", {2, 0, 0}), before, Vector("f", {3, 0, 0})};
    pool.AddPoolProperty(vectors[POOL]);
    Member const one = Behaviour::UseMemberInSelection(pool, 1);
    // What is read of each kind: anyhow, as a constant, and of members only, where -1 is unchanged.
    for (auto const& [kind, read, readConst, readMember] :
         {std::tuple(POOL, 2.0f, 2.0f, -1.0f), {MEMBER, 1, 0, 1}, {FLEXIBLE, 3, 3, -1}}) {
        Behaviour::UseMemberVectorFromProperty(*before, one) = {1, 0, 0};
        TestBehaviour fresh("B");
        fresh.FlexibleValue(0, "e");
        fresh.FlexibleVec3(0, "w");
        fresh.LinkPropertyToVisibleInterface(Of(kind), 0);
        fresh.LinkPropertyToVisibleInterface(vectors[kind], 1);
        ASSERT_TRUE(fresh.PushLinkedParamsToFastParams());
        fresh.member = one;
        float out = -1;
        fresh.ReadFlexibleMemberValue(0, out);
        Math::Vec3 outVector(-1, 0, 0);
        fresh.ReadFlexibleMemberVec3(1, outVector);
        EXPECT_TRUE(out == readMember && outVector.x == readMember);
        EXPECT_TRUE(fresh.ReadFlexibleValue(0) == read && fresh.ReadFlexibleVec3(1).x == read);
        EXPECT_TRUE(fresh.ReadFlexibleConstValue(0) == readConst);
        EXPECT_TRUE(fresh.ReadFlexibleConstVec3(1).x == readConst);
        EXPECT_TRUE(kind != POOL || (fresh.ReadPoolValue(0) == 2 && &fresh.UsePoolValue(0) == &ofPool->value));
        fresh.WriteFlexibleValue(0, 9);
        fresh.WriteFlexibleVec3(1, {9, 0, 0});
        EXPECT_TRUE(fresh.ReadFlexibleValue(0) == 9 && fresh.ReadFlexibleVec3(1).x == 9);
    }
    EXPECT_EQ(Behaviour::UseMemberValueFromProperty(*ofMembers, one), 9.0f);
    EXPECT_EQ(Behaviour::UseMemberValueFromProperty(*ofMembers, pool.GetMemberByIndex(0)), 1.0f);
    EXPECT_TRUE(free->value == 9 && vectors[FLEXIBLE]->vector.x == 9);
    behaviour.FlexibleValue(0, "e");
    behaviour.LinkPropertyToVisibleInterface(free, 0);
    behaviour.PushLinkedParamsToFastParams();
    Pool later;
    later.AddMemberProperty(free);
    EXPECT_EQ(behaviour.ReadFlexibleConstValue(0), 0.0f) << "of members since, and none is active";
    EXPECT_TRUE(ofPool->value == 2 && vectors[POOL]->vector.x == 2);
}

TEST_F(Compiling, GivesSelectionsAndUserDataByKind) {
    pool.InitializeMemberPool();
    void* pointer = &pool;
    RefCountPtr<MemberSelectionProperty> const selections[] = {RefCountPtr<MemberSelectionProperty>(), {}, {}};
    PropertyPtr const references[] = {new DataReferenceProperty, new DataReferenceProperty, new DataReferenceProperty};
    for (PropertyPtr const& reference : references) {
        reference->SetPoolData(&pointer);
    }
    pool.AddPoolProperty(selections[POOL]);
    pool.AddMemberProperty(selections[MEMBER]);
    pool.AddPoolProperty(references[POOL]);
    pool.AddMemberProperty(references[MEMBER]);
    pool.SetMemberCount(2);
    for (PropertyOwner const kind : {POOL, MEMBER, FLEXIBLE}) {
        TestBehaviour fresh("B");
        fresh.FlexibleMemberSelection(0, "s");
        fresh.FlexibleUserData(0, "d");
        fresh.LinkPropertyToVisibleInterface(selections[kind], 0);
        fresh.LinkPropertyToVisibleInterface(references[kind], 1);
        ASSERT_TRUE(fresh.PushLinkedParamsToFastParams());
        fresh.member = pool.GetMemberByIndex(1);
        EXPECT_EQ(&fresh.UseFlexibleMemberSelection(0), selections[kind]->GetMemberSelection(pool, 1));
        EXPECT_TRUE(kind != MEMBER || &fresh.UseMemberMemberSelection(0) == &fresh.UseFlexibleMemberSelection(0));
        EXPECT_EQ(fresh.ReadFlexibleUserData(1), references[kind]->GetDataFromMemberSelection(pool, 1));
        if (kind == MEMBER) {
            EXPECT_EQ(fresh.UseFlexibleConstMemberSelection(0).GetBasePool(), nullptr) << "no active member";
            EXPECT_EQ(fresh.ReadFlexibleConstUserData(1), nullptr);
            pool.ActivateFirstMember();
        }
        EXPECT_EQ(&fresh.UseFlexibleConstMemberSelection(0), selections[kind]->GetMemberSelection(pool, 0));
        EXPECT_EQ(fresh.ReadFlexibleConstUserData(1), pointer);
    }
}

TEST_F(Compiling, LooksPropertiesUpByName) {
    EXPECT_EQ(Behaviour::GetPropertyByName("m", pool), ofMembers.Get());
    EXPECT_EQ(Behaviour::GetPropertyByName("M", pool), nullptr);
    MemberSelection unbound(nullptr);
    EXPECT_EQ(Behaviour::GetPropertyByName("m", unbound), nullptr);
    behaviour.FlexibleMemberSelection(0, "s");
    behaviour.FlexibleValue(0, "v");
    RefCountPtr<MemberSelectionProperty> const selections;
    behaviour.LinkPropertyToVisibleInterface(selections, 0);
    behaviour.LinkPropertyToVisibleInterface(free, 1);
    EXPECT_EQ(behaviour.GetPropertyByName("m", 0u), nullptr) << "not compiled";
    behaviour.PushLinkedParamsToFastParams();
    EXPECT_EQ(behaviour.GetPropertyByName("m", 0u), nullptr) << "no base pool";
    selections->SetBasePoolID(pool.GetMemberPoolID());
    selections->SetBasePoolFromID();
    EXPECT_EQ(behaviour.GetPropertyByName("m", 0u), ofMembers.Get());
    EXPECT_EQ(behaviour.GetPropertyByName("m", 1u), nullptr) << "not a selection";
    TestBehaviour assigned;
    assigned = TestBehaviour(behaviour);
    EXPECT_EQ(assigned.GetPropertyByName("m", 0u), ofMembers.Get());
    behaviour.fastParams[0].property = ofMembers.Get();
    EXPECT_EQ(behaviour.GetPropertyByName("m", 0u), nullptr) << "the fast parameter decides";
    behaviour.fastParams[1].property = behaviour.linkedProperties[0].Get();
    EXPECT_EQ(behaviour.GetPropertyByName("m", 1u), ofMembers.Get());
    EXPECT_EQ(behaviour.GetPropertyByName("m", 16u), nullptr);
}

// Execution.

TEST_F(Compiling, IsNeededToRunOverMembers) {
    pool.SetMemberCount(3);
    std::vector<Member> members = pool.GetAllMembers();
    Member current;
    behaviour.ProcessMembers(members, current);
    EXPECT_FALSE(current.IsValid()) << "not ready";
    behaviour.PushLinkedParamsToFastParams();
    for (std::size_t const size : {4u, 2u}) { // a member that comes meanwhile is not visited, one that goes neither
        behaviour.work = [&](TestBehaviour&) {
            members.resize(size);
            return false;
        };
        behaviour.ProcessMembers(members, current);
        EXPECT_EQ(behaviour.TakeCalls().size(), std::min<std::size_t>(size, 3));
        EXPECT_EQ(current, pool.GetMemberByIndex(size > 3 ? 2 : 1));
        members = pool.GetAllMembers();
    }
    behaviour.work = nullptr;
    behaviour.ProcessSingleMember(members[0], current);
    EXPECT_EQ(current, members[0]);
}

TEST(Execution, VisitsEveryMemberOfALargePopulationOnce) {
    std::vector<unsigned char> records(150'000);
    std::vector<Member> members;
    for (unsigned char& record : records) {
        members.emplace_back(&record);
    }
    std::shuffle(members.begin(), members.end(), std::mt19937(1)); // scattered, so that the walk fetches ahead
    TestBehaviour counting;
    counting.PushLinkedParamsToFastParams();
    Member current;
    counting.work = [&](TestBehaviour&) {
        ++*current.record;
        return true;
    };
    counting.ProcessMembers(members, current);
    EXPECT_TRUE(std::all_of(records.begin(), records.end(), [](unsigned char count) { return count == 1; }));
}

} // namespace
