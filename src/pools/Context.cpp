// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/Context.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/Path.h"
#include "gentra/properties/Property.h"
#include "gentra/util/Event.h"
#include "gentra/util/EventListener.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"

namespace Gentra {

constinit bool Context::buildGuard = false;

/// Passes every event to its context.
class Context::MyListener final : public Util::EventListener {
public:
    explicit MyListener(Context* newContext) : EventListener("Context"), context(newContext) {}

    void HandleEvent(Util::Event const& event) override { context->HandleEvents(event); }

private:
    Context* context;
};

/// Keeps a second pass from starting, also when a listener of the first one throws.
class Context::BuildGuard {
public:
    BuildGuard() noexcept { buildGuard = true; }
    BuildGuard(BuildGuard const&) = delete;
    BuildGuard& operator=(BuildGuard const&) = delete;
    ~BuildGuard() { buildGuard = false; }
};

Context::Context() : listener(std::make_unique<MyListener>(this)), spatialRelations(*this) {
    GlobalEventManager::RegisterListener(listener.get(), MemberPool::EVENT);
    GlobalEventManager::RegisterListener(listener.get(), Property::EVENT);
    buildGuard = false;
}

Context::Context(Context const& other)
    : poolsByID(other.poolsByID), propertiesByID(other.propertiesByID), reservedPropertyIDs(other.reservedPropertyIDs),
      waitingPools(other.waitingPools), activeSelections(other.activeSelections),
      performanceProfiler(other.performanceProfiler), spatialRelations(other.spatialRelations) {}

Context::~Context() = default;

// Pools.

MemberPool* Context::GetMemberPoolFromID(Util::ShortID const& id) const {
    auto const found = poolsByID.find(id);
    return found != poolsByID.end() ? found->second.Get() : nullptr;
}

MemberPool* Context::GetMemberPoolFromName(Util::String const& poolName) const {
    for (auto const& entry : poolsByID) {
        MemberPool* const pool = entry.second;
        if (pool != nullptr && pool->GetName() == poolName) {
            return pool;
        }
    }
    return nullptr;
}

void Context::GetAllMemberPools(std::vector<MemberPool*>& out) const {
    out.clear();
    for (auto const& entry : poolsByID) {
        if (MemberPool* const pool = entry.second) {
            out.push_back(pool);
        }
    }
}

void Context::GetAllMemberPoolsByName(std::vector<Util::String>& out) const {
    std::vector<MemberPool*> pools;
    GetAllMemberPools(pools);
    out.clear();
    for (MemberPool const* const pool : pools) {
        out.push_back(pool->GetName());
    }
}

void Context::ChangeMemberPoolID(Util::ShortID oldID, Util::ShortID newID, MemberPool& pool) {
    if (GetMemberPoolFromID(newID) != nullptr) {
        return;
    }
    poolsByID.insert_or_assign(newID, pool.GetWeakPtr());
    if (GetMemberPoolFromID(oldID) == &pool) {
        poolsByID.erase(oldID);
    }
}

// Properties.

Util::RefCountPtr<Property> Context::GetPropertyByID(Util::ShortID id) const {
    auto const found = propertiesByID.find(id);
    return found != propertiesByID.end() ? found->second : Property::NIL;
}

void Context::RegisterPropertyID(Util::ShortID id) {
    reservedPropertyIDs.insert(id);
}

void Context::UnregisterPropertyID(Util::ShortID id) {
    reservedPropertyIDs.erase(id);
}

bool Context::IsPropertyIDUsed(Util::ShortID id) const {
    return reservedPropertyIDs.contains(id);
}

// Active selections.

void Context::ActivateMemberSelection(MemberSelection& selection) {
    activeSelections.push_back(&selection);
}

MemberSelection* Context::GetActiveMemberSelection() const noexcept {
    return activeSelections.empty() ? nullptr : activeSelections.back();
}

void Context::DeactivateMemberSelection(MemberSelection& selection) {
    while (!activeSelections.empty()) {
        MemberSelection const* const popped = activeSelections.back();
        activeSelections.pop_back();
        if (popped == &selection) {
            return;
        }
    }
}

// Events.

void Context::HandleEvents(Util::Event const& event) {
    if (event.type.Matches(MemberPool::EVENT)) {
        auto* const pool = static_cast<MemberPool*>(event.subject);
        if (pool == nullptr) {
            return;
        }
        if (event.type.subIndex == MemberPool::EVENT_CREATED.subIndex) {
            HandlePoolCreated(*pool);
        } else if (event.type.subIndex == MemberPool::EVENT_DELETED.subIndex) {
            HandlePoolDeleted(*pool);
        }
    } else if (event.type.Matches(Property::EVENT)) {
        auto const* const property = static_cast<Util::RefCountPtr<Property> const*>(event.subject);
        if (property == nullptr || property->Get() == nullptr) {
            return;
        }
        if (event.param1 == 0) {
            HandlePropertyEntered(*property);
        } else if (event.param1 == 1) {
            HandlePropertyLeft(*property);
        }
    }
}

void Context::HandlePoolCreated(MemberPool& pool) {
    if (GetMemberPoolFromID(pool.GetMemberPoolID()) != nullptr) {
        GlobalMessageManager::OutputMessage(
            "Bug Report :: Context :: MemberPool \"%s\" tries to use an already existing ID", pool.GetName().c_str());
        return;
    }
    poolsByID.insert_or_assign(pool.GetMemberPoolID(), pool.GetWeakPtr());
    waitingPools.push_back(pool.GetWeakPtr());
}

void Context::HandlePoolDeleted(MemberPool& pool) {
    auto const found = poolsByID.find(pool.GetMemberPoolID());
    if (found == poolsByID.end()) {
        GlobalMessageManager::OutputMessage("Bug Report :: Context :: MemberPool \"%s\" got deleted, but "
                                            "it's ID is unknown to the Context. why?",
                                            pool.GetName().c_str());
        return;
    }
    if (MemberPool const* const registered = found->second) {
        StopWaiting(*registered);
    }
    poolsByID.erase(found);
}

void Context::HandlePropertyEntered(Util::RefCountPtr<Property> const& property) {
    if (!propertiesByID.emplace(property->GetPropertyID(), property).second) {
        GlobalMessageManager::OutputMessage(
            "Bug Report :: Context :: Property \"%s\" can't be registered, as it's ID is "
            "already registered",
            property->GetName().c_str());
    }
}

void Context::HandlePropertyLeft(Util::RefCountPtr<Property> const& property) {
    if (propertiesByID.erase(property->GetPropertyID()) == 0) {
        GlobalMessageManager::OutputMessage("Bug Report :: Context :: Property \"%s\" can't get "
                                            "unregistered, it's ID is unknown to the Context. why?",
                                            property->GetName().c_str());
    }
}

/// Keeps the running step at its place in the list.
void Context::StopWaiting(MemberPool const& pool) {
    for (std::size_t i = waitingPools.size(); i-- > 0;) {
        if (waitingPools[i].Get() == &pool) {
            waitingPools.erase(waitingPools.begin() + static_cast<std::ptrdiff_t>(i));
            if (i < waitingPosition) {
                --waitingPosition;
            }
        }
    }
}

void Context::NobodyWaits() {
    waitingPools.clear();
    waitingPosition = 0; // a pass around this one goes on from here
}

// Building.

/// In list order, also over pools that join or leave the list meanwhile.
template<class Action>
void Context::ForEachWaitingPool(Action const& action) {
    for (waitingPosition = 0; waitingPosition < waitingPools.size();) {
        MemberPool* const pool = waitingPools[waitingPosition++];
        if (pool != nullptr) {
            action(*pool);
        }
    }
}

/// Ascending by ID, also over pools that come, go or change their ID meanwhile.
template<class Action>
void Context::ForEachPool(Action const& action) {
    for (auto next = poolsByID.begin(); next != poolsByID.end();) {
        Util::ShortID const id = next->first;
        if (MemberPool* const pool = next->second) {
            action(*pool);
        }
        next = poolsByID.upper_bound(id);
    }
}

void Context::BuildMemberPool(MemberPool& pool) {
    Util::WeakPtr<MemberPool> const alive = pool.GetWeakPtr();
    Util::String const name = pool.GetName();
    GlobalMessageManager::OutputMessage("Build \"%s\" Started...", name.c_str());
    GlobalMessageManager::OutputMessage("Initializing \"%s\"", name.c_str());
    pool.InitializeMemberPool();
    if (alive.Get() == nullptr) { // destroyed by a listener, here and below
        return;
    }
    GlobalMessageManager::OutputMessage("Constructing \"%s\"", pool.GetName().c_str());
    GlobalEventManager::Trigger(Util::Event(MemberPool::EVENT_CONSTRUCT, 0, 0, &pool));
    if (alive.Get() == nullptr) {
        return;
    }
    GlobalMessageManager::OutputMessage("Compiling \"%s\"", pool.GetName().c_str());
    pool.CompileMemberPool();
    GlobalMessageManager::OutputMessage("Building \"%s\" completed", pool.GetName().c_str());
}

void Context::ForceConstructAllMemberPools() {
    if (waitingPools.empty() || buildGuard) {
        return;
    }
    BuildGuard const guard;
    spatialRelations.Reset();
    ForEachWaitingPool([](MemberPool& pool) { BuildMemberPool(pool); });
    ForEachPool([](MemberPool& pool) { pool.SetBasePoolsForMemberSelections(); });
    ForEachWaitingPool([](MemberPool& pool) { pool.TriggerPoolConstructor(); });
    NobodyWaits();
}

void Context::ForceReconstructAllMemberPools() {
    if (buildGuard) {
        return;
    }
    BuildGuard const guard;
    spatialRelations.Reset();
    ForEachPool([](MemberPool& pool) { BuildMemberPool(pool); });
    ForEachPool([](MemberPool& pool) { pool.SetBasePoolsForMemberSelections(); });
    ForEachPool([](MemberPool& pool) { pool.TriggerPoolConstructor(); });
    NobodyWaits();
    Path::ForceGlobalPathResolve();
}

} // namespace Gentra
