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

/// Records the members it is given instead of working through them.
class Overriding : public TestBehaviour {
public:
    using TestBehaviour::TestBehaviour;
    void ProcessMembers(std::vector<Member>& members, Member& newCurrent) override {
        calls.push_back("process " + std::to_string(members.size()));
        seen = members;
        current = &newCurrent;
    }
    std::vector<Member> seen;
    Member* current = nullptr;
};

/// A property in no pool that tells when it is updated.
class Updating : public ValueProperty {
public:
    explicit Updating(TestBehaviour* newBehaviour) : behaviour(newBehaviour) {}
    void Update() override { behaviour->calls.emplace_back("update"); }

private:
    TestBehaviour* behaviour;
};

class Processing : public testing::Test {
protected:
    Processing() {
        pool.AddMemberProperty(Value("v"));
        behaviour->FlexibleValue(0, "free");
        PropertyPtr const updating(new Updating(behaviour.Get()));
        behaviour->LinkPropertyToVisibleInterface(updating, 0);
        pool.SetMemberCount(5);
    }
    void Compile() {
        pool.CompileMemberPool();
        log.Take();
    }

    MessageLog log;
    Pool pool;
    Pool other{"Other"};
    RefCountPtr<Overriding> behaviour{new Overriding("B")};
};

TEST_F(Processing, RunsActiveBehavioursOverAllMembers) {
    RefCountPtr<Overriding> const unready(new Overriding("Unready"));
    unready->FlexibleValue(0, "unlinked");
    pool.LinkActiveBehaviour(unready);
    pool.LinkActiveBehaviour(behaviour);
    Compile();
    pool.ProcessMemberPool();
    EXPECT_EQ(unready->TakeCalls(), Calls{"check"});
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "update", "process 5"}));
    EXPECT_EQ(behaviour->seen, pool.GetAllMembers());
    EXPECT_EQ(behaviour->current, &pool.ActiveMember());
}

TEST_F(Processing, RunsOneMemberOnRequest) {
    pool.LinkActiveBehaviour(behaviour);
    Compile();
    pool.SetSingleMemberUpdateIndex(3);
    pool.ProcessMemberPool();
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "update", "process 1"}));
    EXPECT_EQ(behaviour->seen, std::vector<Member>{pool.GetMemberByIndex(3)});
    pool.SetSingleMemberUpdateIndex(5);
    pool.ProcessMemberPool();
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "update"}));
    pool.SetSingleMemberUpdateIndex(-1);
    pool.ProcessMemberPool();
    EXPECT_EQ(behaviour->TakeCalls().back(), "process 5");
}

TEST_F(Processing, WritesTheTimeSinceTheLastFrame) {
    FakeCounter counter;
    Pool timed("Timed");
    auto const elapsed = Value("TimeElapsed", -7);
    timed.CompileMemberPool();
    counter.now += 400;
    timed.ProcessMemberPool(); // without the property the lap is not read
    timed.AddPoolProperty(elapsed);
    struct Row {
        std::int64_t wait;
        float expected;
    };
    for (Row const& row : {Row{100, 0.5f}, Row{16, 0.016f}, Row{2500, 1.0f}, Row{999, 0.999f}, Row{0, 0.0f}}) {
        counter.now += row.wait;
        timed.ProcessMemberPool();
        EXPECT_FLOAT_EQ(Datum::Read<float>(elapsed->GetData()), row.expected);
    }
    counter.countsPerSecond = 0;
    timed.ProcessMemberPool();
    EXPECT_FLOAT_EQ(elapsed->value, -1.0f);
}

TEST_F(Processing, BuildsAPoolOnDemandUnlessItsConstructionFailed) {
    RefCountPtr<Overriding> const reserving(new Overriding("Reserving"));
    reserving->MemberValue(0, "reserved", SHARED_INTRINSIC, 0);
    bool clash = true;
    Constructor const constructor([&](MemberPool& built) {
        if (&built == &other) {
            if (clash) {
                built.AddMemberProperty(Value("reserved"));
            }
            built.LinkActiveBehaviour(reserving);
        }
    });
    other.ProcessMemberPool();
    EXPECT_EQ(log.Take().back(), "Building \"Other\" completed");
    EXPECT_TRUE(reserving->TakeCalls().empty());
    other.ProcessMemberPool();
    EXPECT_TRUE(log.Take().empty());
    clash = false;
    MainContext().ForceReconstructAllMemberPools();
    other.ProcessMemberPool();
    EXPECT_EQ(reserving->TakeCalls(), (Calls{"check", "process 0"}));
}

