// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A short host's life in which each allocation in turn fails: the exception passes through, and everything goes on
// working. Leaks are found by counting here and by the sanitizers.

#include "support/Allocations.h"
#include "support/Host.h"
#include "support/Validator.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <utility>

namespace {

using namespace Gentra;
using namespace Support;

/// Adds up what its slots read, and looks around.
class Walk : public TestBehaviour {
public:
    Walk() : TestBehaviour("Walk") {
        FlexibleValue(0, "Step");
        MemberVec3(1, "Position", SHARED_INTRINSIC, {1, 0, 0});
        MemberValue(2, "Sum", UNIQUE_INTRINSIC, 1);
        PoolValue(3, "Count", SHARED_INTRINSIC);
        FlexibleMemberSelection(4, "Friends");
        FlexibleBehaviourTrigger(5, "Go");
        work = [this](TestBehaviour&) { return Work(); };
    }

private:
    bool Work() {
        MemberPool& pool = *GetOwnerPool();
        SpatialOrganizer& organizer = GetSpatialOrganizer(pool);
        organizer.Update(0, 0, 1);
        MemberSelection seen(&pool);
        organizer.GetMembersInRadius(seen, {1, 0, 0}, 10, member);
        UseFlexibleMemberSelection(4).AddMember(pool, member);
        UseMemberVec3(1).x += ReadFlexibleValue(0);
        UseMemberValue(2) += static_cast<float>(seen.GetNumMembers());
        UsePoolValue(3) += 1;
        TriggerFlexibleBehaviour(5);
        return true;
    }
};

/// A host of two pools, which builds them afresh each time it lives.
class Host {
public:
    /// Lives through everything once and returns what has come of it.
    std::vector<float> Live() {
        Constructor const constructor([this](MemberPool& pool) { Build(pool); });
        for (std::unique_ptr<Pool>* const pool : {&walkers, &watchers}) {
            if (*pool == nullptr) {
                *pool = std::make_unique<Pool>("a name that is too long for the string itself to hold");
            }
        }
        MainContext().ForceReconstructAllMemberPools();
        walkers->SetMemberCount(20);
        watchers->SetMemberCount(3);
        MemberSelection some(walkers.get());
        some.AddMembers(*walkers, walkers->GetAllMembers());
        some.RemoveMemberByIndex(3);
        some.ActivateLastMember();
        some.InsertNewMemberBeforeActiveMember();
        unlisted = 1;
        some.RemoveMember(walkers->GetMemberByIndex(7));
        MemberSelection const copy(some);
        walkers->ActivateFirstMember();
        Member const leaving = walkers->RemoveActiveMember();
        unlisted = 2;
        some.RemoveMember(leaving);
        walkers->DeleteMember(leaving);
        unlisted = 1;
        walkers->ProcessMemberPool();
        walkers->ApplyBehaviourOnMemberSelection(walkers->GetBehaviourByName("Walk"), some);

        std::vector<float> results{static_cast<float>(some.GetNumMembers())};
        FollowReferences(results);
        MemberPool const twin(*walkers);
        results.push_back(static_cast<float>(twin.GetAllProperties().size()));
        int const sum = walkers->GetDataOffsetFromPropertyName("Sum");
        for (Member const each : walkers->GetAllMembers()) {
            results.push_back(Datum::Read<float>(each.record + sum));
        }
        return results;
    }

    /// Whether only this host holds its properties.
    [[nodiscard]] bool OwnsAlone() const {
        return std::all_of(made.begin(), made.end(), [](PropertyPtr const& each) { return each.GetCount() == 1; });
    }
    void CheckStructures() const {
        for (Pool* const pool : {walkers.get(), watchers.get()}) {
            if (pool != nullptr) {
                Validator::CheckPool(*pool, std::nullopt);
                Validator::CheckSelection(*pool);
                Validator::Require(Validator::CountRecords(*pool) - pool->GetNumMembers() <= unlisted,
                                   "a member that nobody lists");
            }
        }
    }
    void DestroyPools() {
        watchers.reset();
        walkers.reset();
    }

private:
    PropertyPtr const& Make(PropertyPtr const& property) {
        made.push_back(property);
        return made.back();
    }

