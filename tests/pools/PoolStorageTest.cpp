// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;

// Identity.

TEST(Pools, AnnounceTheirLife) {
    std::string log;
    MemberPool const* subject = nullptr;
    Listener const listener(MemberPool::EVENT, [&](Util::Event const& event) {
        EXPECT_EQ(event.param1, 0);
        EXPECT_EQ(event.param2, 0);
        subject = static_cast<MemberPool const*>(event.subject);
        log += event.type.subName + " ";
    });
    {
        Pool const pool;
        EXPECT_EQ(subject, &pool);
    }
    EXPECT_EQ(log, "Created Deleted ");
    EXPECT_EQ(MemberPool::EVENT.subIndex, -1);
    EXPECT_EQ(MemberPool::EVENT_CREATED.subIndex, 0);
    EXPECT_EQ(MemberPool::EVENT_DELETED.subIndex, 1);
    EXPECT_EQ(MemberPool::EVENT_CONSTRUCT.subIndex, 2);
    EXPECT_EQ(MemberPool::EVENT_CONSTRUCT.subName, "Construct");
}

TEST(Pools, ChangeTheirIdUnlessItIsTaken) {
    Pool pool;
    Pool other;
    Util::ShortID const former = pool.GetMemberPoolID();
    EXPECT_FALSE(pool.SetNewMemberPoolID(other.GetMemberPoolID()));
    EXPECT_FALSE(pool.SetNewMemberPoolID(former));
    EXPECT_TRUE(pool.SetNewMemberPoolID(77));
    EXPECT_TRUE(pool.GetMemberPoolID() == 77);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(77), &pool);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(former), nullptr);
    EXPECT_NE(pool.GetIdentityValue(), other.GetIdentityValue());
    EXPECT_TRUE(other.SetNewMemberPoolID(-5));
    EXPECT_TRUE(other < pool);
}

// Layout.

TEST(Layouts, LayMemberPropertiesEndToEndInOrderOfAddition) {
    Pool pool;
    for (char const* const name : {"v1", "w", "v2"}) {
        Parameter parameter;
        parameter.MakePropertyCreationParameter(name[0] == 'w' ? VECTOR : VALUE, name, false);
        pool.CreateMemberPropertyFromParameter(parameter, 0);
    }
    pool.AddPoolProperty(Value("pool"));
    EXPECT_EQ(pool.GetDataOffsetFromPropertyName("v1"), 0);
    EXPECT_EQ(pool.GetDataOffsetFromPropertyName("w"), 4);
    EXPECT_EQ(pool.GetDataOffsetFromPropertyName("v2"), 16);
    EXPECT_EQ(pool.GetDataOffsetFromPropertyName("pool"), -1);
    EXPECT_EQ(pool.GetDataOffsetFromPropertyName("V1"), -1);
    EXPECT_EQ(Names(pool.GetAllProperties()), (std::vector<std::string>{"pool", "v1", "w", "v2"}));
    EXPECT_EQ(Names(pool.GetAllMemberProperties()), (std::vector<std::string>{"v1", "w", "v2"}));
    std::vector<Util::String> names{"stale"};
    pool.GetAllValuePropertiesByName(names);
    EXPECT_EQ(names, (std::vector<Util::String>{"pool", "v1", "v2"}));
    pool.GetAllVectorPropertiesByName(names);
    EXPECT_EQ(names, (std::vector<Util::String>{"w"}));
    pool.GetAllMemberSelectionPropertiesByName(names);
    EXPECT_TRUE(names.empty());

    PropertyPtr const v2 = pool.GetPropertyFromName("v2");
    EXPECT_TRUE(v2->GetPropertyID() == (static_cast<int>(Util::String("v2").Hash()) ^ pool.GetMemberPoolID()));
    EXPECT_TRUE(pool.GetPropertyByID(v2->GetPropertyID()) == v2);
    EXPECT_TRUE(MainContext().GetPropertyByID(v2->GetPropertyID()) == v2);
    EXPECT_EQ(v2->GetPropertyOwner(), MEMBER);
    EXPECT_EQ(v2->GetOwnerPool(), &pool);
    EXPECT_TRUE(pool.GetPropertyFromName("none") == Property::NIL);
    pool.AddPoolProperty(Value("w"));
    EXPECT_EQ(pool.GetPropertyFromName("w")->GetPropertyOwner(), POOL) << "pool properties come first";
    EXPECT_TRUE(pool.GetBehaviourByName("none") == Behaviour::NIL);

    Parameter unmakable;
    unmakable.MakeBehaviourParameter("b");
    pool.CreatePoolPropertyFromParameter(unmakable, 5);
    EXPECT_EQ(pool.GetAllProperties().size(), 5u);
}

