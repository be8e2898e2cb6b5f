// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <memory>
#include <optional>

namespace {

using namespace Gentra;
using namespace Support;

Messages BuildMessages(std::string const& name) {
    return {"Build \"" + name + "\" Started...", "Initializing \"" + name + "\"", "Constructing \"" + name + "\"",
            "Compiling \"" + name + "\"", "Building \"" + name + "\" completed"};
}

Messages operator+(Messages first, Messages const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(Contexts, AllHearOfEveryPool) {
    Context own;
    std::optional<Pool> pool("Listed");
    for (Context* const context : {&own, &MainContext()}) {
        EXPECT_EQ(context->GetMemberPoolFromID(pool->GetMemberPoolID()), &*pool);
        EXPECT_EQ(context->GetMemberPoolFromName("Listed"), &*pool);
        EXPECT_EQ(context->GetMemberPoolFromName("listed"), nullptr);
    }
    { Context const passing; }
    Pool later("Later");
    ASSERT_TRUE(pool->SetNewMemberPoolID(later.GetMemberPoolID() + 1));
    later.SetName("Listed");
    std::vector<MemberPool*> pools{nullptr};
    own.GetAllMemberPools(pools);
    EXPECT_EQ(pools.size(), 2u);
    std::vector<Util::String> names{"stale"};
    MainContext().GetAllMemberPoolsByName(names);
    EXPECT_EQ(names, (std::vector<Util::String>{"Listed", "Listed"}));
    EXPECT_EQ(MainContext().GetMemberPoolFromName("Listed"), &later) << "the smaller ID";
    pool.reset(); // under an ID that `own` never heard of
    own.GetAllMemberPools(pools);
    EXPECT_EQ(pools, std::vector<MemberPool*>{&later});
    EXPECT_EQ(own.GetMemberPoolFromName("Pool"), nullptr);
    own.ForceConstructAllMemberPools();
}

TEST(Contexts, ReportClashingAndUnknownIds) {
    MessageLog const log;
    Pool pool;
    PropertyPtr property = Value("p");
    pool.AddPoolProperty(property);
    auto const trigger = [](Util::EventType const& type, int param1, void* subject) {
        GlobalEventManager::Trigger(Util::Event(type, param1, 0, subject));
    };
    Util::EventType const ofPool(Property::EVENT, "MemberPool", 1);
    trigger(MemberPool::EVENT_CREATED, 0, &pool);
    trigger(ofPool, 0, &property);
    trigger(ofPool, 1, &property);
    trigger(ofPool, 1, &property);
    trigger(ofPool, 2, &property);
    trigger(MemberPool::EVENT_DELETED, 0, &pool);
    trigger(MemberPool::EVENT_DELETED, 0, &pool);
    EXPECT_EQ(log.Take(),
              (Messages{"Bug Report :: Context :: MemberPool \"Pool\" tries to use an already existing ID",
                        "Bug Report :: Context :: Property \"p\" can't be registered, as it's ID is already registered",
                        "Bug Report :: Context :: Property \"p\" can't get unregistered, it's ID is unknown to the "
                        "Context. why?",
                        "Bug Report :: Context :: MemberPool \"Pool\" got deleted, but it's ID is unknown to the "
                        "Context. why?"}));
    trigger(MemberPool::EVENT_CREATED, 0, nullptr);
    trigger(MemberPool::EVENT_DELETED, 0, nullptr);
    trigger(ofPool, 0, nullptr);
    trigger(Util::EventType("Stranger"), 0, nullptr);
    EXPECT_TRUE(log.Take().empty());
    trigger(MemberPool::EVENT_CREATED, 0, &pool);
    trigger(ofPool, 0, &property);
}

TEST(Contexts, KeepIdRegistrationsConsistent) {
    Pool first;
    Pool second;
    Util::ShortID const id = first.GetMemberPoolID();
    MainContext().ChangeMemberPoolID(id, second.GetMemberPoolID(), first);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(id), &first) << "a taken ID";
    MainContext().ChangeMemberPoolID(4711, 4712, second);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(id), &first);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(4712), &second);
}

TEST(Contexts, ReserveIdsApartFromProperties) {
    Context context;
    for (bool const isReserved : {false, true, true, false, false}) {
        isReserved ? context.RegisterPropertyID(5) : context.UnregisterPropertyID(5);
        EXPECT_EQ(context.IsPropertyIDUsed(5), isReserved);
        EXPECT_EQ(context.GetPropertyByID(5), Property::NIL);
    }
}

TEST(Contexts, StackActiveSelections) {
    Context context;
    MemberSelection selections[] = {MemberSelection(nullptr), MemberSelection(nullptr), MemberSelection(nullptr),
                                    MemberSelection(nullptr)};
    // The last one is a stranger to the stack.
    for (auto const& [deactivated, left] : {std::pair(2, 1), {1, 0}, {0, -1}, {3, -1}}) {
        for (int i = 0; i < 3; ++i) {
            context.ActivateMemberSelection(selections[i]);
        }
        context.DeactivateMemberSelection(selections[deactivated]);
        EXPECT_EQ(context.GetActiveMemberSelection(), left < 0 ? nullptr : &selections[left]);
        context.DeactivateMemberSelection(selections[3]);
    }
}