    void Build(MemberPool& pool) {
        pool.AddPoolProperty(Make(Value("Step", 2)));
        for (int i = 0; i < 40; ++i) { // more than one piece of the table
            pool.AddPoolProperty(Make(Value("Filler")));
        }
        pool.AddMemberProperty(Make(PropertyPtr(new TextProperty("Text"))));
        pool.AddMemberProperty(Make(PropertyPtr(new MemberSelectionProperty("Friends"))));
        pool.AddMemberProperty(Make(PropertyPtr(new FixedSizeDataProperty("Data", 8, nullptr))));
        Util::RefCountPtr<BehaviourProperty> const go(new BehaviourProperty("Go"));
        pool.AddPoolProperty(Make(go));
        if (&pool == watchers.get()) {
            Util::RefCountPtr<MemberSelectionProperty> const seen(new MemberSelectionProperty("Walkers"));
            seen->SetBasePoolID(walkers->GetMemberPoolID());
            pool.AddPoolProperty(Make(seen));
            return;
        }
        Util::RefCountPtr<Walk> const walk(new Walk);
        BehaviourPtr const rest(new TestBehaviour("Rest"));
        pool.LinkPassiveBehaviour(rest);
        go->SetBehaviour(rest.Get());
        for (auto const& [name, index] : {std::pair("Step", 0), {"Friends", 1}, {"Go", 2}}) {
            walk->LinkPropertyToVisibleInterface(pool.GetPropertyFromName(name), index);
        }
        pool.LinkActiveBehaviour(walk);
        pool.LinkMemberConstructionBehaviour(rest);
        for (char const* const name : {"Sum", "Count"}) { // organizers keep "Position"
            Make(pool.GetPropertyFromName(name));
        }
    }

    void FollowReferences(std::vector<float>& results) {
        PropertyReference reference;
        reference.SetPropertyName("Position");
        reference.SetOwnerPoolID(walkers->GetMemberPoolID());
        PropertyReference const twin(reference);
        results.push_back(static_cast<float>(twin->GetDataSize()));
        Path path;
        path.SetRootMemberPool(*watchers);
        path.AddRootingMemberSelectionBack(
            watchers->GetPropertyFromName("Walkers").DynamicCast<MemberSelectionProperty>());
        path.SetDestinationProperty(reference.GetProperty());
        std::stringstream text;
        text.exceptions(std::ios::badbit); // or the stream swallows the exception
        path.SaveToStream(text);
        Path read;
        read.LoadFromStream(text);
        results.push_back(read.ResolvePathIfNeccessary() ? 1.0f : 0.0f);
        Util::String name;
        read.GetPathName(name);
        results.push_back(static_cast<float>(name.size()));
    }

    std::ptrdiff_t unlisted = 0; ///< How many members the pools do not list.
    std::unique_ptr<Pool> walkers;
    std::unique_ptr<Pool> watchers;
    std::vector<PropertyPtr> made;
};

/// What a whole life leaves behind for good, such as known event types.
std::size_t LeftBehind() {
    GlobalMessageManager::ClearAllMessages();
    std::size_t const before = AllocationsHeld();
    Host().Live();
    GlobalMessageManager::ClearAllMessages();
    return AllocationsHeld() - before;
}

TEST(AllocationFailures, LeaveEverythingWorking) {
    std::vector<float> const expected = Host().Live();
    std::size_t const leftBehind = std::max(LeftBehind(), LeftBehind());
    std::size_t points = 0;
    for (bool failed = true; failed; ++points) {
        SCOPED_TRACE(testing::Message() << "allocation " << points + 1);
        GlobalMessageManager::ClearAllMessages();
        std::size_t const before = AllocationsHeld();
        {
            Host host;
            FailAllocation(points + 1);
            try {
                host.Live();
                failed = !AllocationFailureIsDue();
            } catch (std::bad_alloc const&) {
            }
            FailAllocation(0);
            ASSERT_NO_THROW(host.CheckStructures());
            ASSERT_EQ(host.Live(), expected) << "the same host goes on";
            host.DestroyPools();
            ASSERT_TRUE(host.OwnsAlone()) << "nobody else holds its properties";
        }
        GlobalMessageManager::ClearAllMessages();
        // What an organizer leaves shows when the address of its pool is used again.
        ASSERT_LE(AllocationsHeld(), before + 3 * leftBehind);
    }
    std::cout << points << " points of failure" << std::endl;
    EXPECT_GT(points, 20u); // fewer where only those of the program itself are counted
}

} // namespace