TEST(Layouts, KeepTheFirstOfTwoPropertiesWithOneId) {
    MessageLog const log;
    Pool pool;
    auto const first = Value("first");
    auto const second = Vector("second");
    first->SetPropertyID(5);
    second->SetPropertyID(5);
    pool.AddMemberProperty(first);
    pool.AddMemberProperty(second);
    EXPECT_EQ(log.Take(), Messages{"Bug Report :: Context :: Property \"second\" can't be registered, as it's ID is "
                                   "already registered"});
    EXPECT_EQ(second->GetDataOffset(), 4);
    EXPECT_TRUE(pool.GetPropertyFromName("second") == Property::NIL);
    auto const third = Value("third");
    pool.AddMemberProperty(third);
    EXPECT_EQ(third->GetDataOffset(), 16);
    pool.SetMemberCount(1);
    EXPECT_EQ(second->GetVectorFromMemberSelection(pool, 0).x, 0.0f) << "its bytes are defined";
}

TEST(Layouts, ShareIntrinsicPropertiesByName) {
    struct Row {
        Scope existing;
        Scope added;
        bool memberGivesWay;
        bool poolGivesWay;
    };
    for (Row const& row :
         {Row{SHARED_INTRINSIC, SHARED_INTRINSIC, true, true}, Row{UNIQUE_INTRINSIC, SHARED_INTRINSIC, true, true},
          Row{SHARED_INTRINSIC, UNIQUE_INTRINSIC, false, true}, Row{SHARED_INTRINSIC, VISIBLE, false, false},
          Row{VISIBLE, SHARED_INTRINSIC, false, false}}) {
        Pool pool;
        for (bool const ofMembers : {true, false}) {
            auto const add = [&](PropertyPtr const& property) {
                return ofMembers ? pool.AddMemberProperty(property) : pool.AddPoolProperty(property);
            };
            PropertyPtr const existing = Value("name");
            PropertyPtr const added = Value("name");
            existing->scope = row.existing;
            added->scope = row.added;
            EXPECT_TRUE(add(existing) == Property::NIL);
            bool const givesWay = ofMembers ? row.memberGivesWay : row.poolGivesWay;
            EXPECT_TRUE(add(added) == (givesWay ? existing : Property::NIL)) << row.existing << row.added << ofMembers;
            EXPECT_EQ(added->GetOwnerPool(), givesWay ? nullptr : &pool);
        }
    }
}

TEST(Layouts, TakeAPropertyOverFromAnotherPool) {
    MessageLog const log;
    Pool first("First");
    Pool second("Second");
    second.AddMemberProperty(Vector("before"));
    auto const moved = Value("moved", 3);
    first.AddMemberProperty(moved);
    second.AddMemberProperty(moved);
    EXPECT_EQ(log.Take()[0], "Error: Property already used by another pool!");
    EXPECT_EQ(moved->GetOwnerPool(), &second);
    EXPECT_EQ(moved->GetDataOffset(), 12);
    EXPECT_EQ(first.GetAllMemberProperties().size(), 1u);
    first.SetMemberCount(40); // must not write where the second pool has the datum
    second.SetMemberCount(1);
    EXPECT_EQ(Datum::Read<float>(first.GetDataFromMember(39, 0)), 3.0f);
    EXPECT_EQ(Datum::Read<float>(second.GetDataFromMember(0, 1)), 3.0f);
    EXPECT_EQ(moved->GetDataFromMemberSelection(first, 0), nullptr);
    first.InitializeMemberPool();
    EXPECT_EQ(moved->GetOwnerPool(), &second);
}