TEST_F(Processing, RunsOneBehaviourOnDemand) {
    pool.LinkPassiveBehaviour(behaviour);
    Compile();
    Util::RefCountPtr<Behaviour> const asBehaviour(behaviour);
    pool.ActivateMember(2);
    Member const active = pool.ActiveMember();
    pool.ApplyPassiveBehaviour(asBehaviour);
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "update", "process 5"}));
    pool.ApplyPassiveBehaviourOnActiveMember(asBehaviour);
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "process 1"}));
    EXPECT_EQ(behaviour->seen, std::vector<Member>{active});
    pool.ClearActiveMember();
    pool.ApplyPassiveBehaviourOnActiveMember(*behaviour);
    EXPECT_EQ(behaviour->seen, std::vector<Member>{Member::NIL});
    MemberSelection selection(&pool);
    selection.AddMember(pool, active);
    behaviour->TakeCalls();
    pool.ApplyBehaviourOnMemberSelection(asBehaviour, selection);
    EXPECT_EQ(behaviour->TakeCalls(), (Calls{"check", "update", "process 1"}));
    EXPECT_EQ(behaviour->current, &pool.ActiveMember()) << "the pool's slot, not the selection's";
    pool.ProcessMemberPool();
    EXPECT_TRUE(behaviour->TakeCalls().empty()) << "passive behaviours wait";
    EXPECT_TRUE(log.Take().empty());

    MemberSelection foreign(&other);
    other.ApplyPassiveBehaviour(asBehaviour);
    other.ApplyPassiveBehaviourOnActiveMember(asBehaviour);
    other.ApplyBehaviourOnMemberSelection(asBehaviour, foreign);
    pool.ApplyBehaviourOnMemberSelection(asBehaviour, foreign);
    std::string const passive =
        "Error :: PoolProcessing :: The PassiveBehaviour \"B\" can not be used for the Pool \"Other\", "
        "because he does not own that behaviour";
    EXPECT_EQ(log.Take(),
              (Messages{passive, passive,
                        "Error :: PoolProcessing :: The Behaviour \"B\" can not be used for the Pool \"Other\", "
                        "because he does not own that behaviour",
                        "Error :: PoolProcessing :: The Behaviour \"B\" can not be used. The Behaviour belongs to "
                        "the Pool \"Pool\", but the MemberSelection it should be applied on does not use that "
                        "BasePool"}));
    EXPECT_TRUE(behaviour->TakeCalls().empty());
    Util::RefCountPtr<Behaviour> const none(nullptr);
    pool.ApplyPassiveBehaviour(none);
    pool.ApplyPassiveBehaviourOnActiveMember(none);
    pool.ApplyBehaviourOnMemberSelection(none, selection);
    pool.LinkActiveBehaviour(none);
    pool.LinkMemberConstructionBehaviour(none);
}

TEST_F(Processing, TriggersABehaviourThroughAProperty) {
    RefCountPtr<TestBehaviour> const live(new TestBehaviour("Live"));
    BehaviourProperty trigger("Trigger");
    trigger.TriggerBehaviour();
    trigger.SetBehaviour(live.Get());
    trigger.TriggerBehaviour(); // of no pool
    live->TakeCalls();
    pool.LinkPassiveBehaviour(live);
    Compile();
    trigger.TriggerBehaviour();
    EXPECT_EQ(live->TakeCalls(), (Calls{"trigger", "check", "trigger", "trigger", "trigger", "trigger", "trigger"}));
    EXPECT_FALSE(pool.IsActiveMemberValid());
    pool.ActivateMember(1);
    trigger.TriggerBehaviour();
    EXPECT_EQ(live->TakeCalls(), (Calls{"trigger", "check", "trigger"}));
    EXPECT_TRUE(pool.IsActiveMemberValid());
    live->work = [](TestBehaviour&) { return true; };
    trigger.TriggerBehaviour();
    EXPECT_EQ(live->TakeCalls(), Calls{"trigger"});
    TestBehaviour caller;
    caller.FlexibleBehaviourTrigger(0, "t");
    PropertyPtr const property(new BehaviourProperty(trigger));
    caller.LinkPropertyToVisibleInterface(property, 0);
    caller.PushLinkedParamsToFastParams();
    caller.TriggerFlexibleBehaviour(0);
    EXPECT_EQ(live->TakeCalls(), Calls{"trigger"});
}

