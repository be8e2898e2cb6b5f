// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"
#include "support/Validator.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;

TEST(Pools, AnnounceTheirLife) {
    std::string log;
    MemberPool const* subject = nullptr;
    Listener const listener(MemberPool::EVENT, [&](Util::Event const& event) {
        subject = static_cast<MemberPool const*>(event.subject);
        log += event.type.subName + std::to_string(event.type.subIndex) + " ";
        EXPECT_TRUE(event.param1 == 0 && event.param2 == 0);
    });
    {
        Pool const pool;
        EXPECT_EQ(subject, &pool);
        MainContext().ForceConstructAllMemberPools();
    }
    EXPECT_EQ(log, "Created0 Construct2 Deleted1 ");
    EXPECT_EQ(MemberPool::EVENT.subIndex, -1);
}

// Layout.

TEST(Layouts, AreToldByNameAndType) {
    Pool pool;
    for (char const* const name : {"v1", "w", "v2"}) {
        Parameter parameter;
        parameter.MakePropertyCreationParameter(name[0] == 'w' ? VECTOR : VALUE, name, false);
        pool.CreateMemberPropertyFromParameter(parameter, 0);
    }
    Parameter ofPool;
    ofPool.MakePropertyCreationParameter(VALUE, "pool", false);
    pool.CreatePoolPropertyFromParameter(ofPool, 4);
    for (auto const& [name, offset] : {std::pair("v1", 0), {"w", 4}, {"v2", 16}, {"pool", -1}, {"V1", -1}}) {
        EXPECT_EQ(pool.GetDataOffsetFromPropertyName(name), offset);
    }
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
    EXPECT_TRUE(pool.GetPropertyFromName("none") == Property::NIL);
    Parameter unmakable;
    unmakable.MakeBehaviourParameter("b");
    pool.CreatePoolPropertyFromParameter(unmakable, 5);
    EXPECT_EQ(pool.GetAllProperties().size(), 4u);
}

TEST(Layouts, RefuseProperties) {
    MessageLog const log;
    Pool pool;
    auto const late = Value("late");
    RefCountPtr<FixedSizeDataProperty> const huge(new FixedSizeDataProperty("huge", 0xFFFFFFFFu, nullptr));
    pool.AddMemberProperty(Value("v"));
    pool.AddMemberProperty(huge);
    pool.AddMemberProperty(new FixedSizeDataProperty("large", 0x7FFFFFFCu, nullptr));
    pool.SetMemberCount(1);
    EXPECT_TRUE(pool.AddMemberProperty(late) == Property::NIL);
    std::string const start = "Error :: Construction :: The Property \"";
    std::string const pooled = "\" could not be added to the Pool \"Pool\", because ";
    EXPECT_EQ(log.Take(), (Messages{start + "huge" + pooled + "its DataSize does not fit into a Member",
                                    start + "large" + pooled + "its DataSize does not fit into a Member",
                                    start + "late" + pooled + "the Pool already has Members"}));
    EXPECT_EQ(huge->GetDataOffset(), -1);
    Pool full;
    full.AddMemberProperty(Value("v"));
    full.AddMemberProperty(new FixedSizeDataProperty("fits", 0x7FFFFFFBu, nullptr));
    EXPECT_EQ(full.GetAllProperties().size(), 2u);
    for (PropertyOwner const owner : {MEMBER, FLEXIBLE}) {
        TestBehaviour behaviour("B");
        Parameter parameter;
        parameter.MakeBehaviourInterfaceParameter(owner, VALUE, "p", VISIBLE);
        behaviour.AddParameterToInterface(&parameter);
        behaviour.LinkPropertyToVisibleInterface(late, 0);
        EXPECT_FALSE(behaviour.PushLinkedParamsToFastParams());
        EXPECT_EQ(behaviour.GetFastParams()[0].dataOffset, -1);
        EXPECT_EQ(log.Take()[0], "Error :: Compiler :: Behaviour \"B\" :: Member Property without a place in the "
                                 "Members linked to Parameter \"p\"");
    }
    pool.AddMemberProperty(Property::NIL);
    pool.AddPoolProperty(PropertyPtr(nullptr));
    EXPECT_EQ(Property::NIL->GetOwnerPool(), nullptr);
    Pool other;
    other.AddMemberProperty(pool.GetPropertyFromName("v"));
    EXPECT_EQ(log.Take()[0], "Error: Property already used by another pool!");
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
    EXPECT_EQ(*pool.GetMemberByIndex(99).record, 1);
    pool.InitializeMemberPool();
    pool.AddPoolProperty(block);
    pool.AddPoolProperty(block);
    block->Init("f", 4096, nullptr);
    EXPECT_EQ(block->GetDataSize(), 4096);
}