TEST(Layouts, RefusePropertiesWhileThereAreMembers) {
    MessageLog const log;
    Pool pool;
    pool.AddMemberProperty(Value("v"));
    pool.SetMemberCount(1);
    auto const late = Value("late");
    EXPECT_TRUE(pool.AddMemberProperty(late) == Property::NIL);
    EXPECT_EQ(log.Take(),
              Messages{"Error :: Construction :: The Property \"late\" could not be added to the Pool \"Pool\", "
                       "because the Pool already has Members"});
    EXPECT_TRUE(pool.GetPropertyFromName("late") == Property::NIL);
    for (PropertyOwner const owner : {MEMBER, FLEXIBLE}) {
        TestBehaviour behaviour;
        Parameter parameter;
        parameter.MakeBehaviourInterfaceParameter(owner, VALUE, "p", VISIBLE);
        behaviour.AddParameterToInterface(&parameter);
        behaviour.LinkPropertyToVisibleInterface(late, 0);
        EXPECT_FALSE(behaviour.PushLinkedParamsToFastParams());
        EXPECT_EQ(behaviour.GetFastParams()[0].dataOffset, -1);
    }
    pool.InitializeMemberPool();
    pool.AddMemberProperty(late);
    EXPECT_EQ(late->GetDataOffset(), 0);
    RefCountPtr<FixedSizeDataProperty> const huge(new FixedSizeDataProperty("huge", 0xFFFFFFFFu, nullptr));
    pool.AddMemberProperty(huge);
    EXPECT_EQ(huge->GetDataOffset(), -1);
    pool.AddMemberProperty(Property::NIL);
    pool.AddPoolProperty(PropertyPtr(nullptr));
    EXPECT_EQ(Property::NIL->GetOwnerPool(), nullptr);
}

TEST(Layouts, KeepTheSizeOfUserDataThatHasAPlace) {
    Pool pool;
    RefCountPtr<FixedSizeDataProperty> const block(new FixedSizeDataProperty("f", 8, nullptr));
    pool.AddMemberProperty(block);
    block->Init("f", 4096, nullptr);
    EXPECT_EQ(block->GetDataSize(), 8);
    unsigned char bytes[8] = {1};
    block->SetPoolData(bytes);
    pool.SetMemberCount(100);
    EXPECT_EQ(*pool.GetDataFromMember(99, 0), 1);
    pool.InitializeMemberPool();
    block->Init("f", 4096, nullptr);
    EXPECT_EQ(block->GetDataSize(), 4096);
}

TEST(Layouts, MoveAPropertyThatIsAddedAgain) {
    Pool pool;
    auto const twice = Value("twice", 7);
    pool.AddMemberProperty(twice);
    pool.AddMemberProperty(twice);
    EXPECT_EQ(twice->GetDataOffset(), 4);
    EXPECT_EQ(pool.GetDataOffsetFromPropertyName("twice"), 4);
    pool.SetMemberCount(1);
    EXPECT_EQ(Datum::Read<float>(twice->GetDataFromMemberSelection(pool, 0)), 7.0f);
}

// Records.

