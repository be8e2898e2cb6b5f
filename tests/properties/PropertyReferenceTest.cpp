// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <memory>
#include <optional>
#include <utility>

namespace {

using namespace Gentra;
using namespace Support;

TEST(PropertyReferences, BeginUnbound) {
    PropertyReference const fresh;
    PropertyReference reference(fresh);
    EXPECT_EQ(reference.GetProperty(), Property::NIL);
    EXPECT_EQ(reference.operator->(), Property::NIL.Get());
    EXPECT_EQ(reference.GetPropertyID(), Property::NIL->GetPropertyID());
    EXPECT_EQ(reference.GetPropertyName(), "None");
    EXPECT_EQ(reference.GetOwnerPool(), nullptr);
    EXPECT_EQ(reference.GetOwnerPoolName(), "");
    EXPECT_EQ(reference.GetOwnerPoolID(), fresh.GetOwnerPoolID());
    EXPECT_NE(PropertyReference().GetOwnerPoolID(), fresh.GetOwnerPoolID());
}

TEST(PropertyReferences, RenameAndHoldOnlyWhatMayBe) {
    PropertyReference reference;
    reference.SetPropertyName("Speed");
    EXPECT_EQ(Property::NIL->GetName(), "NULL") << "everybody's";
    EXPECT_EQ(reference.GetPropertyName(), "Speed");
    PropertyPtr const null(static_cast<Property*>(nullptr));
    reference.SetDefaultProperty(null);
    EXPECT_EQ(reference.GetProperty(), Property::NIL);
    reference.SetDefaultProperty(PropertyPtr(MemberSelectionProperty::NIL));
    reference.SetPropertyName("Renamed");
    EXPECT_NE(MemberSelectionProperty::NIL->GetName(), "Renamed");
    reference.GetProperty() = null;
    EXPECT_EQ(reference.GetPropertyID(), Property::NIL->GetPropertyID());
    PropertyPtr const standIn = Value("Stand-in");
    reference.SetDefaultProperty(standIn);
    EXPECT_EQ(reference.GetProperty(), standIn);
    reference.SetPropertyName("A name that is too long for the string itself to hold");
    EXPECT_EQ(standIn->GetName(), reference.GetPropertyName());
    standIn->SetName("Another name that is too long for the string itself to hold");
    Pool const pool;
    reference.SetOwnerPoolID(pool.GetMemberPoolID());
    reference.SetPropertyName(reference->GetName()); // the target's own
    EXPECT_EQ(reference.GetPropertyName(), "Another name that is too long for the string itself to hold");
}

TEST(PropertyReferences, FollowTheirPoolAndProperty) {
    PropertyPtr const standIn = Value("Speed");
    PropertyReference reference;
    reference.SetDefaultProperty(standIn);
    reference.SetPropertyName("Speed");
    std::optional<Pool> pool(std::in_place, "Cars");
    Util::ShortID const id = pool->GetMemberPoolID();
    reference.SetOwnerPoolID(id);
    EXPECT_EQ(reference.GetOwnerPoolName(), "Cars");
    pool->AddPoolProperty(Value("speed"));
    EXPECT_EQ(reference.GetProperty(), standIn) << "another case is another name";
    PropertyPtr const speed = Value("Speed");
    pool->AddMemberProperty(speed);
    EXPECT_EQ(reference.GetPropertyID(), speed->GetPropertyID());
    pool.reset();
    EXPECT_EQ(reference.GetProperty(), standIn);

    // The same ID again: the event of a pool's creation comes from the pool itself, or from a host that tells of it.
    pool.emplace("Trucks");
    pool->SetNewMemberPoolID(id);
    GlobalEventManager::Trigger(Util::Event(MemberPool::EVENT_CONSTRUCT, 0, 0, &*pool));
    EXPECT_EQ(reference.GetOwnerPool(), nullptr) << "no event that binds";
    reference.SetOwnerPoolID(id);
    EXPECT_EQ(reference.GetOwnerPool(), nullptr) << "an equal ID changes nothing";
    GlobalEventManager::Trigger(Util::Event(MemberPool::EVENT_CREATED, 0, 0, &*pool));
    EXPECT_EQ(reference.GetOwnerPool(), &*pool);
    pool->AddPoolProperty(speed);
    EXPECT_EQ(reference.GetProperty(), speed);
    reference.SetNewOwnerPool(&*pool);
    EXPECT_EQ(reference.GetProperty(), speed) << "bound to it already";

    // A copy has listeners of its own.
    auto former = std::make_unique<PropertyReference>(reference);
    PropertyReference copy(*former);
    copy = std::as_const(copy);
    former.reset();
    pool->InitializeMemberPool();
    EXPECT_EQ(copy.GetProperty(), standIn);
    copy.SetNewOwnerPool(nullptr);
    pool->AddPoolProperty(speed);
    EXPECT_EQ(copy.GetProperty(), standIn);
}

TEST(PropertyReferences, AreUnboundWhenTheirPoolGoes) {
    enum How { UNDER_ITS_ID, UNDER_ANOTHER_ID, ONLY_ANOTHER_OF_ITS_ID };
    for (How const how : {UNDER_ITS_ID, UNDER_ANOTHER_ID, ONLY_ANOTHER_OF_ITS_ID}) {
        SCOPED_TRACE(how);
        std::optional<Pool> pool(std::in_place);
        std::optional<Pool> other(std::in_place);
        PropertyReference reference;
        reference.SetOwnerPoolID(pool->GetMemberPoolID());
        if (how != UNDER_ITS_ID) {
            pool->SetNewMemberPoolID(Util::ShortID());
        }
        if (how == ONLY_ANOTHER_OF_ITS_ID) {
            other->SetNewMemberPoolID(reference.GetOwnerPoolID());
        }
        // That it is unbound shows also in the default that it falls back to.
        PropertyPtr const first = Value("First");
        PropertyPtr const second = Value("Second");
        reference.SetDefaultProperty(first);
        reference.SetDefaultProperty(second);
        std::optional<Pool>(std::in_place).reset();
        EXPECT_EQ(reference.GetProperty(), first) << "another pool";
        (how == ONLY_ANOTHER_OF_ITS_ID ? other : pool).reset();
        EXPECT_EQ(reference.GetOwnerPool(), nullptr);
        EXPECT_EQ(reference.GetProperty(), second);
    }
}

TEST(PropertyReferences, FindOutThatTheirPoolWentWithoutItsEvent) {
    // A nested event ends the delivery before it reaches the reference.
    std::optional<Pool> pool(std::in_place);
    Listener const nesting(MemberPool::EVENT_DELETED, [](Util::Event const&) {
        GlobalEventManager::Trigger(Util::Event(Behaviour::EVENT, 0, 0, nullptr));
    });
    Listener const nobody(Behaviour::EVENT, [](Util::Event const&) {});
    PropertyReference deaf;
    deaf.SetOwnerPoolID(pool->GetMemberPoolID());
    pool.reset();
    EXPECT_EQ(deaf.GetOwnerPool(), nullptr);
    EXPECT_EQ(deaf.GetOwnerPoolName(), "");
    deaf.GetPropertyFromOwnerPool();
    Pool const next;
    deaf.SetOwnerPoolID(next.GetMemberPoolID());
    EXPECT_EQ(deaf.GetOwnerPool(), &next);
}

TEST(PropertyReferences, HearOfTheirPoolWhileTheyAreRebound) {
    Pool former;
    PropertyReference* rebound = nullptr;
    Util::ShortID const id(4711);
    Listener const host(MemberPool::EVENT_CREATED, [&](Util::Event const&) { rebound->SetOwnerPoolID(id); });
    PropertyReference reference;
    rebound = &reference;
    reference.SetOwnerPoolID(former.GetMemberPoolID());
    ASSERT_EQ(reference.GetOwnerPool(), &former);
    Pool later;
    later.SetNewMemberPoolID(id);
    reference.SetOwnerPoolID(former.GetMemberPoolID());
    // The context has not heard of it yet when the host asks for it; the event reaches the reference all the same.
    MainContext().ChangeMemberPoolID(id, 0, later);
    GlobalEventManager::Trigger(Util::Event(MemberPool::EVENT_CREATED, 0, 0, &later));
    EXPECT_EQ(reference.GetOwnerPool(), &later);
    MainContext().ChangeMemberPoolID(0, id, later);
}

TEST(PropertyReferences, SurviveThePropertiesThatTheyRelease) {
    // The last reference to a property runs a host's destructor, which turns to the reference.
    static PropertyReference* reference = nullptr;
    static Util::ShortID target(0);
    struct Meddling : ValueProperty {
        ~Meddling() { reference->SetOwnerPoolID(target); }
    };
    Pool pool;
    Pool other;
    target = pool.GetMemberPoolID();
    PropertyReference meddled;
    reference = &meddled;
    meddled.SetDefaultProperty(PropertyPtr(new Meddling));
    meddled = PropertyReference(); // releases the property, whose destructor binds the reference again
    EXPECT_EQ(meddled.GetOwnerPool(), &pool);
    other.AddPoolProperty(Value("None"));
    EXPECT_EQ(meddled.GetProperty(), Property::NIL);
    pool.AddPoolProperty(Value("None"));
    EXPECT_EQ(meddled.GetProperty()->GetOwnerPool(), &pool) << "it hears the pool that it says it is bound to";
}

TEST(PropertyReferences, ReportPropertyEventsThatTheyDoNotUnderstand) {
    PropertyReference reference;
    reference.SetPropertyName("Speed");
    PropertyPtr speed = Value("Speed");
    PropertyPtr nil = Property::NIL;
    PropertyPtr null(static_cast<Property*>(nullptr));
    MessageLog const log;
    for (auto const& [param1, param2] : {std::pair(0, 1), {1, 1}, {2, 0}, {-1, 0}}) {
        for (PropertyPtr* const subject : {&nil, &null, static_cast<PropertyPtr*>(nullptr)}) {
            reference.HandleEvents(Util::Event(Property::EVENT, param1, param2, subject));
        }
        EXPECT_TRUE(MessageLog::Take().empty());
        reference.HandleEvents(Util::Event(Property::EVENT, param1, param2, &speed));
        EXPECT_EQ(MessageLog::Take(), (Messages{"Bug Report :: ValueProperty Channel :: ValueProperty could't "
                                                "handle event"}));
        EXPECT_EQ(reference.GetProperty(), Property::NIL);
    }
    reference.HandleEvents(Util::Event(MemberPool::EVENT_DELETED, 0, 0, nullptr));
}

} // namespace
