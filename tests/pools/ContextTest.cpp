// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include <map>
#include <optional>

namespace {

using namespace Gentra;
using namespace Support;

/// What is logged while the pool is built, with that of Passes' listener; only so much of it.
Messages operator+(Messages log, std::pair<std::string, int> const& build) {
    std::string const name = '"' + build.first + '"';
    Messages const all{
        "Build " + name + " Started...",  "Initializing " + name, "Constructing " + name, "event", "Compiling " + name,
        "Building " + name + " completed"};
    log.insert(log.end(), all.begin(), all.begin() + build.second);
    return log;
}

TEST(Contexts, KnowPoolsByIdAndName) {
    std::optional<Context> own(std::in_place);
    std::optional<Pool> pool("Listed");
    Context copy(*own); // hears no events
    Pool later("Later");
    EXPECT_EQ(own->GetMemberPoolFromName("listed"), nullptr);
    ASSERT_TRUE(pool->SetNewMemberPoolID(later.GetMemberPoolID() + 1));
    later.SetName("Listed");
    std::vector<Util::String> names{"stale"};
    MainContext().GetAllMemberPoolsByName(names);
    EXPECT_EQ(names, (std::vector<Util::String>{"Listed", "Listed"}));
    EXPECT_EQ(MainContext().GetMemberPoolFromName("Listed"), &later) << "the smaller ID";
    EXPECT_EQ(copy.GetMemberPoolFromName("Listed"), &*pool);
    Util::ShortID const id = pool->GetMemberPoolID();
    MainContext().ChangeMemberPoolID(id, later.GetMemberPoolID(), *pool);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(id), &*pool) << "a taken ID";
    MainContext().ChangeMemberPoolID(id, 4711, later);
    EXPECT_EQ(MainContext().GetMemberPoolFromID(id), &*pool) << "another pool's";
    pool.reset(); // under an ID that only the main context has heard of
    std::vector<MemberPool*> pools{nullptr};
    own->GetAllMemberPools(pools);
    EXPECT_EQ(pools, std::vector<MemberPool*>{&later});
    own.reset();
    copy.ForceReconstructAllMemberPools();
}

TEST(Contexts, ReportClashingAndUnknownIds) {
    MessageLog const log;
    Pool pool;
    PropertyPtr property = Value("p");
    pool.AddPoolProperty(property);
    Util::EventType const ofPool(Property::EVENT, "MemberPool", 1);
    for (Util::Event const& event :
         {Util::Event(MemberPool::EVENT_CREATED, 0, 0, &pool), Util::Event(ofPool, 0, 0, &property),
          Util::Event(ofPool, 1, 0, &property), Util::Event(ofPool, 1, 0, &property),
          Util::Event(ofPool, 2, 0, &property), Util::Event(MemberPool::EVENT_DELETED, 0, 0, &pool),
          Util::Event(MemberPool::EVENT_DELETED, 0, 0, &pool), Util::Event(MemberPool::EVENT_CREATED, 0, 0, nullptr),
          Util::Event(MemberPool::EVENT_DELETED, 0, 0, nullptr), Util::Event(ofPool, 0, 0, nullptr),
          Util::Event(MemberPool::EVENT_CREATED, 0, 0, &pool), Util::Event(ofPool, 0, 0, &property)}) {
        GlobalEventManager::Trigger(event);
    }
    std::string const start = "Bug Report :: Context :: ";
    EXPECT_EQ(log.Take(),
              (Messages{start + "MemberPool \"Pool\" tries to use an already existing ID",
                        start + "Property \"p\" can't be registered, as it's ID is already registered",
                        start + "Property \"p\" can't get unregistered, it's ID is unknown to the Context. why?",
                        start + "MemberPool \"Pool\" got deleted, but it's ID is unknown to the Context. why?"}));
}

TEST(Contexts, ForgetAPoolWhoseCreationWasNotHeardByAll) {
    std::string log;
    Listener const listener(MemberPool::EVENT, [&](Util::Event const& event) { log += event.type.subName + " "; });
    Listener const throwing(MemberPool::EVENT, [&](Util::Event const& event) {
        if (event.type.subIndex == MemberPool::EVENT_CREATED.subIndex) {
            throw 1;
        }
    });
    EXPECT_THROW(Pool(), int);
    EXPECT_EQ(log, "Created Deleted ");
}