TEST(Records, ComeFromBlocksThatDoubleAndAreFilledFromTheTop) {
    struct Row {
        unsigned int recordSize;
        std::vector<std::size_t> blocks;
    };
    for (Row const& row :
         {Row{20, {16, 32, 64, 128}}, Row{1500, {1, 1, 2, 5, 10, 21, 43, 43}}, Row{70000, {1, 1, 1}}}) {
        Pool pool;
        pool.AddMemberProperty(new FixedSizeDataProperty("f", row.recordSize, nullptr));
        for (std::size_t const count : row.blocks) {
            unsigned char const* const top = pool.CreateNewMember().record;
            for (std::size_t i = 1; i < count; ++i) {
                ASSERT_EQ(top - pool.CreateNewMember().record, static_cast<std::ptrdiff_t>(i * row.recordSize));
            }
        }
    }
}

TEST(Records, AreGivenOutAgainLastInFirstOut) {
    MessageLog const log;
    Pool pool;
    Pool other("Other");
    for (Pool* const each : {&pool, &other}) {
        each->AddMemberProperty(Value("v"));
    }
    Member const first = pool.CreateNewMember();
    Member const second = pool.CreateNewMember();
    Member const foreign = other.CreateNewMember();
    pool.DeleteMember(first);
    pool.DeleteMember(second);
    for (Member const member : {second, foreign, Member(first.record + 1), Member::NIL}) {
        pool.DeleteMember(member);
    }
    EXPECT_EQ(log.Take(),
              Messages{"Bug Report :: MemberPool :: The Pool \"Pool\" was asked to delete a Member it does not have"});
    EXPECT_EQ(pool.CreateNewMember(), second);
    EXPECT_EQ(pool.CreateNewMember(), first);
    EXPECT_NE(pool.CreateNewMember(), first);
}

TEST(Records, StayWhatTheyAreUnderRandomBirthsAndDeaths) {
    std::mt19937 random(3);
    Pool pool;
    auto const serial = Value("serial");
    pool.AddMemberProperty(Vector("w"));
    pool.AddMemberProperty(serial);
    std::map<unsigned char*, float> alive;
    float next = 0;
    for (int step = 0; step < 20000; ++step) {
        if (alive.size() < 50 || random() % 100 < 52) {
            Member const member = pool.CreateNewMember();
            ASSERT_TRUE(alive.emplace(member.record, next).second);
            Datum::Write(member.record + serial->GetDataOffset(), next++);
        } else {
            auto const victim = std::next(alive.begin(), static_cast<std::ptrdiff_t>(random() % 40));
            ASSERT_EQ(Datum::Read<float>(victim->first + serial->GetDataOffset()), victim->second);
            pool.DeleteMember(Member(victim->first));
            alive.erase(victim);
        }
    }
}

TEST(Records, NeedAProperty) {
    MessageLog const log;
    Pool pool;
    pool.SetMemberCount(2);
    EXPECT_EQ(pool.CreateNewMember(), Member::NIL);
    EXPECT_EQ(pool.GetNumMembers(), 0);
    EXPECT_EQ(log.Take(), Messages{"Creating Members without any properties"});
}

TEST(Records, AreReachedByIndexes) {
    Pool pool;
    pool.AddMemberProperty(Value("v", 1));
    pool.AddMemberProperty(Value("w", 2));
    pool.SetMemberCount(2);
    MemberSelection selection(&pool);
    selection.AddMember(pool, pool.GetMemberByIndex(1));
    EXPECT_EQ(pool.GetDataFromMemberSelectionMember(selection, 0, 1), pool.GetDataFromMember(1, 1));
    EXPECT_EQ(Datum::Read<float>(pool.GetDataFromMember(1, 1)), 2.0f);
    for (int const beyond : {-1, 2}) {
        EXPECT_EQ(pool.GetDataFromMember(beyond, 0), nullptr);
        EXPECT_EQ(pool.GetDataFromMember(0, beyond), nullptr);
    }
}

// Clearing, compiling, copying.

