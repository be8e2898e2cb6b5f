// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

namespace {

using namespace Gentra;
using namespace Support;

std::vector<std::string> NamesOf(std::vector<Parameter*> const& records) {
    std::vector<std::string> names;
    for (Parameter const* const record : records) {
        names.push_back(record->GetName() + std::to_string(record->GetLinkIndex()));
    }
    return names;
}

using Names = std::vector<std::string>;

TEST(NewBehaviours, AreNotReadyAndSortByTheirKey) {
    TestBehaviour behaviour("");
    EXPECT_FALSE(behaviour.ReadyToUse() || behaviour.GetDebugRenderEnabled());
    behaviour.SetDebugRenderEnabled(true);
    EXPECT_TRUE(behaviour.GetDebugRenderEnabled());
    EXPECT_EQ(Behaviour::GetDebugRenderScale(), 1.0f);
    Behaviour::SetDebugRenderScale(1.0f);
    EXPECT_EQ(behaviour.GetFastParams()[15].dataOffset, -1);
    EXPECT_FALSE(Behaviour::NIL->ReadyToUse() || Behaviour::NIL->TriggerLiveBehaviour());
    TestBehaviour later;
    later.orderKey = 1.0f;
    EXPECT_TRUE(TestBehaviour::BehaviourLess(&behaviour, &later));
    EXPECT_FALSE(TestBehaviour::BehaviourLess(&later, &behaviour) || TestBehaviour::BehaviourLess(&later, &later));
}

TEST(NewBehaviours, AnnounceThemselvesOnRequest) {
    TestBehaviour behaviour;
    int heard = 0;
    Listener const listener(Behaviour::EVENT, [&](Util::Event const& event) {
        ++heard;
        EXPECT_EQ(event.subject, static_cast<Behaviour*>(&behaviour));
        EXPECT_EQ(event.type.subName, "Create");
        EXPECT_EQ(event.type.subIndex, 0);
        EXPECT_EQ(event.param1 + event.param2, 0);
    });
    behaviour.Initialize();
    EXPECT_EQ(heard, 1);
}

TEST(Declarations, GiveOwnerTypeScopeAndDefault) {
    struct Row {
        void (*declare)(Behaviour&);
        PropertyOwner owner;
        PropertyType type;
        Scope scope;
        float value;
        float x;
    };
    using B = Behaviour;
    for (Row const& row :
         {Row{[](B& b) { b.MemberValue(7, "p", SHARED_INTRINSIC, 2.5f); }, MEMBER, VALUE, SHARED_INTRINSIC, 2.5f, 0},
          Row{[](B& b) { b.PoolValue(7, "p", UNIQUE_INTRINSIC); }, POOL, VALUE, UNIQUE_INTRINSIC, 0, 0},
          Row{[](B& b) { b.FlexibleValue(7, "p"); }, FLEXIBLE, VALUE, VISIBLE, 0, 0},
          Row{[](B& b) { b.MemberVec3(7, "p", VISIBLE, Math::Vec3(4, 5, 6)); }, MEMBER, VECTOR, VISIBLE, 0, 4},
          Row{[](B& b) { b.FlexibleVec3(7, "p"); }, FLEXIBLE, VECTOR, VISIBLE, 0, 0},
          Row{[](B& b) { b.FlexibleMemberSelection(7, "p"); }, FLEXIBLE, MEMBERSELECTION, VISIBLE, 0, 0},
          Row{[](B& b) { b.MemberMemberSelection(7, "p", VISIBLE); }, MEMBER, MEMBERSELECTION, VISIBLE, 0, 0},
          Row{[](B& b) { b.FlexibleUserData(7, "p"); }, FLEXIBLE, DATAREFERENCE, VISIBLE, 0, 0},
          Row{[](B& b) { b.FlexibleBehaviourTrigger(7, "p"); }, FLEXIBLE, BEHAVIOUR, VISIBLE, 0, 0}}) {
        TestBehaviour behaviour;
        row.declare(behaviour);
        ASSERT_EQ(behaviour.parameterInterface.size(), 1u);
        Parameter const& record = *behaviour.parameterInterface[0];
        EXPECT_EQ(record.linkIndex, 0) << "the leading number is not used";
        EXPECT_EQ(record.owner, row.owner);
        EXPECT_EQ(record.type, row.type);
        EXPECT_EQ(record.scope, row.scope);
        EXPECT_EQ(record.value, row.value);
        EXPECT_EQ(record.vector.x, row.x);
        EXPECT_EQ(behaviour.GetNumVisibleInterfaceLinks(), row.scope == VISIBLE ? 1 : 0);
        EXPECT_TRUE(behaviour.linkedProperties == std::vector<PropertyPtr>{Property::NIL});
    }
}

class Interfaces : public testing::Test {
protected:
    Interfaces() {
        behaviour.FlexibleValue(0, "a");
        behaviour.MemberValue(0, "s", SHARED_INTRINSIC, 0);
        behaviour.FlexibleVec3(0, "b");
    }
    MessageLog log;
    TestBehaviour behaviour;
    Util::String name = "kept";
    PropertyOwner owner = POOL;
    PropertyType type = TEXT;
    bool intrinsic = true;
};

TEST_F(Interfaces, DescribeThemselves) {
    EXPECT_EQ(NamesOf(behaviour.parameterInterface), (Names{"a0", "s1", "b2"}));
    EXPECT_EQ(NamesOf(behaviour.visibleInterface), (Names{"a0", "b2"}));
    EXPECT_EQ(behaviour.GetIndexOfFirstIntrinsicParameterInVisibleInterface(), 2);
    EXPECT_TRUE(behaviour.GetVisibleInterfaceDescription(1, name, owner, type, intrinsic));
    EXPECT_EQ(name, "b");
    EXPECT_EQ(owner, FLEXIBLE);
    EXPECT_EQ(type, VECTOR);
    EXPECT_FALSE(intrinsic);
    EXPECT_TRUE(behaviour.GetInterfaceDescription(1, name, owner, type, intrinsic));
    EXPECT_TRUE(intrinsic);
    EXPECT_EQ(behaviour.GetPropertyTypeFromVisibleParameterInterface(1), VECTOR);
    EXPECT_EQ(behaviour.GetPropertyTypeFromParameterInterface(1), VALUE);
    EXPECT_EQ(behaviour.GetLinkIndexFromPropertyName("b"), 2);
    EXPECT_EQ(behaviour.GetLinkIndexFromPropertyName("B"), -1);
    behaviour.FlexibleValue(0, "b");
    EXPECT_EQ(behaviour.GetLinkIndexFromPropertyName("b"), 2) << "the first of that name";
}

TEST_F(Interfaces, ReportPositionsOutOfRange) {
    for (int const index : {-1, 3}) {
        EXPECT_FALSE(behaviour.GetInterfaceDescription(index, name, owner, type, intrinsic));
        EXPECT_EQ(behaviour.GetPropertyTypeFromParameterInterface(index), UNDEFINED);
    }
    EXPECT_FALSE(behaviour.GetVisibleInterfaceDescription(2, name, owner, type, intrinsic));
    EXPECT_EQ(behaviour.GetPropertyTypeFromVisibleParameterInterface(2), UNDEFINED);
    EXPECT_EQ(name, "kept");
    EXPECT_EQ(type, TEXT);
    std::string const form = "Error\\Construction\\Behaviour\\";
    std::string const description = form + "Information for an invalid InterfaceLink was requested";
    std::string const typeOf = form + "PropertyType for an invalid InterfaceLink was requested";
    EXPECT_EQ(log.Take(), (Messages{description, typeOf, description, typeOf,
                                    form + "Information for an invalid visible InterfaceLink was requested",
                                    form + "PropertyType for an invalid visible InterfaceLink was requested"}));
}

TEST_F(Interfaces, GrowAtTheFront) {
    Parameter visible(FLEXIBLE, VALUE, "c", VISIBLE, nullptr);
    Parameter intrinsicParameter(POOL, VALUE, "i", UNIQUE_INTRINSIC, nullptr);
    behaviour.AddParameterToInterfaceFront(&visible);
    behaviour.AddParameterToInterfaceFront(&intrinsicParameter);
    behaviour.AddParameterToInterfaceFront(nullptr);
    behaviour.AddParameterToInterface(nullptr);
    EXPECT_EQ(NamesOf(behaviour.parameterInterface), (Names{"i0", "c1", "a2", "s3", "b4"}));
    EXPECT_EQ(NamesOf(behaviour.visibleInterface), (Names{"c1", "a2", "b4"}));
    EXPECT_EQ(behaviour.linkedProperties.size(), 5u);
    EXPECT_EQ(visible.linkIndex, -1) << "the interface holds a copy";
}

TEST_F(Interfaces, TakeSixteenParametersAtMost) {
    while (behaviour.GetNumInterfaceLinks() < 16) {
        behaviour.FlexibleValue(0, "more");
    }
    EXPECT_TRUE(log.Take().empty());
    behaviour.FlexibleValue(0, "seventeenth");
    Parameter const front(POOL, VALUE, "front", VISIBLE, nullptr);
    behaviour.AddParameterToInterfaceFront(&front);
    std::string const form = "Error\\Construction\\Behaviour\\Parameter \"";
    std::string const reason = "\" could not be added, because a Behaviour can not have more than 16 Parameters";
    EXPECT_EQ(log.Take(), (Messages{form + "seventeenth" + reason, form + "front" + reason}));
    EXPECT_EQ(behaviour.GetNumInterfaceLinks(), 16);
    EXPECT_EQ(behaviour.linkedProperties.size(), 16u);
    EXPECT_EQ(behaviour.parameterInterface[0]->GetName(), "a");
}

TEST_F(Interfaces, LeaveTheLinksWhenTheyAreCleared) {
    behaviour.ClearParameterInterface();
    EXPECT_EQ(behaviour.GetNumInterfaceLinks(), 0);
    EXPECT_EQ(behaviour.GetIndexOfFirstIntrinsicParameterInVisibleInterface(), 0);
    EXPECT_EQ(behaviour.linkedProperties.size(), 3u);
    auto const value = Value("v");
    EXPECT_FALSE(behaviour.LinkPropertyToInterface(value, 2));
    behaviour.UpdateProperties();
    EXPECT_FALSE(behaviour.PushLinkedParamsToFastParams());
    EXPECT_EQ(log.Take(),
              (Messages{"Bug :: Construction :: Parameter \"v\" could not be linked to Behaviour \"Behaviour\", "
                        "because the LinkPosition is not valid.",
                        "Error :: Compiler :: Program Bug! number of link parameters does not match the number "
                        "of interface links"}));
}

TEST_F(Interfaces, AreCopiedWithRecordsOfTheirOwn) {
    auto const value = Value("v");
    behaviour.LinkPropertyToVisibleInterface(value, 0);
    TestBehaviour assigned("Assigned");
    assigned.FlexibleValue(0, "gone");
    {
        TestBehaviour const copy(behaviour);
        EXPECT_NE(copy.parameterInterface[0], behaviour.parameterInterface[0]);
        assigned = copy;
        EXPECT_EQ(value.GetCount(), 4);
    }
    assigned = *&assigned;
    EXPECT_EQ(assigned.GetName(), "Behaviour");
    EXPECT_EQ(NamesOf(assigned.parameterInterface), (Names{"a0", "s1", "b2"}));
    EXPECT_EQ(NamesOf(assigned.visibleInterface), (Names{"a0", "b2"}));
    EXPECT_EQ(value.GetCount(), 3);
}

} // namespace