TEST_F(Processing, TriggersOneBehaviourThoughTheTriggerChangesTheProperty) {
    RefCountPtr<TestBehaviour> const live(new TestBehaviour("Live"));
    TestBehaviour caller;
    caller.FlexibleBehaviourTrigger(0, "t");
    auto* const trigger = new BehaviourProperty;
    PropertyPtr property(trigger);
    trigger->SetBehaviour(live.Get());
    caller.LinkPropertyToVisibleInterface(property, 0);
    caller.PushLinkedParamsToFastParams();
    property = Property::NIL;
    live->work = [&](TestBehaviour&) {
        trigger->SetBehaviour(nullptr);
        caller.ClearLinkedParameters();
        return false;
    };
    caller.TriggerFlexibleBehaviour(0);
    EXPECT_EQ(live->TakeCalls(), Calls{"trigger"});
}

TEST_F(Processing, EndsAWalkWhoseMembersWereRebuilt) {
    // The behaviour is linked again in the new, smaller layout, and there are new members to walk on to.
    RefCountPtr<TestBehaviour> const rebuilding(new TestBehaviour("Rebuilding"));
    rebuilding->MemberValue(0, "x", SHARED_INTRINSIC, 0);
    bool isFirst = true;
    Constructor const constructor([&](MemberPool& built) {
        if (&built == &pool) {
            if (isFirst) {
                built.AddMemberProperty(Vector("large"));
            }
            built.LinkActiveBehaviour(rebuilding);
        }
    });
    rebuilding->work = [&](TestBehaviour& self) {
        if (std::exchange(isFirst, false)) {
            MainContext().ForceReconstructAllMemberPools();
            pool.SetMemberCount(5);
            pool.GetAllMembers();
        } else {
            self.UseMemberValue(0) = 1;
        }
        return true;
    };
    pool.InitializeMemberPool();
    MainContext().ForceReconstructAllMemberPools();
    pool.SetMemberCount(5);
    rebuilding->TakeCalls();
    pool.ProcessMemberPool();
    EXPECT_EQ(rebuilding->TakeCalls(), (Calls{"check", "trigger"}));
    pool.ProcessMemberPool();
    EXPECT_EQ(rebuilding->TakeCalls().size(), 6u);
}

TEST_F(Processing, KeepsABehaviourWithAClearedInterfaceAwayFromForeignRecords) {
    RefCountPtr<TestBehaviour> const shared(new TestBehaviour("Shared"));
    other.AddMemberProperty(Vector("w"));
    shared->MemberValue(0, "x", SHARED_INTRINSIC, 0);
    other.LinkMemberConstructionBehaviour(shared);
    other.CompileMemberPool();
    pool.LinkMemberConstructionBehaviour(shared);
    shared->ClearParameterInterface();
    shared->TakeCalls();
    pool.AddNewMember();
    EXPECT_EQ(shared->TakeCalls(), Calls{"check"});
}

TEST_F(Processing, RestoresTheActiveMemberWhenAConstructionBehaviourThrows) {
    RefCountPtr<TestBehaviour> const throwing(new TestBehaviour("Throwing"));
    throwing->work = [](TestBehaviour&) -> bool { throw 1; };
    pool.LinkMemberConstructionBehaviour(throwing);
    Compile();
    pool.ActivateMember(1);
    Member const active = pool.ActiveMember();
    EXPECT_THROW(pool.AddNewMember(), int);
    EXPECT_EQ(pool.ActiveMember(), active);
    EXPECT_EQ(pool.GetNumMembers(), 5);
}

TEST_F(Processing, RunsConstructionBehavioursOnNewMembers) {
    RefCountPtr<TestBehaviour> const placing(new TestBehaviour("Placing"));
    placing->MemberValue(0, "v", VISIBLE, 0);
    PropertyPtr const value = pool.GetPropertyFromName("v");
    placing->LinkPropertyToVisibleInterface(value, 0);
    placing->work = [&](TestBehaviour& self) {
        self.member = pool.ActiveMember();
        self.UseMemberValue(0) = 42;
        return true;
    };
    pool.LinkMemberConstructionBehaviour(placing);
    pool.AddNewMember();
    EXPECT_EQ(placing->TakeCalls(), Calls{"check"}) << "not compiled yet";
    Compile();
    pool.ActivateMember(1);
    Member const active = pool.ActiveMember();
    pool.AddNewMember();
    EXPECT_EQ(placing->TakeCalls(), (Calls{"check", "trigger"}));
    EXPECT_EQ(pool.ActiveMember(), active);
    EXPECT_EQ(Datum::Read<float>(value->GetDataFromMemberSelection(pool, 6)), 42.0f);
    EXPECT_EQ(Datum::Read<float>(value->GetDataFromMemberSelection(pool, 5)), 0.0f);
    EXPECT_EQ(placing->GetOwnerPool(), nullptr);
}