TEST(Contexts, AreCopiedAsSnapshots) {
    auto source = std::make_unique<Context>();
    auto pool = std::make_unique<Pool>("Snapshot");
    Context copy(*source);
    Pool const later("Later");
    EXPECT_EQ(copy.GetMemberPoolFromName("Snapshot"), pool.get());
    EXPECT_EQ(copy.GetMemberPoolFromName("Later"), nullptr) << "a copy hears no events";
    source.reset();
    pool.reset();
    EXPECT_EQ(copy.GetMemberPoolFromName("Snapshot"), nullptr);
    copy.ForceConstructAllMemberPools();
    copy.ForceReconstructAllMemberPools();
}

// Passes.

TEST(ConstructPass, BuildsWaitingPoolsInOrderOfCreation) {
    MessageLog const log;
    MainContext().ForceConstructAllMemberPools();
    EXPECT_TRUE(log.Take().empty()) << "nothing waits";
    std::optional<Pool> inner;
    Constructor const constructor([&](MemberPool& pool) {
        GlobalMessageManager::OutputMessage("event");
        if (!inner) {
            inner.emplace("Inner");
            MainContext().ForceConstructAllMemberPools();
            MainContext().ForceReconstructAllMemberPools();
        }
        EXPECT_EQ(pool.GetAllProperties().size(), 0u);
    });
    Pool first("First");
    Pool second("Second");
    MainContext().ForceConstructAllMemberPools();
    Messages const messages = log.Take();
    Messages expected;
    for (char const* const name : {"First", "Second", "Inner"}) {
        Messages build = BuildMessages(name);
        build.insert(build.begin() + 3, "event");
        expected = expected + build;
    }
    EXPECT_EQ(messages, expected);
    MainContext().ForceConstructAllMemberPools();
    EXPECT_TRUE(log.Take().empty());
}

TEST(ConstructPass, LetsPoolsBeDestroyedInsideIt) {
    for (int victim = 0; victim < 3; ++victim) {
        MessageLog const log;
        std::vector<std::unique_ptr<Pool>> pools;
        for (char const* const name : {"0", "1", "2"}) {
            pools.push_back(std::make_unique<Pool>(name));
        }
        Constructor const constructor([&](MemberPool& pool) {
            if (pool.GetName() == "1") {
                pools[static_cast<std::size_t>(victim)].reset();
            }
        });
        MainContext().ForceConstructAllMemberPools();
        Messages expected;
        for (int i = 0; i < 3; ++i) {
            Messages build = BuildMessages(std::to_string(i));
            if (i == victim && i == 1) {
                build.resize(3);
            }
            if (i != victim || i < 2) {
                expected = expected + build;
            }
        }
        EXPECT_EQ(log.Take(), expected) << "victim " << victim;
    }
}

TEST(ConstructPass, LeavesAPoolOfAPoolConstructionBehaviourUnbuilt) {
    std::optional<Pool> born;
    Util::RefCountPtr<TestBehaviour> const behaviour(new TestBehaviour);
    behaviour->work = [&](TestBehaviour&) {
        born.emplace("Born");
        return true;
    };
    int constructed = 0;
    Constructor const constructor([&](MemberPool& pool) {
        ++constructed;
        if (pool.GetName() == "Parent") {
            pool.LinkPoolConstructionBehaviour(behaviour);
        }
    });
    Pool parent("Parent");
    MainContext().ForceConstructAllMemberPools();
    ASSERT_TRUE(born);
    MainContext().ForceConstructAllMemberPools();
    EXPECT_EQ(constructed, 1);
    born->ProcessMemberPool();
    EXPECT_EQ(constructed, 1) << "it no longer waits";
}

TEST(ConstructPass, EndsItsGuardWhenAListenerThrows) {
    Pool pool;
    {
        Constructor const constructor([](MemberPool&) { throw 1; });
        EXPECT_THROW(MainContext().ForceConstructAllMemberPools(), int);
    }
    MessageLog const log;
    MainContext().ForceReconstructAllMemberPools();
    EXPECT_EQ(log.Take(), BuildMessages("Pool"));
}

TEST(ReconstructPass, RebuildsAllPoolsById) {
    MessageLog const log;
    Pool high("High");
    Pool low("Low");
    high.SetNewMemberPoolID(1000);
    low.SetNewMemberPoolID(-1000);
    std::optional<Pool> below;
    std::optional<Pool> above;
    Constructor const constructor([&](MemberPool& pool) {
        pool.AddMemberProperty(Value("v"));
        if (pool.GetName() == "High" && !below) {
            below.emplace("Below");
            below->SetNewMemberPoolID(0);
            above.emplace("Above");
            above->SetNewMemberPoolID(2000);
        }
    });
    MainContext().ForceConstructAllMemberPools();
    EXPECT_EQ(high.GetAllProperties().size(), 1u);
    high.SetMemberCount(3);
    below.reset();
    above.reset();
    log.Take();
    MainContext().ForceReconstructAllMemberPools();
    EXPECT_EQ(log.Take(), BuildMessages("Low") + BuildMessages("High") + BuildMessages("Above"));
    EXPECT_EQ(high.GetNumMembers(), 0);
    MainContext().ForceConstructAllMemberPools();
    EXPECT_TRUE(log.Take().empty()) << "what the pass passed by does not wait either";
}

} // namespace