TEST(Clearing, TakesThePropertiesOutWithOneEventEach) {
    Pool pool;
    std::string log;
    Listener const listener(
        Util::EventType(Property::EVENT, "Test", pool.GetIdentityValue()), [&](Util::Event const& event) {
            PropertyPtr const& property = *static_cast<PropertyPtr*>(event.subject);
            EXPECT_EQ(event.param2, 0);
            log += property->GetName() + " " + event.type.subName + std::to_string(event.param1) + " ";
            if (event.param1 == 1) {
                EXPECT_EQ(property->GetOwnerPool(), &pool) << "it has not left yet";
            }
        });
    auto const kept = Value("m1");
    pool.AddMemberProperty(kept);
    pool.AddPoolProperty(Value("p1"));
    pool.AddMemberProperty(Value("m2"));
    pool.AddPoolProperty(Value("p2"));
    EXPECT_EQ(std::exchange(log, {}), "m1 MemberPool0 p1 MemberPool0 m2 MemberPool0 p2 MemberPool0 ");
    pool.SetMemberCount(3);
    pool.ActivateFirstMember();
    pool.InitializeMemberPool();
    EXPECT_EQ(log, "p1 Deleted1 p2 Deleted1 m1 MemberPool1 m2 MemberPool1 ");
    EXPECT_EQ(pool.GetNumMembers(), 0);
    EXPECT_FALSE(pool.IsActiveMemberValid());
    EXPECT_TRUE(pool.GetAllProperties().empty());
    EXPECT_TRUE(MainContext().GetPropertyByID(kept->GetPropertyID()) == Property::NIL);
    EXPECT_EQ(kept->GetPropertyOwner(), FLEXIBLE);
    EXPECT_EQ(kept->GetDataOffset(), -1);
    EXPECT_EQ(pool.GetName(), "Pool");
}

TEST(Clearing, SurvivesListenersThatMeddle) {
    MessageLog const log;
    auto pool = std::make_unique<Pool>();
    Member const stale = [&] {
        pool->AddPoolProperty(Value("p"));
        pool->AddMemberProperty(Value("m"));
        return pool->CreateNewMember();
    }();
    int left = 0;
    {
        Listener const meddler(Property::EVENT, [&](Util::Event const& event) {
            left += event.param1;
            pool->AddPoolProperty(Value("late"));
            pool->AddNewMember();
            pool->LinkActiveBehaviour(new TestBehaviour);
            pool->AddMember(*pool, stale);
            pool->InitializeMemberPool();
        });
        pool->InitializeMemberPool();
    }
    EXPECT_EQ(left, 2);
    EXPECT_TRUE(pool->GetAllProperties().empty());
    EXPECT_TRUE(pool->GetAllBehaviours().empty());
    EXPECT_EQ(pool->GetNumMembers(), 0);
    EXPECT_EQ(log.Take(),
              Messages(6, "Error :: Construction :: Nothing can be added to the Pool \"Pool\" while it is cleared"));

    Listener const creator(Property::EVENT, [&](Util::Event const& event) {
        if (event.param1 == 0) {
            pool->AddNewMember();
        }
    });
    pool->AddMemberProperty(Value("first"));
    auto const late = Vector("late");
    pool->AddMemberProperty(late);
    EXPECT_EQ(late->GetDataOffset(), -1) << "a listener has created a member meanwhile";
    EXPECT_TRUE(MainContext().GetPropertyByID(late->GetPropertyID()) == Property::NIL);
}

TEST(Clearing, CanBeRepeatedAfterAListenerThrew) {
    Pool pool;
    pool.AddMemberProperty(Value("m"));
    {
        Listener const throwing(Property::EVENT, [](Util::Event const&) { throw 1; });
        EXPECT_THROW(pool.InitializeMemberPool(), int);
    }
    pool.InitializeMemberPool();
    EXPECT_TRUE(pool.GetAllProperties().empty());
    pool.AddMemberProperty(Value("m"));
    EXPECT_TRUE(pool.CreateNewMember().IsValid());
}

