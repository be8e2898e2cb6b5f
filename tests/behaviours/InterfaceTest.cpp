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

TEST(NewBehaviours, AreNotReadySortByTheirKeyAndAnnounceThemselvesOnRequest) {
    TestBehaviour behaviour("");
    EXPECT_FALSE(behaviour.ReadyToUse() || behaviour.GetDebugRenderEnabled());
    EXPECT_EQ(Behaviour::GetDebugRenderScale(), 1.0f);
    EXPECT_EQ(behaviour.GetFastParams()[15].dataOffset, -1);
    EXPECT_FALSE(Behaviour::NIL->ReadyToUse() || Behaviour::NIL->TriggerLiveBehaviour());
    TestBehaviour later;
    later.orderKey = 1.0f;
    EXPECT_TRUE(TestBehaviour::BehaviourLess(&behaviour, &later));
    EXPECT_FALSE(TestBehaviour::BehaviourLess(&later, &behaviour) || TestBehaviour::BehaviourLess(&later, &later));
    std::string heard;
    Listener const listener(Behaviour::EVENT, [&](Util::Event const& event) {
        EXPECT_EQ(event.subject, static_cast<Behaviour*>(&behaviour));
        heard += event.type.subName + std::to_string(event.type.subIndex + event.param1 + event.param2);
    });
    behaviour.Initialize();
    EXPECT_EQ(heard, "Create0");
}

struct Interfaces : testing::Test {
    Interfaces() {
        behaviour.FlexibleValue(0, "a");
        behaviour.MemberValue(0, "s", SHARED_INTRINSIC, 0);
        behaviour.FlexibleVec3(0, "b");
    }
    MessageLog log;
    TestBehaviour behaviour;
    Util::String name;
    PropertyOwner owner = POOL;
    PropertyType type = TEXT;
    bool intrinsic = false;
};

TEST_F(Interfaces, DescribeThemselvesAndReportPositionsOutOfRange) {
    EXPECT_EQ(behaviour.GetIndexOfFirstIntrinsicParameterInVisibleInterface(), 2);
    EXPECT_TRUE(behaviour.GetInterfaceDescription(1, name, owner, type, intrinsic));
    EXPECT_TRUE(name == "s" && owner == MEMBER && type == VALUE && intrinsic);
    EXPECT_TRUE(behaviour.GetVisibleInterfaceDescription(1, name, owner, type, intrinsic));
    EXPECT_TRUE(name == "b" && owner == FLEXIBLE && type == VECTOR && !intrinsic);
    EXPECT_EQ(behaviour.GetPropertyTypeFromVisibleParameterInterface(1), VECTOR);
    EXPECT_EQ(behaviour.GetPropertyTypeFromParameterInterface(1), VALUE);
    behaviour.FlexibleValue(0, "b");
    EXPECT_EQ(behaviour.GetLinkIndexFromPropertyName("b"), 2) << "the first of that name";
    EXPECT_EQ(behaviour.GetLinkIndexFromPropertyName("B"), -1);
    std::string const form = "Error\\Construction\\Behaviour\\";
    for (int const index : {-1, 4}) {
        EXPECT_FALSE(behaviour.GetInterfaceDescription(index, name, owner, type, intrinsic));
        EXPECT_EQ(behaviour.GetPropertyTypeFromParameterInterface(index), UNDEFINED);
        EXPECT_EQ(log.Take(), (Messages{form + "Information for an invalid InterfaceLink was requested",
                                        form + "PropertyType for an invalid InterfaceLink was requested"}));
    }
    EXPECT_FALSE(behaviour.GetVisibleInterfaceDescription(3, name, owner, type, intrinsic));
    EXPECT_EQ(behaviour.GetPropertyTypeFromVisibleParameterInterface(3), UNDEFINED);
    EXPECT_EQ(log.Take(), (Messages{form + "Information for an invalid visible InterfaceLink was requested",
                                    form + "PropertyType for an invalid visible InterfaceLink was requested"}));
}

TEST_F(Interfaces, GrowAtTheFrontToSixteenParameters) {
    Parameter const visible(FLEXIBLE, VALUE, "c", VISIBLE, nullptr);
    Parameter const hidden(POOL, VALUE, "i", UNIQUE_INTRINSIC, nullptr);
    for (Parameter const* const parameter : {&visible, &hidden, static_cast<Parameter const*>(nullptr)}) {
        behaviour.AddParameterToInterfaceFront(parameter);
    }
    behaviour.AddParameterToInterface(nullptr);
    EXPECT_EQ(NamesOf(behaviour.parameterInterface), (Names{"i0", "c1", "a2", "s3", "b4"}));
    EXPECT_EQ(NamesOf(behaviour.visibleInterface), (Names{"c1", "a2", "b4"}));
    EXPECT_EQ(visible.linkIndex, -1) << "the interface holds a copy";
    while (behaviour.GetNumInterfaceLinks() < 16) {
        behaviour.FlexibleValue(0, "more");
    }
    EXPECT_TRUE(log.Take().empty());
    behaviour.FlexibleValue(0, "seventeenth");
    behaviour.AddParameterToInterfaceFront(&visible);
    std::string const form = "Error\\Construction\\Behaviour\\Parameter \"";
    std::string const reason = "\" could not be added, because a Behaviour can not have more than 16 Parameters";
    EXPECT_EQ(log.Take(), (Messages{form + "seventeenth" + reason, form + "c" + reason}));
    EXPECT_EQ(behaviour.GetNumInterfaceLinks(), 16);
    EXPECT_EQ(behaviour.linkedProperties.size(), 16u);
}

TEST_F(Interfaces, LeaveTheLinksWhenTheyAreCleared) {
    behaviour.ClearParameterInterface();
    EXPECT_EQ(behaviour.GetIndexOfFirstIntrinsicParameterInVisibleInterface(), 0);
    EXPECT_EQ(behaviour.linkedProperties.size(), 3u);
    EXPECT_FALSE(behaviour.LinkPropertyToInterface(Value("v"), 2));
    log.Take();
    EXPECT_FALSE(behaviour.PushLinkedParamsToFastParams());
    EXPECT_EQ(log.Take(), Messages{"Error :: Compiler :: Program Bug! number of link parameters does not match the "
                                   "number of interface links"});
}

TEST_F(Interfaces, AreCopiedWithRecordsOfTheirOwn) {
    Pool pool;
    auto const value = Value("v");
    behaviour.LinkPropertyToVisibleInterface(value, 0);
    behaviour.SetOwnerPool(&pool);
    TestBehaviour assigned("Assigned");
    assigned.FlexibleValue(0, "gone");
    {
        TestBehaviour const copy(behaviour);
        EXPECT_NE(copy.parameterInterface[0], behaviour.parameterInterface[0]);
        EXPECT_EQ(copy.GetOwnerPool(), &pool);
        assigned = copy;
        EXPECT_EQ(value.GetCount(), 4);
    }
    assigned = *&assigned;
    EXPECT_EQ(assigned.GetName(), "Behaviour");
    EXPECT_EQ(assigned.GetOwnerPool(), &pool);
    EXPECT_EQ(NamesOf(assigned.parameterInterface), (Names{"a0", "s1", "b2"}));
    EXPECT_EQ(NamesOf(assigned.visibleInterface), (Names{"a0", "b2"}));
    EXPECT_EQ(value.GetCount(), 3);
}

} // namespace