// Records.

TEST(Records, ComeFromBlocksThatDoubleAndAreFilledFromTheTop) {
    for (auto const& [recordSize, blocks] :
         {std::pair(20u, std::vector{16, 32, 64, 128}), {1500u, {1, 1, 2, 5, 10, 21, 43, 43}}, {70000u, {1, 1, 1}}}) {
        Pool pool;
        pool.AddMemberProperty(new FixedSizeDataProperty("f", recordSize, nullptr));
        for (int const count : blocks) {
            unsigned char const* const top = pool.CreateNewMember().record;
            for (std::ptrdiff_t i = 1; i < count; ++i) {
                ASSERT_EQ(top - pool.CreateNewMember().record, i * recordSize);
            }
        }
    }
}

TEST(Records, AreGivenOutAgainLastInFirstOut) {
    MessageLog const log;
    Pool pool;
    Pool other("Other");
    EXPECT_EQ(pool.CreateNewMember(), Member::NIL);
    pool.SetMemberCount(2);
    EXPECT_EQ(log.Take(), Messages{"Creating Members without any properties"});
    for (Pool* const each : {&pool, &other}) {
        each->AddMemberProperty(Value("v"));
    }
    Member const first = pool.CreateNewMember();
    Member const second = pool.CreateNewMember();
    for (Member const member :
         {first, second, second, other.CreateNewMember(), Member(first.record + 1), Member::NIL}) {
        pool.DeleteMember(member);
    }
    EXPECT_EQ(log.Take(),
              Messages{"Bug Report :: MemberPool :: The Pool \"Pool\" was asked to delete a Member it does not have"});
    EXPECT_EQ(pool.CreateNewMember(), second);
    EXPECT_EQ(pool.CreateNewMember(), first);
    pool.DeleteMember(Member(std::max(first.record, second.record) + 4)); // right behind the first block
    EXPECT_EQ(Validator::RecordsInUse(pool).size(), 2u);
}

/// Throws or meddles where it is told to, and counts who is alive.
struct Meddling : InstanceCreationFunctor {
    void CreateInstance(unsigned char* datum, int) override {
        onCreation(datum);
        alive.push_back(datum);
    }
    void DeleteInstance(unsigned char* datum, int) override {
        std::erase(alive, datum);
        onDeletion(datum);
    }
    std::vector<unsigned char*> alive;
    std::function<void(unsigned char*)> onCreation = [](unsigned char*) {};
    std::function<void(unsigned char*)> onDeletion = [](unsigned char*) {};
};

TEST(Records, AreInUseOnceTheirDataAreSetUp) {
    MessageLog const log;
    Meddling functor;
    Pool pool;
    pool.AddMemberProperty(new FixedSizeDataProperty("first", 8, &functor));
    pool.AddMemberProperty(new FixedSizeDataProperty("second", 8, &functor));
    functor.onCreation = [&](unsigned char* datum) {
        pool.DeleteMember(Member(datum));
        EXPECT_FALSE(pool.HasMember(Member(datum)));
    };
    Member const member = pool.CreateNewMember();
    EXPECT_TRUE(pool.HasMember(member)) << "half-made it could not be deleted";
    EXPECT_EQ(log.Take().size(), 1u);
    int left = 1;
    functor.onCreation = [&](unsigned char*) {
        if (left-- == 0) {
            throw 1;
        }
    };
    EXPECT_THROW(pool.CreateNewMember(), int);
    EXPECT_EQ(functor.alive, (std::vector{member.record, member.record + 8})) << "what was created before went again";
    functor.onDeletion = [](unsigned char*) { throw 1; };
    EXPECT_THROW(pool.RemoveAndDeleteMembers({member}), int);
    EXPECT_TRUE(functor.alive.empty()) << "all are deleted, whoever throws";
    functor.onCreation = functor.onDeletion = [](unsigned char*) {};
    EXPECT_EQ(pool.CreateNewMember(), member);
    EXPECT_EQ(Validator::RecordsInUse(pool), std::set{member.record});
}

// Clearing, copying.

