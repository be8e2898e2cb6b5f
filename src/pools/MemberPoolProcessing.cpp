// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/MemberPool.h"

#include "MemberPropertyTable.h"
#include "PropertyTable.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>

// A behaviour that runs may change the pool's lists of behaviours or rebuild the pool. So each loop reads the
// length of its list afresh, and holds the behaviour that it runs.

namespace Gentra {

namespace {

/// The longest time step that behaviours are given, in seconds.
constexpr float LONGEST_STEP = 1.0f;

} // namespace

void MemberPool::ProcessMemberPool() {
    if (!compiled && !constructionFailed) {
        Util::WeakPtr<MemberPool> const self = GetWeakPtr();
        ContextManager::GetMainContext().ForceConstructAllMemberPools();
        if (self.Get() == nullptr) { // a listener has destroyed the pool
            return;
        }
    }
    if (!compiled || constructionFailed) {
        return;
    }
    performanceStats.SampleStart();
    UpdateTimeElapsed();
    std::vector<Member>& members = GetAllMembers();
    for (std::size_t i = 0; i < activeBehaviours.size(); ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = activeBehaviours[i];
        if (!Prepare(*behaviour, true)) {
            continue;
        }
        if (singleMemberUpdateIndex < 0) {
            RunSampled(*behaviour, members);
            continue;
        }
        behaviour->PerformanceStats().SampleStart();
        if (auto const index = static_cast<std::size_t>(singleMemberUpdateIndex); index < members.size()) {
            behaviour->ProcessSingleMember(members[index], ActiveMember());
        }
        behaviour->PerformanceStats().SampleStop();
    }
    performanceStats.SampleStop();
}

void MemberPool::UpdateTimeElapsed() {
    Util::RefCountPtr<Property> const timeElapsed = GetPropertyFromName("TimeElapsed");
    if (timeElapsed == Property::NIL) {
        return;
    }
    float const lap = lapTimer.Lap();
    // In this order a lap that is not a number counts as too long. -1, for no clock, passes.
    timeElapsed->value = lap < LONGEST_STEP ? lap : LONGEST_STEP;
}

void MemberPool::ApplyPassiveBehaviour(Util::RefCountPtr<Behaviour> const& behaviour) {
    if (behaviour.Get() != nullptr) {
        ApplyPassiveBehaviour(*behaviour);
    }
}

void MemberPool::ApplyPassiveBehaviour(Behaviour& behaviour) {
    if (!CheckOwnership(behaviour, "PassiveBehaviour")) {
        return;
    }
    Util::RefCountPtr<Behaviour> const held = Hold(behaviour);
    std::vector<Member>& members = GetAllMembers();
    if (Prepare(behaviour, true)) {
        RunSampled(behaviour, members);
    }
}

void MemberPool::ApplyPassiveBehaviourOnActiveMember(Util::RefCountPtr<Behaviour> const& behaviour) {
    if (behaviour.Get() != nullptr) {
        ApplyPassiveBehaviourOnActiveMember(*behaviour);
    }
}

void MemberPool::ApplyPassiveBehaviourOnActiveMember(Behaviour& behaviour) {
    if (!CheckOwnership(behaviour, "PassiveBehaviour")) {
        return;
    }
    Util::RefCountPtr<Behaviour> const held = Hold(behaviour);
    std::vector<Member> members(1, ActiveMember());
    if (Prepare(behaviour, false)) {
        RunSampled(behaviour, members);
    }
}

void MemberPool::ApplyBehaviourOnMemberSelection(Util::RefCountPtr<Behaviour> const& behaviour,
                                                 MemberSelection& selection) {
    Util::RefCountPtr<Behaviour> const held = behaviour;
    if (held.Get() == nullptr || !CheckOwnership(*held, "Behaviour")) {
        return;
    }
    if (selection.GetBasePool() != this) {
        GlobalMessageManager::OutputMessage(
            "Error :: PoolProcessing :: The Behaviour \"%s\" can not be used. The Behaviour belongs to the "
            "Pool "
            "\"%s\", but the MemberSelection it should be applied on does not use that BasePool",
            held->GetName().c_str(), name.c_str());
        return;
    }
    std::vector<Member>& members = selection.GetAllMembers();
    if (Prepare(*held, true)) {
        RunSampled(*held, members);
    }
}

void MemberPool::InitializeNewMembers(std::vector<Member>& newMembers) {
    /// Puts the active member back, also when a behaviour throws, unless it went when the pool was cleared.
    struct Restore {
        MemberPool& pool;
        Member active;
        unsigned int clearedBefore;
        ~Restore() {
            if (pool.timesCleared == clearedBefore) {
                pool.ActiveMember() = active;
            }
        }
    } const restore{*this, ActiveMember(), timesCleared};

    for (std::size_t i = 0; i < memberConstructionBehaviours.size(); ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = memberConstructionBehaviours[i];
        if (Prepare(*behaviour, false)) {
            RunSampled(*behaviour, newMembers);
        }
        if (timesCleared != restore.clearedBefore) { // by the behaviour: the new members have gone
            return;
        }
    }
}

void MemberPool::TriggerPoolConstructor() {
    for (std::size_t i = 0; i < poolConstructionBehaviours.size(); ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = poolConstructionBehaviours[i];
        std::vector<Member> members(1, ActiveMember());
        // The behaviour itself decides whether it is ready. Without an active member it is given no record
        // that could be too small for it.
        if (!IsActiveMemberValid() || LayoutFits(*behaviour)) {
            RunSampled(*behaviour, members);
        }
    }
}

bool MemberPool::CheckOwnership(Behaviour const& behaviour, char const* kind) const {
    if (behaviour.GetOwnerPool() == this) {
        return true;
    }
    GlobalMessageManager::OutputMessage("Error :: PoolProcessing :: The %s \"%s\" can not be used for the Pool \"%s\", "
                                        "because he does not own that behaviour",
                                        kind, behaviour.GetName().c_str(), name.c_str());
    return false;
}

/// Another reference to a behaviour of this pool, for as long as it runs. Behaviour::NIL stands for one that
/// the pool does not hold, such as a copy.
Util::RefCountPtr<Behaviour> MemberPool::Hold(Behaviour const& behaviour) const {
    for (BehaviourList const* const list : {&activeBehaviours, &passiveBehaviours}) {
        for (Util::RefCountPtr<Behaviour> const& candidate : *list) {
            if (candidate.Get() == &behaviour) {
                return candidate;
            }
        }
    }
    return Behaviour::NIL;
}

/// What precedes a run; false when the behaviour must not run. Each step may call the host.
bool MemberPool::Prepare(Behaviour& behaviour, bool updateProperties) {
    unsigned int const clearedBefore = timesCleared;
    behaviour.CheckForUpdate();
    if (!behaviour.ReadyToUse()) {
        return false;
    }
    if (updateProperties) {
        behaviour.UpdateProperties();
    }
    behaviour.RefreshConstants();
    return timesCleared == clearedBefore && LayoutFits(behaviour);
}

/// The accessors of a running behaviour check nothing. A behaviour may have been compiled for an earlier
/// layout or be linked to members of another pool; then it must not see the members of this one.
bool MemberPool::LayoutFits(Behaviour const& behaviour) const {
    // Also where the interface was cleared: the fast parameters stay.
    std::size_t const count = std::min<std::size_t>(behaviour.linkedProperties.size(), Behaviour::MAX_PARAMETERS);
    for (std::size_t i = 0; i < count; ++i) {
        if (behaviour.fastParams[i].owner != MEMBER) {
            continue;
        }
        Property& linked = *behaviour.linkedProperties[i];
        MemberPropertyTable::Place const place{behaviour.fastParams[i].dataOffset, linked.GetDataSize(),
                                               linked.GetPropertyType(), nullptr, nullptr};
        if (!memberProperties->HasDatum(place)) {
            GlobalMessageManager::OutputMessageOnce("Error :: PoolProcessing :: The Behaviour \"%s\" can not "
                                                    "be used for the Pool \"%s\", because its "
                                                    "Member Properties do not fit the Members",
                                                    behaviour.GetName().c_str(), name.c_str());
            return false;
        }
    }
    return true;
}

void MemberPool::RunSampled(Behaviour& behaviour, std::vector<Member>& members) {
    behaviour.PerformanceStats().SampleStart();
    behaviour.ProcessMembers(members, ActiveMember());
    behaviour.PerformanceStats().SampleStop();
}

} // namespace Gentra