TEST_F(Processing, RunsPoolConstructionBehavioursOncePerPass) {
    RefCountPtr<Overriding> const builder(new Overriding("Builder"));
    Constructor const constructor([&](MemberPool& built) {
        if (&built == &pool) {
            built.LinkPoolConstructionBehaviour(builder);
            built.LinkPoolConstructionBehaviour(builder);
        }
    });
    MainContext().ForceConstructAllMemberPools();
    EXPECT_EQ(builder->TakeCalls(), (Calls{"process 1", "process 1"}));
    EXPECT_EQ(builder->seen, std::vector<Member>{Member::NIL});
    EXPECT_EQ(pool.GetAllBehaviours().size(), 2u);
    EXPECT_TRUE(pool.GetBehaviourByName("Builder") == RefCountPtr<Behaviour>(builder));
    MainContext().ForceReconstructAllMemberPools();
    EXPECT_EQ(builder->TakeCalls().size(), 2u);
}

TEST_F(Processing, KeepsBehavioursAwayFromMembersThatTheyDoNotFit) {
    // Linked to the second pool's layout, active in the first.
    other.AddMemberProperty(Vector("w"));
    auto const far = Value("far");
    other.AddMemberProperty(far);
    RefCountPtr<TestBehaviour> const astray(new TestBehaviour("Astray"));
    astray->MemberValue(0, "far", VISIBLE, 0);
    astray->LinkPropertyToVisibleInterface(far, 0);
    astray->work = [](TestBehaviour& self) {
        self.UseMemberValue(0) = 1;
        return true;
    };
    pool.LinkActiveBehaviour(astray);
    pool.LinkMemberConstructionBehaviour(astray);
    Compile();
    EXPECT_TRUE(astray->ReadyToUse());
    pool.ProcessMemberPool();
    pool.AddNewMember();
    EXPECT_EQ(astray->TakeCalls(), (Calls{"check", "check"}));
    EXPECT_EQ(log.Take(),
              Messages{"Error :: PoolProcessing :: The Behaviour \"Astray\" can not be used for the Pool \"Pool\", "
                       "because its Member Properties do not fit the Members"});

    // Ready from an earlier layout, and linked again without a compile.
    pool.InitializeMemberPool();
    EXPECT_TRUE(astray->ReadyToUse());
    pool.AddMemberProperty(Value("v"));
    pool.SetMemberCount(2);
    pool.LinkPassiveBehaviour(astray);
    pool.ApplyPassiveBehaviour(*astray);
    EXPECT_EQ(astray->TakeCalls(), Calls{"check"});
}

TEST_F(Processing, ServesSeveralPoolsByOneConstructionBehaviourWhereItFits) {
    RefCountPtr<TestBehaviour> const shared(new TestBehaviour("Shared"));
    shared->MemberValue(0, "mark", SHARED_INTRINSIC, 3);
    shared->work = [](TestBehaviour&) { return true; };
    for (bool const otherFirst : {false, true}) {
        pool.InitializeMemberPool();
        other.InitializeMemberPool();
        Pool& first = otherFirst ? other : pool;
        Pool& second = otherFirst ? pool : other;
        first.AddMemberProperty(Vector("w"));
        first.LinkMemberConstructionBehaviour(shared);
        second.LinkMemberConstructionBehaviour(shared);
        EXPECT_EQ(shared->GetOwnerPool(), nullptr);
        EXPECT_EQ(first.GetAllMemberProperties().size(), 2u) << "a link to an earlier layout was dropped";
        EXPECT_EQ(second.GetAllMemberProperties().size(), 0u) << "already linked";
        second.AddMemberProperty(Value("v"));
        second.CompileMemberPool();
        first.CompileMemberPool();
        shared->TakeCalls();
        second.AddNewMember();
        EXPECT_EQ(shared->TakeCalls(), Calls{"check"});
        first.AddNewMember();
        EXPECT_EQ(shared->TakeCalls(), (Calls{"check", "trigger"}));
    }
}