TEST(Clearing, TakesThePropertiesOutWithOneEventEach) {
    Pool pool;
    std::string log;
    Listener const listener(
        Util::EventType(Property::EVENT, "Test", pool.GetIdentityValue()), [&](Util::Event const& event) {
            PropertyPtr const& property = *static_cast<PropertyPtr*>(event.subject);
            EXPECT_EQ(event.param2, 0);
            log += property->GetName() + " " + event.type.subName + std::to_string(event.param1) + " ";
            EXPECT_EQ(property->GetOwnerPool(), event.param1 == 1 ? &pool : nullptr) << "not yet in, still there";
        });
    pool.AddMemberProperty(Value("m1"));
    pool.AddPoolProperty(Value("p1"));
    pool.AddMemberProperty(Value("m2"));
    pool.AddPoolProperty(Value("p2"));
    EXPECT_EQ(std::exchange(log, {}), "m1 MemberPool0 p1 MemberPool0 m2 MemberPool0 p2 MemberPool0 ");
    pool.InitializeMemberPool();
    EXPECT_EQ(log, "p1 Deleted1 p2 Deleted1 m1 MemberPool1 m2 MemberPool1 ");
}

TEST(Clearing, SurvivesListenersThatMeddle) {
    MessageLog const log;
    Pool pool;
    pool.AddPoolProperty(Value("p"));
    pool.AddMemberProperty(Value("m"));
    Member const stale = pool.CreateNewMember();
    int left = 0;
    {
        Listener const meddler(Property::EVENT, [&](Util::Event const& event) {
            left += event.param1;
            pool.AddPoolProperty(Value("late"));
            pool.AddNewMember();
            pool.LinkActiveBehaviour(new TestBehaviour);
            pool.AddMember(pool, stale);
            pool.InitializeMemberPool();
        });
        pool.InitializeMemberPool();
    }
    EXPECT_EQ(left, 2);
    EXPECT_TRUE(pool.GetAllProperties().empty() && pool.GetAllBehaviours().empty());
    EXPECT_EQ(pool.GetNumMembers(), 0);
    EXPECT_EQ(log.Take(),
              Messages(6, "Error :: Construction :: Nothing can be added to the Pool \"Pool\" while it is cleared"));

    pool.AddMemberProperty(Value("m"));
    pool.AddPoolProperty(Value("p"));
    {
        Listener const throwing(Property::EVENT, [](Util::Event const&) { throw 1; });
        EXPECT_THROW(pool.InitializeMemberPool(), int);
        PropertyPtr const refused = Value("refused");
        EXPECT_THROW(pool.AddPoolProperty(refused), int);
        EXPECT_TRUE(MainContext().GetPropertyByID(refused->GetPropertyID()) == Property::NIL);
    }
    EXPECT_TRUE(pool.GetAllProperties().empty()) << "carried out all the same";

    Listener const creator(Property::EVENT, [&](Util::Event const& event) {
        if (event.param1 == 0) {
            pool.AddNewMember();
        }
    });
    pool.AddMemberProperty(Value("first"));
    auto const late = Vector("late");
    pool.AddMemberProperty(late);
    EXPECT_EQ(late->GetDataOffset(), -1) << "a listener has created a member meanwhile";
    EXPECT_EQ(pool.GetNumMembers(), 1);
    EXPECT_TRUE(MainContext().GetPropertyByID(late->GetPropertyID()) == Property::NIL);
}

TEST(Pools, MayBeDestroyedInsideTheirEvents) {
    RefCountPtr<TestBehaviour> const behaviour(new TestBehaviour);
    behaviour->PoolValue(0, "i", SHARED_INTRINSIC);
    behaviour->MemberValue(0, "j", UNIQUE_INTRINSIC, 0);
    std::unique_ptr<Pool> pool;
    struct Way {
        int param1; ///< Of the property event that destroys the pool.
        std::function<void()> run;
    };
    for (Way const& way :
         {Way{0, [&] { pool->AddMemberProperty(Value("m2")); }}, Way{0, [&] { pool->AddPoolProperty(Value("m2")); }},
          Way{0, [&] { pool->LinkActiveBehaviour(behaviour); }},
          Way{0, [&] { pool->LinkMemberConstructionBehaviour(behaviour); }},
          Way{1, [&] { pool->InitializeMemberPool(); }},
          Way{1, [] { MainContext().ForceReconstructAllMemberPools(); }}}) {
        pool = std::make_unique<Pool>();
        pool->AddPoolProperty(Value("p"));
        pool->AddMemberProperty(Value("m"));
        Listener const destroyer(Property::EVENT, [&](Util::Event const& event) {
            if (event.param1 == way.param1) {
                pool.reset();
            }
        });
        way.run();
        EXPECT_EQ(pool, nullptr);
    }
    pool = std::make_unique<Pool>();
    Constructor const destroyer([&](MemberPool&) { pool.reset(); });
    pool->ProcessMemberPool();
    EXPECT_EQ(pool, nullptr);
}

