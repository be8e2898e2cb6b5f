// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <map>
#include <memory>
#include <optional>
#include <random>

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
    reference.SetPropertyName("Speed");
    EXPECT_EQ(Property::NIL->GetName(), "NULL") << "everybody's";
    EXPECT_EQ(reference.GetPropertyName(), "Speed");
    reference.SetDefaultProperty(PropertyPtr(static_cast<Property*>(nullptr)));
    EXPECT_EQ(reference.GetProperty(), Property::NIL);
}

TEST(PropertyReferences, FollowTheirPoolAndProperty) {
    PropertyPtr const standIn = Value("Standby");
    PropertyReference reference;
    reference.SetDefaultProperty(standIn);
    EXPECT_EQ(reference.GetProperty(), standIn);
    reference.SetPropertyName("Speed");
    EXPECT_EQ(standIn->GetName(), "Speed");

    std::optional<Pool> pool(std::in_place, "Cars");
    Util::ShortID const id = pool->GetMemberPoolID();
    reference.SetOwnerPoolID(id);
    EXPECT_EQ(reference.GetOwnerPool(), &*pool);
    EXPECT_EQ(reference.GetOwnerPoolName(), "Cars");
    EXPECT_EQ(reference.GetProperty(), standIn);
    pool->AddPoolProperty(Value("speed"));
    EXPECT_EQ(reference.GetProperty(), standIn) << "another case is another name";
    PropertyPtr const speed = Value("Speed");
    pool->AddMemberProperty(speed);
    EXPECT_EQ(reference.GetProperty(), speed);
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
}

