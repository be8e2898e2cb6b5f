// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Plan.h"

using namespace Gentra;

namespace Console {

Document::Document() : EventListener("Document") {
    GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT);
}

void Document::AddPool(std::string const& poolName) {
    auto const [entry, isNew] = pools.try_emplace(poolName);
    if (isNew) {
        entry->second.pool = std::make_unique<MemberPool>(ContextManager::GetMainContext());
        entry->second.pool->SetName(poolName);
    }
}

MemberPool* Document::FindPool(std::string const& poolName) {
    auto const found = pools.find(poolName);
    return found != pools.end() ? found->second.pool.get() : nullptr;
}

void Document::Build() {
    ContextManager::GetMainContext().ForceReconstructAllMemberPools();
    for (auto const& [poolName, entry] : pools) { // once all are built, so that behaviours find each other's pools
        entry.pool->SetMemberCount(entry.plan.members);
    }
}

void Document::HandleEvent(Util::Event const& event) {
    auto& pool = *static_cast<MemberPool*>(event.subject);
    PoolPlan const& plan = Plan(pool.GetName());
    for (PropertyPlan const& property : plan.properties) {
        // The ID follows from the names, so it is the same in every session.
        if (property.ofMembers) {
            pool.CreateMemberPropertyFromParameter(property.parameter, 0);
        } else {
            pool.CreatePoolPropertyFromParameter(property.parameter, 0);
        }
    }
    for (BehaviourPlan const& behaviour : plan.behaviours) {
        Link(pool, behaviour);
    }
}

void Document::Link(MemberPool& pool, BehaviourPlan const& plan) {
    Util::RefCountPtr<Behaviour> const behaviour = ContextManager::GetNewBehaviourFromName(plan.kind);
    for (int slot = 0; slot < behaviour->GetNumVisibleInterfaceLinks(); ++slot) {
        Util::String slotName;
        PropertyOwner owner = POOL;
        PropertyType type = UNDEFINED;
        bool intrinsic = false;
        behaviour->GetVisibleInterfaceDescription(slot, slotName, owner, type, intrinsic);
        auto const link = plan.links.find(slotName);
        // Without a link the slot stays open, and the compiler says so.
        behaviour->LinkPropertyToVisibleInterface(
            pool.GetPropertyFromName(link != plan.links.end() ? Util::String(link->second) : slotName), slot);
    }
    pool.LinkActiveBehaviour(behaviour);
}

} // namespace Console
