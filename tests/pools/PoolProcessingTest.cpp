// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/FakeCounter.h"
#include "support/Host.h"
#include "support/Validator.h"

#include <algorithm>
#include <functional>
#include <optional>
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
    pool.SetSingleMemberUpdateIndex(3);
    pool.ProcessMemberPool();
    EXPECT_EQ(active->TakeCalls(), (Calls{"check", "update", "trigger"}));
    EXPECT_EQ(active->member, pool.GetMemberByIndex(3));
    pool.SetSingleMemberUpdateIndex(5);
    pool.ProcessMemberPool();
    EXPECT_EQ(active->TakeCalls(), (Calls{"check", "update"}));
    EXPECT_EQ(unready->TakeCalls(), Calls(3, "check"));
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
    RefCountPtr<BehaviourProperty> const trigger(new BehaviourProperty("Trigger"));
    trigger->TriggerBehaviour(); // of nothing
    trigger->SetBehaviour(live.Get());
    caller.LinkPropertyToVisibleInterface(trigger, 0);
    caller.PushLinkedParamsToFastParams();
    caller.TriggerFlexibleBehaviour(0);
    EXPECT_EQ(live->TakeCalls(), (Calls{"trigger", "check", "trigger", "trigger", "trigger", "trigger", "trigger"}));
    live->work = [](TestBehaviour&) { return true; };
    BehaviourProperty(std::as_const(*trigger)).TriggerBehaviour();
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

/// Every way in which a pool runs host code inside itself; in each of them somebody tries to clear it, to have it
/// built, and to let go of whoever runs.
TEST_F(Processing, KeepsItsShapeWhileItIsInUse) {
    struct Ticking : ValueProperty {
        void Update() override { work(); }
        std::function<void()> work = [] {};
    };
    struct Instances : InstanceCreationFunctor {
        void CreateInstance(unsigned char*, int) override { onCreation(); }
        void DeleteInstance(unsigned char*, int) override { onDeletion(); }
        std::function<void()> onCreation = [] {};
        std::function<void()> onDeletion = [] {};
    } instances;
    struct Checking : TestBehaviour {
        void CheckForUpdate() override { onCheck(); }
        std::function<void()> onCheck = [] {};
    };
    RefCountPtr<Checking> behaviour(new Checking);
    RefCountPtr<Ticking> ticking(new Ticking);
    Constructor const constructor([&](MemberPool& built) {
        if (&built != &pool) {
            return;
        }
        built.AddMemberProperty(new FixedSizeDataProperty("f", 4, &instances));
        built.AddPoolProperty(new FixedSizeDataProperty("p", 4, &instances));
        behaviour = RefCountPtr<Checking>(new Checking);
        ticking = RefCountPtr<Ticking>(new Ticking);
        behaviour->FlexibleValue(0, "t");
        behaviour->LinkPropertyToVisibleInterface(ticking, 0);
        behaviour->PushLinkedParamsToFastParams();
        built.LinkActiveBehaviour(behaviour);
        built.LinkMemberConstructionBehaviour(behaviour);
        built.LinkPoolConstructionBehaviour(behaviour);
    });
    int uses = 0;
    auto const meddle = [&] {
        ++uses;
        std::uint64_t const generation = pool.GetGeneration();
        int const members = pool.GetNumMembers();
        EXPECT_TRUE(pool.IsInUse());
        pool.InitializeMemberPool();
        MainContext().ForceReconstructAllMemberPools();
        MainContext().ForceConstructAllMemberPools();
        EXPECT_EQ(pool.GetGeneration(), generation);
        EXPECT_EQ(pool.GetNumMembers(), members);
        pool.Clear();                 // a list may change
        for (int i = 0; i < 3; ++i) { // the last holders but the pool let go
            behaviour = RefCountPtr<Checking>(new Checking);
            ticking = RefCountPtr<Ticking>(new Ticking);
        }
    };
    auto const rebuild = [&] {
        instances.onCreation = instances.onDeletion = [] {};
        MainContext().ForceReconstructAllMemberPools();
        pool.SetMemberCount(3);
        log.Take();
    };
    MemberSelection some(&pool);
    auto const work = [&](TestBehaviour&) {
        meddle();
        return true;
    };
    std::pair<std::function<void()>, std::function<void()>> const ways[] = {
        {[&] { behaviour->work = work; }, [&] { pool.ProcessMemberPool(); }},
        {[&] { behaviour->work = work; }, [&] { pool.ApplyPassiveBehaviour(*behaviour); }},
        {[&] { behaviour->work = work; }, [&] { pool.ApplyPassiveBehaviourOnActiveMember(*behaviour); }},
        {[&] { behaviour->work = work; }, [&] { pool.ApplyBehaviourOnMemberSelection(BehaviourPtr(behaviour), some); }},
        {[&] { behaviour->work = work; }, [&] { pool.CreateNewMember(); }},
        {[&] { behaviour->onCheck = meddle; }, [&] { pool.ProcessMemberPool(); }},
        {[&] { ticking->work = meddle; }, [&] { pool.ProcessMemberPool(); }},
        {[&] { instances.onCreation = meddle; }, [&] { pool.CreateNewMember(); }},
        {[&] { instances.onDeletion = meddle; }, [&] { pool.DeleteMember(pool.GetMemberByIndex(0)); }},
        {[&] { instances.onCreation = meddle; }, [&] { pool.CompileMemberPool(); }}};
    for (auto const& [prepare, run] : ways) {
        rebuild();
        some.AddMember(pool, pool.GetMemberByIndex(1));
        prepare();
        int const before = uses;
        run();
        EXPECT_GT(uses, before);
        EXPECT_FALSE(pool.IsInUse());
        EXPECT_EQ(pool.GetAllProperties().size(), 2u) << "nothing was cleared";
        Messages const said = log.Take();
        auto const says = [&](char const* text) {
            return std::any_of(said.begin(), said.end(), [&](auto const& each) { return each.starts_with(text); });
        };
        EXPECT_TRUE(says("Error :: Construction :: The Pool \"Pool\" can not be initialized while it is in use"));
        EXPECT_TRUE(says("Error :: Context :: The Pool \"Pool\" can not be built while it is in use"));
        EXPECT_TRUE(says("Build \"Other\" Started..."));
        EXPECT_FALSE(says("Build \"Pool\""));
        some.Clear();
    }
    rebuild();
    behaviour->work = [&](TestBehaviour&) -> bool { throw 1; };
    EXPECT_THROW(pool.ProcessMemberPool(), int);
    EXPECT_FALSE(pool.IsInUse()) << "whatever is thrown";
}