TEST(PropertyReferences, AreUnboundWhenTheirPoolGoesUnderAnotherID) {
    std::optional<Pool> pool(std::in_place);
    PropertyReference reference;
    reference.SetPropertyName("Speed");
    reference.SetOwnerPoolID(pool->GetMemberPoolID());
    pool->AddPoolProperty(Value("Speed"));
    ASSERT_EQ(reference->GetName(), "Speed");
    pool->SetNewMemberPoolID(Util::ShortID());
    std::optional<Pool> stranger(std::in_place);
    stranger->AddPoolProperty(Value("Speed"));
    stranger.reset();
    EXPECT_EQ(reference.GetOwnerPool(), &*pool) << "another pool";
    EXPECT_EQ(reference->GetOwnerPool(), &*pool);
    pool.reset();
    EXPECT_EQ(reference.GetOwnerPool(), nullptr);
    EXPECT_EQ(reference.GetProperty(), Property::NIL);

    // That it was unbound shows also in the default that it falls back to.
    pool.emplace();
    reference.SetOwnerPoolID(pool->GetMemberPoolID());
    PropertyPtr const first = Value("First");
    PropertyPtr const second = Value("Second");
    reference.SetDefaultProperty(first);
    reference.SetDefaultProperty(second);
    pool->SetNewMemberPoolID(Util::ShortID());
    EXPECT_EQ(reference.GetProperty(), first);
    pool.reset();
    EXPECT_EQ(reference.GetProperty(), second);

    // A pool that goes without its event: a nested event ends the delivery before it reaches the reference.
    pool.emplace();
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
    auto const make = [] {
        reference = new PropertyReference;
        reference->SetDefaultProperty(PropertyPtr(new Meddling));
    };
    target = pool.GetMemberPoolID();
    make();
    PropertyReference fresh;
    *reference = fresh; // releases the property, whose destructor binds the reference again
    EXPECT_EQ(reference->GetOwnerPool(), &pool);
    other.AddPoolProperty(Value("None"));
    EXPECT_EQ(reference->GetProperty(), Property::NIL);
    pool.AddPoolProperty(Value("None"));
    EXPECT_EQ(reference->GetProperty()->GetOwnerPool(), &pool) << "it hears the pool that it says it is bound to";
    delete reference;

    // A name that is the target's own.
    PropertyReference named;
    Pool third;
    named.SetOwnerPoolID(third.GetMemberPoolID());
    named.GetProperty() = Value("A name that is too long for the string itself to hold");
    named.SetPropertyName(named->GetName());
    EXPECT_EQ(named.GetPropertyName(), "A name that is too long for the string itself to hold");
    named.SetDefaultProperty(PropertyPtr(MemberSelectionProperty::NIL));
    named.SetPropertyName("Renamed");
    EXPECT_NE(MemberSelectionProperty::NIL->GetName(), "Renamed");
    named.GetProperty() = PropertyPtr(static_cast<Property*>(nullptr));
    EXPECT_EQ(named.GetPropertyID(), Property::NIL->GetPropertyID());
    PropertyPtr const standIn = Value("Stand-in");
    named.SetDefaultProperty(standIn);
    EXPECT_EQ(named.GetProperty(), standIn);
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

TEST(PropertyReferences, AreCopiedWithListenersOfTheirOwn) {
    Pool pool;
    auto first = std::make_unique<PropertyReference>();
    first->SetPropertyName("Speed");
    first->SetOwnerPoolID(pool.GetMemberPoolID());
    PropertyReference copy(*first);
    PropertyReference& self = copy;
    copy = self;
    first.reset();
    PropertyPtr const speed = Value("Speed");
    pool.AddPoolProperty(speed);
    EXPECT_EQ(copy.GetProperty(), speed);
    copy.SetNewOwnerPool(nullptr);
    EXPECT_EQ(copy.GetProperty(), Property::NIL);
}

class ReferenceModel : public testing::TestWithParam<unsigned int> {};

/// Pools and properties come, go and get other IDs; a map of what there is tells where each reference points.
TEST_P(ReferenceModel, AgreesWithWhatThereIs) {
    std::mt19937 random(GetParam());
    auto const below = [&](std::size_t n) { return random() % n; };
    struct Expected {
        PropertyReference reference;
        Pool* pool = nullptr;
        PropertyPtr target = Property::NIL;
        PropertyPtr standIn = Property::NIL;
    };
    std::vector<std::unique_ptr<Pool>> pools;
    std::vector<std::unique_ptr<Expected>> references;
    std::vector<Util::ShortID> const ids{101, 102, 103, 104};
    char const* const names[] = {"A", "B", "a"};
    auto const find = [](Pool* pool, Util::String const& name) {
        return pool != nullptr ? pool->GetPropertyFromName(name) : Property::NIL;
    };
    for (int step = 0; step < 400; ++step) {
        Pool* const pool = pools.empty() ? nullptr : pools[below(pools.size())].get();
        Expected* const some = references.empty() ? nullptr : references[below(references.size())].get();
        switch (below(10)) {
        case 0:
            pools.push_back(std::make_unique<Pool>()); // of a random ID, which nobody waits for
            break;
        case 1:
            if (pool != nullptr) {
                pool->SetNewMemberPoolID(ids[below(ids.size())]);
            }
            break;
        case 2:
            if (pool != nullptr && below(3) == 0) {
                for (auto const& each : references) {
                    if (each->pool == pool || each->reference.GetOwnerPoolID() == pool->GetMemberPoolID()) {
                        each->target = each->pool != nullptr ? each->standIn : each->target;
                        each->pool = nullptr;
                    }
                }
                std::erase_if(pools, [pool](auto const& each) { return each.get() == pool; });
            }
            break;
        case 3:
        case 4:
            if (pool != nullptr) {
                PropertyPtr const property = Value(names[below(std::size(names))]);
                below(2) == 0 ? pool->AddPoolProperty(property) : pool->AddMemberProperty(property);
                for (auto const& each : references) {
                    if (each->pool == pool && each->reference.GetPropertyName() == property->GetName()) {
                        each->target = property;
                    }
                }
            }
            break;
        case 5:
            if (pool != nullptr && below(2) == 0) {
                for (auto const& each : references) {
                    if (each->pool == pool && find(pool, each->reference.GetPropertyName()) != Property::NIL) {
                        each->target = each->standIn;
                    }
                }
                pool->InitializeMemberPool();
            }
            break;
        case 6:
            references.push_back(std::make_unique<Expected>());
            if (some != nullptr && below(2) == 0) {
                *references.back() = *some;
            } else {
                references.back()->standIn = references.back()->target = Value("Stand-in");
                references.back()->reference.SetDefaultProperty(references.back()->standIn);
            }
            break;
        case 7:
            if (some != nullptr) {
                Util::ShortID const id = ids[below(ids.size())];
                if (some->reference.GetOwnerPoolID() != id) {
                    auto* const bound = static_cast<Pool*>(MainContext().GetMemberPoolFromID(id));
                    some->target = bound != some->pool ? some->standIn : some->target;
                    some->pool = bound;
                    PropertyPtr const found = find(bound, some->reference.GetPropertyName());
                    some->target = found != Property::NIL ? found : some->target;
                }
                some->reference.SetOwnerPoolID(id);
            }
            break;
        case 8:
            if (some != nullptr) {
                Util::String const name = names[below(std::size(names))];
                if (some->reference.GetPropertyName() != name) {
                    PropertyPtr const found = find(some->pool, name);
                    some->target = found != Property::NIL ? found : some->standIn;
                }
                some->reference.SetPropertyName(name);
            }
            break;
        default:
            if (below(4) == 0 && some != nullptr) {
                std::erase_if(references, [some](auto const& each) { return each.get() == some; });
            }
        }
        for (auto const& each : references) {
            ASSERT_EQ(each->reference.GetOwnerPool(), each->pool) << "step " << step;
            ASSERT_EQ(each->reference.GetProperty(), each->target) << "step " << step;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ReferenceModel, testing::Range(0u, 12u));

} // namespace
