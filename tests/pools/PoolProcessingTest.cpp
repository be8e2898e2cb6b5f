// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/FakeCounter.h"
#include "support/Host.h"

#include <utility>

namespace {

using namespace Gentra;
using namespace Support;
using Util::RefCountPtr;
using Calls = std::vector<std::string>;

/// A property in no pool that tells its behaviour when it is updated.
struct Updating : ValueProperty {
    explicit Updating(TestBehaviour& newBehaviour) : behaviour(newBehaviour) {}
    void Update() override { behaviour.calls.emplace_back("update"); }
    TestBehaviour& behaviour;
};

struct Processing : testing::Test {
    Processing() {
        pool.AddMemberProperty(Value("v"));
        pool.SetMemberCount(5);
    }
    void Compile() {
        pool.CompileMemberPool();
        log.Take();
    }

    MessageLog log;
    Pool pool;
    Pool other{"Other"};
};

TEST_F(Processing, RunsBehavioursEachFrameAndOnDemand) {
    RefCountPtr<TestBehaviour> const unready(new TestBehaviour("Unready"));
    RefCountPtr<TestBehaviour> const active(new TestBehaviour("A"));
    RefCountPtr<TestBehaviour> const passive(new TestBehaviour("P"));
    for (RefCountPtr<TestBehaviour> const& each : {unready, active, passive}) {
        each->FlexibleValue(0, "free");
        each->LinkPropertyToVisibleInterface(each == unready ? Property::NIL : new Updating(*each), 0);
    }
    pool.LinkActiveBehaviour(unready);
    pool.LinkActiveBehaviour(active);
    pool.LinkPassiveBehaviour(passive);
    active->UpdateProperties();
    EXPECT_TRUE(active->calls.empty()) << "not ready";
    Compile();
    MemberSelection selection(&pool);
    selection.AddMember(pool, pool.GetMemberByIndex(4));
    BehaviourPtr const asBehaviour(passive);
    Calls const all{"check", "update", "trigger", "trigger", "trigger", "trigger", "trigger"};
    pool.ProcessMemberPool();
    EXPECT_EQ(active->TakeCalls(), all);
    pool.SetSingleMemberUpdateIndex(5);
    pool.ProcessMemberPool();
    EXPECT_EQ(active->TakeCalls(), (Calls{"check", "update"}));
    EXPECT_EQ(unready->TakeCalls(), Calls(2, "check"));
    EXPECT_TRUE(passive->calls.empty());
    pool.ApplyPassiveBehaviour(asBehaviour);
    EXPECT_EQ(passive->TakeCalls(), all);
    pool.ApplyPassiveBehaviourOnActiveMember(*passive);
    EXPECT_EQ(passive->TakeCalls(), (Calls{"check", "trigger"}));
    pool.ApplyBehaviourOnMemberSelection(asBehaviour, selection);
    EXPECT_EQ(passive->TakeCalls(), (Calls{"check", "update", "trigger"}));
    EXPECT_TRUE(log.Take().empty());

    MemberSelection foreign(&other);
    BehaviourPtr const none(nullptr);
    for (BehaviourPtr const& refused : {asBehaviour, none}) {
        other.ApplyPassiveBehaviour(refused);
        other.ApplyPassiveBehaviourOnActiveMember(refused);
        other.ApplyBehaviourOnMemberSelection(refused, foreign);
        pool.ApplyBehaviourOnMemberSelection(refused, foreign);
    }
    pool.LinkActiveBehaviour(none);
    pool.LinkMemberConstructionBehaviour(none);
    std::string const start = "Error :: PoolProcessing :: The ";
    std::string const rest =
        "Behaviour \"P\" can not be used for the Pool \"Other\", because he does not own that behaviour";
    EXPECT_EQ(log.Take(),
              (Messages{start + "Passive" + rest, start + "Passive" + rest, start + rest,
                        start + "Behaviour \"P\" can not be used. The Behaviour belongs to the Pool \"Pool\", but the "
                                "MemberSelection it should be applied on does not use that BasePool"}));
    EXPECT_TRUE(passive->calls.empty());
}

TEST_F(Processing, TriggersABehaviourUnlessItTakesTheTriggerForItself) {
    RefCountPtr<TestBehaviour> const live(new TestBehaviour("Live"));
    pool.LinkPassiveBehaviour(live);
    Compile();
    TestBehaviour caller;
    caller.FlexibleBehaviourTrigger(0, "t");
    BehaviourProperty original("Trigger");
    original.TriggerBehaviour(); // of nothing
    original.SetBehaviour(live.Get());
    RefCountPtr<BehaviourProperty> const trigger(new BehaviourProperty(original));
    caller.LinkPropertyToVisibleInterface(trigger, 0);
    caller.PushLinkedParamsToFastParams();
    caller.TriggerFlexibleBehaviour(0);
    EXPECT_EQ(live->TakeCalls(), (Calls{"trigger", "check", "trigger", "trigger", "trigger", "trigger", "trigger"}));
    EXPECT_FALSE(pool.IsActiveMemberValid()) << "as before";
    live->work = [](TestBehaviour&) { return true; };
    original.TriggerBehaviour();
    EXPECT_EQ(live->TakeCalls(), Calls{"trigger"});
    pool.InitializeMemberPool();
    live->work = [&](TestBehaviour&) {
        trigger->SetBehaviour(nullptr);
        caller.ClearLinkedParameters();
        EXPECT_EQ(trigger.GetCount(), 2) << "held while it triggers";
        return false;
    };
    caller.TriggerFlexibleBehaviour(0);
    EXPECT_EQ(live->TakeCalls(), Calls{"trigger"}) << "of no pool";
}

TEST_F(Processing, EndsAWalkWhoseMembersWereRebuilt) {
    // The behaviour is linked again in the new, smaller layout, and there are new members to walk on to.
    RefCountPtr<TestBehaviour> const rebuilding(new TestBehaviour("Rebuilding"));
    rebuilding->MemberValue(0, "x", SHARED_INTRINSIC, 0);
    bool isFirst = true;
    Constructor const constructor([&](MemberPool& built) {
        if (&built == &pool && isFirst) {
            built.AddMemberProperty(Vector("large"));
        }
        if (&built == &pool) {
            built.LinkActiveBehaviour(rebuilding);
        }
    });
    auto const rebuild = [&] {
        MainContext().ForceReconstructAllMemberPools();
        pool.SetMemberCount(5);
        pool.GetAllMembers();
    };
    rebuilding->work = [&](TestBehaviour& self) {
        if (std::exchange(isFirst, false)) {
            rebuild();
        } else {
            self.UseMemberValue(0) = 1;
        }
        return true;
    };
    rebuild();
    pool.ProcessMemberPool();
    EXPECT_EQ(rebuilding->TakeCalls(), (Calls{"check", "trigger"}));
    pool.ProcessMemberPool();
    EXPECT_EQ(rebuilding->TakeCalls().size(), 6u);
}

TEST_F(Processing, KeepsBehavioursAwayFromMembersThatTheyDoNotFit) {
    // Linked to the second pool's layout, used in the first; one of them has forgotten that.
    other.AddMemberProperty(Vector("w"));
    RefCountPtr<TestBehaviour> const astray(new TestBehaviour("Astray"));
    RefCountPtr<TestBehaviour> const cleared(new TestBehaviour("Cleared"));
    for (RefCountPtr<TestBehaviour> const& each : {astray, cleared}) {
        each->MemberValue(0, "far", SHARED_INTRINSIC, 0);
        other.LinkMemberConstructionBehaviour(each);
        pool.LinkMemberConstructionBehaviour(each);
    }
    Compile();
    cleared->ClearParameterInterface();
    pool.LinkActiveBehaviour(astray);
    pool.ProcessMemberPool();
    pool.AddNewMember();
    pool.AddNewMember();
    EXPECT_EQ(astray->TakeCalls(), Calls(3, "check"));
    EXPECT_EQ(cleared->TakeCalls(), Calls(2, "check"));
    std::string const start = "Error :: PoolProcessing :: The Behaviour \"";
    std::string const rest =
        "\" can not be used for the Pool \"Pool\", because its Member Properties do not fit the Members";
    EXPECT_EQ(log.Take(), (Messages{start + "Astray" + rest, start + "Cleared" + rest})) << "once";
}

TEST_F(Processing, SurvivesBehavioursThatChangeThePool) {
    RefCountPtr<TestBehaviour> const busy(new TestBehaviour("Busy"));
    RefCountPtr<TestBehaviour> const late(new TestBehaviour("Late"));
    late->PushLinkedParamsToFastParams();
    busy->work = [&](TestBehaviour& self) {
        if (self.calls == Calls{"check", "trigger"}) {
            pool.LinkActiveBehaviour(late);
            pool.SetMemberCount(50);
        } else if (self.calls.size() == 4) {
            pool.SetMemberCount(2);
            pool.GetAllMembers();
        }
        return true;
    };
    pool.LinkActiveBehaviour(busy);
    Compile();
    pool.ProcessMemberPool();
    EXPECT_EQ(busy->calls.size(), 4u) << "the walk ends where the vector ends";
    EXPECT_EQ(late->TakeCalls(), (Calls{"check", "trigger", "trigger"})) << "linked meanwhile, run in the same frame";

    RefCountPtr<TestBehaviour> const rebuilding(new TestBehaviour("Rebuilding"));
    rebuilding->work = [&](TestBehaviour&) {
        MainContext().ForceReconstructAllMemberPools();
        EXPECT_EQ(rebuilding.GetCount(), 2) << "the pool holds a behaviour while it runs";
        return true;
    };
    pool.LinkActiveBehaviour(rebuilding);
    Compile();
    pool.ProcessMemberPool();
    EXPECT_EQ(pool.GetNumMembers(), 0);
}

TEST_F(Processing, SurvivesMeddlingConstructionBehaviours) {
    RefCountPtr<TestBehaviour> const meddling(new TestBehaviour("Meddling"));
    pool.LinkMemberConstructionBehaviour(meddling);
    Compile();
    pool.ActivateMember(1);
    Member const active = pool.ActiveMember();
    meddling->work = [](TestBehaviour&) -> bool { throw 1; };
    EXPECT_THROW(pool.AddNewMember(), int);
    EXPECT_EQ(pool.ActiveMember(), active);
    EXPECT_EQ(pool.GetNumMembers(), 5);
    bool isFirst = true;
    meddling->work = [&](TestBehaviour&) {
        if (std::exchange(isFirst, false)) {
            pool.DeleteMember(pool.ActiveMember());
            pool.AddNewMember();
        }
        return true;
    };
    pool.AddNewMember();
    EXPECT_EQ(pool.GetNumMembers(), 6) << "only the one that took the deleted one's place";
    meddling->work = [&](TestBehaviour&) {
        pool.InitializeMemberPool();
        return true;
    };
    pool.AddNewMember();
    EXPECT_EQ(pool.GetNumMembers(), 0) << "the new member went with the others";
}

TEST_F(Processing, SamplesEmptyRunsAndTellsThatThereIsNoClock) {
    FakeCounter counter;
    MainContext().GetPerformanceProfiler().StartNewSession();
    RefCountPtr<TestBehaviour> const active(new TestBehaviour("Active"));
    auto const elapsed = Value("TimeElapsed");
    pool.AddPoolProperty(elapsed);
    pool.LinkActiveBehaviour(active);
    Compile();
    counter.countsPerSecond = 0;
    pool.SetSingleMemberUpdateIndex(99);
    pool.ProcessMemberPool();
    MainContext().GetPerformanceProfiler().StopSession();
    EXPECT_EQ(active->GetPerformaceStats().GetSampleCount() + pool.GetPerformaceStats().GetSampleCount(), 2u);
    EXPECT_EQ(elapsed->value, -1.0f);
}

TEST_F(Processing, BuildsAPoolThatAnInstanceClearedWhileItWasCompiled) {
    struct Clearing : InstanceCreationFunctor {
        explicit Clearing(MemberPool& newPool) : pool(newPool) {}
        void CreateInstance(unsigned char*, int) override { pool.InitializeMemberPool(); }
        void DeleteInstance(unsigned char*, int) override {}
        MemberPool& pool;
    } clearing(pool);
    pool.AddPoolProperty(new FixedSizeDataProperty("f", 4, &clearing));
    Compile();
    pool.ProcessMemberPool();
    EXPECT_FALSE(log.Take().empty()) << "it is built";
}

} // namespace