TEST(Pools, MayBeDestroyedInsideTheirEvents) {
    std::unique_ptr<Pool> pool;
    auto const destroyOn = [&](int param1) {
        return [&pool, param1](Util::Event const& event) {
            if (event.param1 == param1) {
                pool.reset();
            }
        };
    };
    auto const fresh = [&] {
        pool = std::make_unique<Pool>();
        pool->AddPoolProperty(Value("p"));
        pool->AddMemberProperty(Value("m"));
        return pool.get();
    };
    Util::RefCountPtr<TestBehaviour> const behaviour(new TestBehaviour);
    behaviour->PoolValue(0, "i", SHARED_INTRINSIC);
    behaviour->MemberValue(0, "j", UNIQUE_INTRINSIC, 0);
    std::function<void(MemberPool&)> const ways[] = {
        [](MemberPool& doomed) { doomed.AddMemberProperty(Value("m2")); },
        [](MemberPool& doomed) { doomed.AddPoolProperty(Value("m2")); },
        [&](MemberPool& doomed) { doomed.LinkActiveBehaviour(behaviour); },
        [&](MemberPool& doomed) { doomed.LinkMemberConstructionBehaviour(behaviour); },
    };
    for (auto const& way : ways) {
        MemberPool& doomed = *fresh();
        Listener const destroyer(Property::EVENT, destroyOn(0));
        way(doomed);
        EXPECT_EQ(pool, nullptr);
    }
    MemberPool& building = *fresh();
    {
        Constructor const destroyer([&](MemberPool&) { pool.reset(); });
        building.ProcessMemberPool();
    }
    EXPECT_EQ(pool, nullptr);
    fresh();
    {
        // The destructor's own events must not destroy the pool again.
        MemberPool const* doomed = pool.get();
        Listener const destroyer(Property::EVENT, [&](Util::Event const& event) {
            if (event.param1 == 1 && doomed != nullptr) {
                doomed = nullptr;
                pool.reset();
            }
        });
        MainContext().ForceReconstructAllMemberPools();
    }
    EXPECT_EQ(pool, nullptr);
}

TEST(Copies, AreDetachedTwins) {
    MessageLog const log;
    Pool pool("Original");
    pool.AddMemberProperty(Value("v", 4));
    pool.AddPoolProperty(Value("p"));
    Util::RefCountPtr<TestBehaviour> const behaviour(new TestBehaviour);
    pool.LinkActiveBehaviour(behaviour);
    pool.CompileMemberPool();
    pool.SetMemberCount(3);
    {
        MemberPool copy(pool);
        EXPECT_EQ(copy.GetBasePool(), &copy);
        EXPECT_EQ(copy.GetName(), "Original");
        EXPECT_TRUE(copy.GetMemberPoolID() == pool.GetMemberPoolID());
        EXPECT_NE(copy.GetIdentityValue(), pool.GetIdentityValue());
        EXPECT_EQ(copy.GetNumMembers(), 0);
        EXPECT_EQ(copy.GetAllProperties().size(), 2u);
        EXPECT_EQ(copy.GetAllBehaviours().size(), 1u);
        copy.SetMemberCount(40);
        EXPECT_EQ(Datum::Read<float>(copy.GetDataFromMember(39, 0)), 4.0f);
        EXPECT_TRUE(copy.SetNewMemberPoolID(123));
        EXPECT_EQ(MainContext().GetMemberPoolFromID(123), nullptr);
    }
    EXPECT_EQ(MainContext().GetMemberPoolFromID(pool.GetMemberPoolID()), &pool);
    EXPECT_EQ(pool.GetAllProperties().size(), 2u);
    EXPECT_EQ(pool.GetAllProperties()[0]->GetOwnerPool(), &pool);
    EXPECT_EQ(behaviour->GetOwnerPool(), &pool);
    EXPECT_EQ(pool.GetNumMembers(), 3);
}

} // namespace