TEST_F(Processing, LeavesAWaitingPoolThatIsInUseWaiting) {
    struct Building : InstanceCreationFunctor {
        void CreateInstance(unsigned char*, int) override { MainContext().ForceConstructAllMemberPools(); }
        void DeleteInstance(unsigned char*, int) override {}
    } building;
    for (bool const isBuilt : {false, true}) {
        std::optional<Pool> late("Late");
        late->AddMemberProperty(new FixedSizeDataProperty("f", 4, &building));
        late->CreateNewMember(); // the others are built
        std::string const last = log.Take().back();
        EXPECT_EQ(last, "Error :: Context :: The Pool \"Late\" can not be built while it is in use");
        if (isBuilt) {
            late->ProcessMemberPool();
            EXPECT_EQ(log.Take().front(), "Build \"Late\" Started...");
        }
        late.reset();
        MainContext().ForceConstructAllMemberPools();
        EXPECT_TRUE(log.Take().empty());
    }
}

TEST_F(Processing, LetsALiveTriggerRebuildThePoolOfItsBehaviour) {
    for (bool const isConstruction : {false, true}) {
        int survived = 0;
        struct Surviving : TestBehaviour {
            explicit Surviving(int& newSurvived) : survived(newSurvived) {}
            ~Surviving() {
                BehaviourProperty last("last");
                last.SetBehaviour(this);
                last.TriggerBehaviour(); // nobody can hold it any more
                --survived;
            }
            bool TriggerLiveBehaviour() override {
                GetOwnerPool() != nullptr ? GetOwnerPool()->InitializeMemberPool() : clear();
                ++survived;
                return false;
            }
            int& survived;
            std::function<void()> clear = [] {};
        };
        auto* const behaviour = new Surviving(survived);
        behaviour->clear = [&] { pool.InitializeMemberPool(); };
        if (isConstruction) {
            pool.LinkPoolConstructionBehaviour(behaviour);
        } else {
            pool.LinkPassiveBehaviour(behaviour);
        }
        BehaviourProperty trigger("t");
        trigger.SetBehaviour(behaviour);
        trigger.TriggerBehaviour();
        EXPECT_EQ(survived, 1) << "two calls, and it goes once, not within the first one";
        EXPECT_TRUE(pool.GetAllBehaviours().empty());
    }
}

