// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <memory>
#include <optional>
#include <utility>

namespace {

using namespace Gentra;
using namespace Support;

TEST(PropertyReferences, BeginUnboundAndHoldOnlyWhatMayBe) {
    PropertyReference const fresh;
    PropertyReference reference(fresh);
    EXPECT_EQ(reference.operator->(), Property::NIL.Get());
    EXPECT_EQ(reference.GetPropertyID(), Property::NIL->GetPropertyID());
    EXPECT_EQ(reference.GetPropertyName(), "None");
    EXPECT_EQ(reference.GetOwnerPool(), nullptr);
    EXPECT_EQ(reference.GetOwnerPoolName(), "");
    EXPECT_EQ(reference.GetOwnerPoolID(), fresh.GetOwnerPoolID());
    EXPECT_NE(PropertyReference().GetOwnerPoolID(), fresh.GetOwnerPoolID());
    reference.SetPropertyName("Speed");
    EXPECT_EQ(Property::NIL->GetName(), "NULL") << "everybody's";
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
    standIn->SetName("A name that is too long for the string itself to hold");
    Pool const pool;
    reference.SetOwnerPoolID(pool.GetMemberPoolID());
    reference.SetPropertyName(reference->GetName()); // the target's own
    EXPECT_EQ(reference.GetPropertyName(), "A name that is too long for the string itself to hold");
    reference.SetPropertyName("Again");
    EXPECT_EQ(standIn->GetName(), "Again");
}

TEST(PropertyReferences, AreBoundByTheirIdAndByCreationOnly) {
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
    pool.emplace("Trucks");
    pool->SetNewMemberPoolID(id);
    GlobalEventManager::Trigger(Util::Event(MemberPool::EVENT_CONSTRUCT, 0, 0, &*pool));
    reference.SetOwnerPoolID(id);
    EXPECT_EQ(reference.GetOwnerPool(), nullptr) << "no event that binds, and an equal ID changes nothing";
    GlobalEventManager::Trigger(Util::Event(MemberPool::EVENT_CREATED, 0, 0, &*pool));
    reference.HandleEvents(Util::Event(MemberPool::EVENT_CONSTRUCT, 0, 0, &*pool));
    EXPECT_EQ(reference.GetOwnerPool(), &*pool) << "nor one that lets go";

    // A copy has listeners of its own.
    auto former = std::make_unique<PropertyReference>(reference);
    PropertyReference copy(*former);
    copy = std::as_const(copy);
    former.reset();
    PropertyPtr const speed = Value("Speed");
    pool->AddPoolProperty(speed);
    EXPECT_EQ(copy.GetPropertyID(), speed->GetPropertyID());
    pool->InitializeMemberPool();
    EXPECT_EQ(copy.GetProperty(), standIn);
    copy.SetNewOwnerPool(nullptr);
    pool->AddPoolProperty(speed);
    EXPECT_EQ(copy.GetProperty(), standIn);
    reference.SetNewOwnerPool(&*pool);
    EXPECT_EQ(reference.GetProperty(), speed) << "bound to it already";
}

TEST(PropertyReferences, AreUnboundWhenTheirPoolGoes) {
    enum How { UNDER_ITS_ID, UNDER_ANOTHER_ID, ONLY_ANOTHER_OF_ITS_ID };
    for (How const how : {UNDER_ITS_ID, UNDER_ANOTHER_ID, ONLY_ANOTHER_OF_ITS_ID}) {
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
    MessageLog const log;
    for (auto const& [param1, param2] : {std::pair(0, 1), {1, 1}, {2, 0}, {-1, 0}}) {
        reference.HandleEvents(Util::Event(Property::EVENT, param1, param2, &nil));
        reference.HandleEvents(Util::Event(Property::EVENT, param1, param2, nullptr));
        EXPECT_TRUE(MessageLog::Take().empty());
        reference.HandleEvents(Util::Event(Property::EVENT, param1, param2, &speed));
        EXPECT_EQ(MessageLog::Take(), (Messages{"Bug Report :: ValueProperty Channel :: ValueProperty could't "
                                                "handle event"}));
        EXPECT_EQ(reference.GetProperty(), Property::NIL);
    }
    reference.HandleEvents(Util::Event(MemberPool::EVENT_DELETED, 0, 0, nullptr));
}

} // namespace