TEST_F(Processing, SurvivesBehavioursThatChangeThePool) {
    RefCountPtr<TestBehaviour> const busy(new TestBehaviour("Busy"));
    RefCountPtr<Overriding> const late(new Overriding("Late"));
    late->PushLinkedParamsToFastParams();
    int triggers = 0;
    busy->work = [&](TestBehaviour&) {
        if (++triggers == 1) {
            pool.LinkActiveBehaviour(late);
            pool.SetMemberCount(50);
        } else if (triggers == 3) {
            pool.SetMemberCount(2);
            pool.GetAllMembers();
        }
        return true;
    };
    pool.LinkActiveBehaviour(busy);
    Compile();
    pool.ProcessMemberPool();
    EXPECT_EQ(triggers, 3) << "the walk ends where the vector ends";
    EXPECT_EQ(late->TakeCalls(), (Calls{"check", "process 2"})) << "linked meanwhile, run in the same frame";

    // A behaviour that rebuilds the pool loses its place in it while it runs.
    BehaviourPtr suicidal(new TestBehaviour("Suicidal"));
    static_cast<TestBehaviour&>(*suicidal).work = [&](TestBehaviour& self) {
        MainContext().ForceReconstructAllMemberPools();
        return self.GetOwnerPool() == nullptr;
    };
    pool.InitializeMemberPool();
    pool.AddMemberProperty(Value("v"));
    pool.SetMemberCount(3);
    pool.LinkActiveBehaviour(suicidal);
    pool.CompileMemberPool();
    suicidal = Behaviour::NIL;
    pool.ProcessMemberPool();
    EXPECT_EQ(pool.GetNumMembers(), 0);
}

TEST_F(Processing, GivesNoRecordTwiceWhenAMemberIsDeletedDuringItsConstruction) {
    RefCountPtr<TestBehaviour> const replacing(new TestBehaviour("Replacing"));
    bool isFirst = true;
    replacing->work = [&](TestBehaviour&) {
        if (std::exchange(isFirst, false)) {
            pool.DeleteMember(pool.ActiveMember());
            pool.AddNewMember();
        }
        return true;
    };
    pool.LinkMemberConstructionBehaviour(replacing);
    Compile();
    pool.AddNewMember();
    EXPECT_EQ(pool.GetNumMembers(), 6) << "the one that took its place";
}

TEST_F(Processing, SurvivesAConstructionBehaviourThatClearsThePool) {
    RefCountPtr<TestBehaviour> const clearing(new TestBehaviour("Clearing"));
    clearing->work = [&](TestBehaviour&) {
        pool.InitializeMemberPool();
        return true;
    };
    pool.LinkMemberConstructionBehaviour(clearing);
    Compile();
    pool.AddNewMember();
    EXPECT_EQ(pool.GetNumMembers(), 0) << "the new member went with the others";
}

TEST_F(Processing, MeasuresPoolAndBehaviours) {
    FakeCounter counter;
    MainContext().GetPerformanceProfiler().StartNewSession();
    RefCountPtr<TestBehaviour> const slow(new TestBehaviour("Slow"));
    slow->work = [&](TestBehaviour&) {
        counter.now += 10;
        return true;
    };
    pool.LinkActiveBehaviour(slow);
    pool.LinkMemberConstructionBehaviour(behaviour);
    Compile();
    pool.ProcessMemberPool();
    pool.ProcessMemberPool();
    pool.SetSingleMemberUpdateIndex(99);
    pool.ProcessMemberPool();
    MainContext().GetPerformanceProfiler().StopSession();
    EXPECT_EQ(slow->GetPerformaceStats().GetSampleCount(), 3u);
    EXPECT_NEAR(slow->GetPerformaceStats().GetMaxProcessingTime(), 0.05, 1e-9);
    EXPECT_NEAR(slow->GetPerformaceStats().GetMinProcessingTime(), 0.0, 1e-9);
    EXPECT_EQ(pool.GetPerformaceStats().GetSampleCount(), 3u);
    EXPECT_NEAR(pool.GetPerformaceStats().GetMaxProcessingTime(), 0.05, 1e-9);
    EXPECT_EQ(behaviour->GetPerformaceStats().GetSampleCount(), 0u);
}

} // namespace