TEST_F(Processing, WalksOnForNoOtherReasonThanTheNumberAndTheEnd) {
    RefCountPtr<TestBehaviour> const behaviour(new TestBehaviour("Loose"));
    RefCountPtr<TestBehaviour> const late(new TestBehaviour("Late"));
    late->PushLinkedParamsToFastParams();
    behaviour->work = [&](TestBehaviour& self) {
        self.ClearBehaviour(); // of its links, not of its walk
        if (self.calls.size() == 6) {
            pool.LinkActiveBehaviour(late);
        }
        return true;
    };
    pool.LinkActiveBehaviour(behaviour);
    Compile();
    pool.ProcessMemberPool();
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "trigger", "trigger", "trigger", "trigger", "trigger"}));
    EXPECT_EQ(late->TakeCalls().size(), 6u) << "linked meanwhile, run in the same frame";
    pool.InitializeMemberPool();
    pool.LinkActiveBehaviour(late);
    pool.ProcessMemberPool();
    EXPECT_TRUE(late->calls.empty()) << "not compiled since";
}

TEST_F(Processing, KeepsConstructionBehavioursAwayFromMembersThatTheyDoNotFit) {
    RefCountPtr<MemberSelectionProperty> const selections(new MemberSelectionProperty("s"));
    auto const first = Value("first");
    auto const second = Value("second");
    other.AddMemberProperty(selections);
    Pool third("Third");
    third.AddMemberProperty(first);
    third.AddMemberProperty(second);
    RefCountPtr<TestBehaviour> const near(new TestBehaviour("Near"));
    RefCountPtr<TestBehaviour> const far(new TestBehaviour("Far"));
    RefCountPtr<TestBehaviour> const pointing(new TestBehaviour("Pointing"));
    near->MemberValue(0, "first", VISIBLE, 0);
    near->LinkPropertyToVisibleInterface(first, 0);
    far->MemberValue(0, "second", VISIBLE, 0);
    far->LinkPropertyToVisibleInterface(second, 0);
    pointing->MemberMemberSelection(0, "s", VISIBLE);
    pointing->LinkPropertyToVisibleInterface(selections, 0);
    for (RefCountPtr<TestBehaviour> const& each : {near, far, pointing}) {
        pool.LinkMemberConstructionBehaviour(each);
    }
    Compile();
    pool.AddNewMember();
    pool.AddNewMember();
    EXPECT_EQ(near->TakeCalls(), (Calls{"check", "trigger", "check", "trigger"})) << "the record reaches so far";
    EXPECT_EQ(far->TakeCalls(), Calls(2, "check"));
    EXPECT_EQ(pointing->TakeCalls(), Calls(2, "check")) << "what is no pointer there must not be taken for one";
    near->ClearLinkedParameters(); // but for the fast parameters
    pool.AddNewMember();
    EXPECT_EQ(near->TakeCalls(), Calls{"check"});
    std::string const start = "Error :: PoolProcessing :: The Behaviour \"";
    std::string const rest =
        "\" can not be used for the Pool \"Pool\", because its Member Properties do not fit the Members";
    EXPECT_EQ(log.Take(), (Messages{start + "Far" + rest, start + "Pointing" + rest, start + "Near" + rest})) << "once";
}