TEST(Contexts, DoNothingOnceNobodyWaitsAnyMore) {
    Context own;
    Pool pool;
    for (Context* const context : {&own, &MainContext()}) {
        context->ForceConstructAllMemberPools();
        SpatialOrganizer const* const organizer = &context->GetSpatialRelations().GetSpatialOrganizer(pool);
        {
            Pool passing;
            passing.SetNewMemberPoolID(passing.GetMemberPoolID() + 1); // of which only the main context hears
        }
        context->ForceConstructAllMemberPools();
        EXPECT_EQ(&context->GetSpatialRelations().GetSpatialOrganizer(pool), organizer) << "a pass makes new ones";
    }
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

TEST(Passes, ReportTheirSteps) {
    MessageLog const log;
    MainContext().ForceConstructAllMemberPools();
    EXPECT_TRUE(log.Take().empty()) << "nothing waits";
    Pool high("High");
    for (int i = 0; i < 100; ++i) {
        Pool const passing;
    }
    std::optional<Pool> brief("Brief");
    std::optional<Pool> inner;
    high.SetNewMemberPoolID(1000);
    Constructor const constructor([&](MemberPool& pool) {
        GlobalMessageManager::OutputMessage("event");
        if (brief && &pool == &*brief) {
            brief.reset();
        } else if (!inner) {
            inner.emplace("Inner");
            MainContext().ForceConstructAllMemberPools(); // not inside another pass
            MainContext().ForceReconstructAllMemberPools();
        }
    });
    MainContext().ForceConstructAllMemberPools();
    EXPECT_EQ(log.Take(), Messages() + std::pair("High", 6) + std::pair("Brief", 4) + std::pair("Inner", 6));
    MainContext().ForceConstructAllMemberPools();
    EXPECT_TRUE(log.Take().empty());
}

TEST(Passes, GoOnWhenHostCodeThrows) {
    MessageLog const log;
    Pool first("First");
    Pool second("Second");
    Pool third("Third");
    int id = 0;
    for (Pool* const each : {&first, &second, &third}) {
        each->SetNewMemberPoolID(++id);
    }
    bool throws = true;
    std::map<MemberPool*, Util::RefCountPtr<TestBehaviour>> behaviours;
    Constructor const constructor([&](MemberPool& pool) {
        GlobalMessageManager::OutputMessage("event");
        behaviours[&pool] = Util::RefCountPtr<TestBehaviour>(new TestBehaviour);
        behaviours[&pool]->PushLinkedParamsToFastParams();
        pool.LinkPoolConstructionBehaviour(behaviours[&pool]);
        if (throws && &pool == &first) {
            throw 1;
        }
        behaviours[&pool]->work = [&](TestBehaviour&) -> bool {
            throw 2;
        }; // the second one, and no fault of the building
        first.SetNewMemberPoolID(99);
    });
    for (bool const again : {true, false}) {
        behaviours.clear();
        log.Take();
        try {
            again ? MainContext().ForceReconstructAllMemberPools() : first.ProcessMemberPool();
            ADD_FAILURE() << "nothing is thrown on";
        } catch (int which) {
            EXPECT_EQ(which, 1) << "the first exception";
        }
        EXPECT_EQ(log.Take()[5], "Error :: Context :: An exception was thrown while the Pool \"First\" was built");
        EXPECT_EQ(behaviours.size(), again ? 3u : 1u) << "only the one that could not be built waits again";
        for (auto const& [pool, behaviour] : behaviours) {
            EXPECT_EQ(behaviour->calls.empty(), pool == &first);
        }
    }
    throws = false;
    EXPECT_THROW(first.ProcessMemberPool(), int);
    EXPECT_EQ(first.GetAllBehaviours().size(), 1u);
    log.Take();
    first.ProcessMemberPool();
    EXPECT_TRUE(log.Take().empty()) << "it is built";
}

} // namespace