TEST(Pools, EndWholeThoughListenersThrow) {
    MessageLog const log;
    auto pool = std::make_unique<Pool>("Ending");
    PropertyPtr const property = Value("p");
    pool->AddPoolProperty(property);
    Util::ShortID const id = pool->GetMemberPoolID();
    {
        Listener const ofProperties(Property::EVENT, [](Util::Event const&) { throw 1; });
        Listener const ofPools(MemberPool::EVENT_DELETED, [&, ending = pool.get()](Util::Event const&) {
            ending->AddPoolProperty(property);
            ending->CompileMemberPool();
            ending->ProcessMemberPool();
            MainContext().ForceReconstructAllMemberPools();
            throw 2;
        });
        pool.reset();
    }
    std::string const refused =
        "Error :: Construction :: Nothing can be added to the Pool \"Ending\" while it is cleared";
    EXPECT_EQ(log.Take(),
              (Messages{refused, refused,
                        "Error :: MemberPool :: An exception was thrown while the Pool \"Ending\" was destroyed"}));
    EXPECT_EQ(MainContext().GetMemberPoolFromID(id), nullptr);
    EXPECT_TRUE(MainContext().GetPropertyByID(property->GetPropertyID()) == Property::NIL);
    EXPECT_EQ(property->GetOwnerPool(), nullptr);
}

TEST(Pools, RemoveAndDeleteManyMembersInOneGo) {
    for (unsigned int const size : {4u, 500'000u}) { // of the larger ones each block is mapped by itself
        Pool pool;
        pool.AddMemberProperty(new FixedSizeDataProperty("f", size, nullptr));
        pool.SetMemberCount(100);
        std::vector<Member> const all = pool.GetAllMembers();
        pool.AddMember(pool, all[7]); // twice in the list
        pool.ActivateMember(7);
        std::vector<Member> going(all.begin() + 5, all.end());
        going.insert(going.end(), {all[0], Member::NIL, all[4]});
        pool.RemoveAndDeleteMembers(going);
        EXPECT_EQ(Validator::RecordsInUse(pool).size(), 3u);
        EXPECT_EQ(pool.GetAllMembers(), (std::vector{all[1], all[2], all[3]}));
        EXPECT_EQ(pool.ActiveMember(), all[1]) << "the active one was among them";
        EXPECT_EQ(pool.CreateNewMember(), all[4]) << "deleted in the given order";
    }
}

TEST(Copies, AreDetachedTwins) {
    Pool pool("Original");
    pool.AddMemberProperty(Value("v"));
    pool.AddMemberProperty(Value("w", 4));
    RefCountPtr<TestBehaviour> const behaviour(new TestBehaviour);
    pool.LinkActiveBehaviour(behaviour);
    pool.SetMemberCount(3);
    Util::ShortID const id = pool.GetMemberPoolID();
    {
        MemberPool copy(pool);
        EXPECT_EQ(copy.GetBasePool(), &copy);
        EXPECT_TRUE(copy.GetMemberPoolID() == id && copy.GetName() == "Original");
        EXPECT_NE(copy.GetIdentityValue(), pool.GetIdentityValue());
        EXPECT_TRUE(copy.GetNumMembers() == 0 && copy.GetAllBehaviours().size() == 1);
        copy.SetMemberCount(40);
        EXPECT_EQ(Datum::Read<float>(copy.GetDataFromMember(39, 1)), 4.0f);
        EXPECT_EQ(copy.GetDataFromMemberSelectionMember(copy, 39, 1), copy.GetDataFromMember(39, 1));
        EXPECT_EQ(copy.GetDataFromMemberSelectionMember(pool, 0, 0), nullptr);
        for (auto const& [member, property] : {std::pair(-1, 1), {40, 1}, {0, -1}, {0, 2}}) {
            EXPECT_EQ(copy.GetDataFromMember(member, property), nullptr);
        }
        EXPECT_TRUE(copy.SetNewMemberPoolID(123));
        EXPECT_EQ(MainContext().GetMemberPoolFromID(123), nullptr);
        EXPECT_TRUE(copy.SetNewMemberPoolID(static_cast<int>(id) - 1) && copy < pool);
    }
    EXPECT_EQ(MainContext().GetMemberPoolFromID(id), &pool);
    EXPECT_EQ(pool.GetAllProperties()[1]->GetOwnerPool(), &pool);
    EXPECT_EQ(behaviour->GetOwnerPool(), &pool);
    EXPECT_EQ(pool.GetNumMembers(), 3);
}

} // namespace