/// A behaviour may work on the members of another pool: it sets `member`, and what it reads is in the record of that.
TEST_F(Processing, ReadsMembersOfOtherPoolsAndReportsThoseOfAWrongOne) {
    other.AddMemberProperty(Vector("w"));
    auto const far = Value("far", 3);
    other.AddMemberProperty(far);
    other.AddNewMember();
    TestBehaviour wrong("Wrong");
    wrong.FlexibleValue(0, "far slot");
    wrong.MemberValue(1, "near slot", VISIBLE, 0);
    auto const near = Value("near", 4);
    Pool third("Third");
    third.AddMemberProperty(near);
    third.AddNewMember();
    wrong.LinkPropertyToVisibleInterface(far, 0);
    wrong.LinkPropertyToVisibleInterface(near, 1);
    wrong.PushLinkedParamsToFastParams();
    log.Take();
    wrong.member = other.GetMemberByIndex(0);
    wrong.WriteFlexibleValue(0, wrong.ReadFlexibleValue(0) + 1);
    EXPECT_EQ(wrong.UseMemberValue(0), 4);
    EXPECT_TRUE(log.Take().empty());
#if GENTRA_CHECKED
    wrong.member = pool.GetMemberByIndex(0);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(wrong.UseMemberValue(0), 0) << "beyond the record";
        wrong.UseMemberValue(0) = 5;
        wrong.UseMemberValue(1) = 6;
    }
    EXPECT_EQ(Datum::Read<float>(wrong.member.record), 6) << "within it, as in other builds";
    std::string const start =
        "Error :: PoolProcessing :: The Behaviour \"Wrong\" uses a Member that is not of the Pool of "
        "its Parameter \"";
    EXPECT_EQ(log.Take(), (Messages{start + "far slot\"", start + "near slot\""}));
    wrong.member = third.GetMemberByIndex(0);
    EXPECT_EQ(wrong.UseMemberValue(1), 4);
    EXPECT_TRUE(log.Take().empty());
    wrong.ClearParameterInterface();
    wrong.member = Member::NIL;
    EXPECT_EQ(wrong.UseMemberValue(0), 0);
    EXPECT_EQ(log.Take(), (Messages{start + "\""}));
#endif
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
    RefCountPtr<TestBehaviour> const second(new TestBehaviour("Second"));
    second->PushLinkedParamsToFastParams();
    pool.LinkMemberConstructionBehaviour(second);
    meddling->work = [&](TestBehaviour&) {
        pool.DeleteMember(pool.ActiveMember());
        return true;
    };
    EXPECT_FALSE(pool.CreateNewMember().IsValid());
    EXPECT_TRUE(second->calls.empty()) << "nobody works on a member that has gone";
    MemberSelection selection(&pool);
    meddling->work = [&](TestBehaviour&) {
        selection = MemberSelection(&other);
        return true;
    };
    selection.AddNewMember();
    EXPECT_EQ(selection.GetNumMembers(), 0) << "it is no member of the other pool";
    Validator::CheckPool(pool);
}

TEST_F(Processing, SamplesRunsAndTellsThatThereIsNoClock) {
    FakeCounter counter;
    MainContext().GetPerformanceProfiler().StartNewSession();
    RefCountPtr<TestBehaviour> const active(new TestBehaviour("Active"));
    active->work = [&](TestBehaviour&) {
        counter.now += 100;
        return true;
    };
    auto const elapsed = Value("TimeElapsed");
    pool.AddPoolProperty(elapsed);
    pool.LinkActiveBehaviour(active);
    Compile();
    counter.now += 300;
    pool.ProcessMemberPool();
    EXPECT_NEAR(active->GetPerformaceStats().GetAvgProcessingTime(), 0.5, 1e-6);
    EXPECT_NEAR(pool.GetPerformaceStats().GetAvgProcessingTime(), 0.5, 1e-6);
    counter.countsPerSecond = 0;
    pool.SetSingleMemberUpdateIndex(99);
    pool.ProcessMemberPool();
    MainContext().GetPerformanceProfiler().StopSession();
    EXPECT_EQ(active->GetPerformaceStats().GetSampleCount() + pool.GetPerformaceStats().GetSampleCount(), 4u);
    EXPECT_EQ(elapsed->value, -1.0f);
}

} // namespace
