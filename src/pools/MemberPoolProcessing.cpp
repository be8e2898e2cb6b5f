// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/MemberPool.h"

#include "gentra/behaviours/Behaviour.h"
#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>

// A pool in use is not cleared, so behaviours only join its lists while others run: each loop reads the length of its
// list afresh, and holds the behaviour that it runs.

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
    Use const use(*this);
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
    Util::RefCountPtr<Behaviour> const held = behaviour;
    if (held.Get() != nullptr) {
        ApplyPassiveBehaviour(*held);
    }
}

void MemberPool::ApplyPassiveBehaviour(Behaviour& behaviour) {
    if (!CheckOwnership(behaviour, "PassiveBehaviour")) {
        return;
    }
    Use const use(*this);
    Util::RefCountPtr<Behaviour> const held = behaviour.Hold();
    std::vector<Member>& members = GetAllMembers();
    if (Prepare(behaviour, true)) {
        RunSampled(behaviour, members);
    }
}

void MemberPool::ApplyPassiveBehaviourOnActiveMember(Util::RefCountPtr<Behaviour> const& behaviour) {
    Util::RefCountPtr<Behaviour> const held = behaviour;
    if (held.Get() != nullptr) {
        ApplyPassiveBehaviourOnActiveMember(*held);
    }
}

void MemberPool::ApplyPassiveBehaviourOnActiveMember(Behaviour& behaviour) {
    if (!CheckOwnership(behaviour, "PassiveBehaviour")) {
        return;
    }
    Use const use(*this);
    Util::RefCountPtr<Behaviour> const held = behaviour.Hold();
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
    Use const use(*this);
    std::vector<Member>& members = selection.GetAllMembers();
    if (Prepare(*held, true)) {
        RunSampled(*held, members);
    }
}

/// The members are one newborn, which may be deleted on the way.
void MemberPool::InitializeNewMembers(std::vector<Member>& newMembers, Newborn const& created) {
    /// Puts the active member back, also when a behaviour throws.
    struct Restore {
        MemberPool& pool;
        Member active;
        ~Restore() { pool.ActiveMember() = active; }
    } const restore{*this, ActiveMember()};

    for (std::size_t i = 0; i < memberConstructionBehaviours.size() && created.record != nullptr; ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = memberConstructionBehaviours[i];
        if (Prepare(*behaviour, false, true)) {
            RunSampled(*behaviour, newMembers);
        }
    }
}

void MemberPool::TriggerPoolConstructor() {
    Use const use(*this);
    for (std::size_t i = 0; i < poolConstructionBehaviours.size(); ++i) {
        Util::RefCountPtr<Behaviour> const behaviour = poolConstructionBehaviours[i];
        std::vector<Member> members(1, ActiveMember());
        if (LayoutFits(*behaviour, true)) { // whether it is ready the behaviour itself decides
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

/// What precedes a run; false when the behaviour must not run.
bool MemberPool::Prepare(Behaviour& behaviour, bool updateProperties, bool isConstruction) {
    behaviour.CheckForUpdate();
    if (!behaviour.ReadyToUse()) {
        return false;
    }
    if (updateProperties) {
        behaviour.UpdateProperties();
    }
    behaviour.RefreshConstants();
    return LayoutFits(behaviour, isConstruction);
}

/// Whether the behaviour's member data lie in this pool's records, as far as the pool can know: those linked to
/// properties of other pools concern the members of these, unless it is a construction behaviour, which is given
/// members of this pool whatever it is linked to.
bool MemberPool::LayoutFits(Behaviour const& behaviour, bool isConstruction) const {
    // Also where the interface was cleared: the fast parameters stay.
    std::size_t const count = std::min<std::size_t>(behaviour.linkedProperties.size(), Behaviour::MAX_PARAMETERS);
    for (std::size_t i = 0; i < count; ++i) {
        Basic_Parameter const& fast = behaviour.fastParams[i];
        Property& linked = *behaviour.linkedProperties[i];
        MemberPool const* const owner = linked.GetOwnerPool();
        bool const isForeign = !isConstruction && owner != nullptr && owner != this;
        if (fast.owner == MEMBER && !isForeign &&
            !HasDatum(fast.dataOffset, linked.GetDataSize(), linked.GetPropertyType())) {
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
