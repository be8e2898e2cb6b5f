// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/Context.h"

#include "../util/FirstException.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/pools/Path.h"
#include "gentra/properties/Property.h"
#include "gentra/util/Event.h"
#include "gentra/util/EventListener.h"
#include "gentra/util/GlobalEventManager.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <utility>

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

/// Keeps a second pass from starting.
class Context::BuildGuard {
public:
    BuildGuard() noexcept {
        assert(!buildGuard);
        buildGuard = true;
    }
    BuildGuard(BuildGuard const&) = delete;
    BuildGuard& operator=(BuildGuard const&) = delete;
    ~BuildGuard() { buildGuard = false; }
};

/// The pools that a step of a reconstruct pass has yet to come to.
struct Context::Agenda {
    std::map<Util::ShortID, PoolPtr> known;  ///< By the ID that they had when the step began.
    std::map<Util::ShortID, PoolPtr> joined; ///< Created meanwhile, by their present ID.
    std::optional<Util::ShortID> current;    ///< The ID of the one whose turn it is.

    /// The next pool, which may have gone by now; false when there is none.
    bool TakeNext(PoolPtr& pool) {
        auto const later = current ? joined.upper_bound(*current) : joined.begin();
        bool const isLater = later != joined.end() && (known.empty() || later->first < known.begin()->first);
        if (!isLater && known.empty()) {
            return false;
        }
        auto const next = isLater ? later : known.begin();
        current = next->first;
        pool = next->second;
        (isLater ? joined : known).erase(next);
        return true;
    }
};

/// What has gone wrong in a pass.
struct Context::Pass {
    Util::FirstException exception;
    std::vector<PoolPtr> unbuilt; ///< Their building has thrown.

    /// Not if it was built since, by a pass inside this one.
    [[nodiscard]] bool IsUnbuilt(MemberPool const& pool) const {
        return !pool.compiled &&
               std::any_of(unbuilt.begin(), unbuilt.end(), [&](PoolPtr const& each) { return each.Get() == &pool; });
    }
};

Context::Context() : listener(std::make_unique<MyListener>(this)), spatialRelations(*this) {
    GlobalEventManager::RegisterListener(listener.get(), MemberPool::EVENT);
    GlobalEventManager::RegisterListener(listener.get(), Property::EVENT);
    buildGuard = false;
}

Context::Context(Context const& other)
    : poolsByID(other.poolsByID), propertiesByID(other.propertiesByID), reservedPropertyIDs(other.reservedPropertyIDs),
      waitingPools(other.waitingPools), waitingCount(other.waitingCount), activeSelections(other.activeSelections),
      performanceProfiler(other.performanceProfiler), spatialRelations(other.spatialRelations) {}

Context::~Context() = default;

// Pools.

MemberPool* Context::GetMemberPoolFromID(Util::ShortID const& id) const {
    auto const found = poolsByID.find(id);
    return found != poolsByID.end() ? found->second.pool.Get() : nullptr;
}

MemberPool* Context::GetMemberPoolFromName(Util::String const& poolName) const {
    for (auto const& entry : poolsByID) {
        MemberPool* const pool = entry.second.pool;
        if (pool != nullptr && pool->GetName() == poolName) {
            return pool;
        }
    }
    return nullptr;
}

void Context::GetAllMemberPools(std::vector<MemberPool*>& out) const {
    out.clear();
    for (auto const& entry : poolsByID) {
        if (MemberPool* const pool = entry.second.pool) {
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
    Registration registration{pool.GetWeakPtr()};
    if (GetMemberPoolFromID(oldID) == &pool) {
        registration.ticket = poolsByID.at(oldID).ticket;
    }
    poolsByID.insert_or_assign(newID, registration);
    if (GetMemberPoolFromID(oldID) == &pool) {
        poolsByID.erase(oldID);
    }
    if (agenda != nullptr && agenda->joined.contains(oldID)) {
        agenda->joined.insert_or_assign(newID, pool.GetWeakPtr());
        agenda->joined.erase(oldID);
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
    if (!buildGuard && waitingPools.size() > 2 * waitingCount + 16) {
        EndWaiting(nullptr);
    }
    waitingPools.push_back(pool.GetWeakPtr());
    ++waitingCount;
    poolsByID.insert_or_assign(pool.GetMemberPoolID(), Registration{pool.GetWeakPtr(), waitingPools.size() - 1});
    if (agenda != nullptr) {
        agenda->joined.insert_or_assign(pool.GetMemberPoolID(), pool.GetWeakPtr());
    }
}

/// The pool that is registered under the ID is dropped, also where that is another one that has clashed with it.
void Context::HandlePoolDeleted(MemberPool& pool) {
    auto const found = poolsByID.find(pool.GetMemberPoolID());
    if (found != poolsByID.end()) {
        Forget(found);
        return;
    }
    GlobalMessageManager::OutputMessage("Bug Report :: Context :: MemberPool \"%s\" got deleted, but "
                                        "it's ID is unknown to the Context. why?",
                                        pool.GetName().c_str());
    // It may be known by a former ID.
    auto const former = std::find_if(poolsByID.begin(), poolsByID.end(),
                                     [&](auto const& entry) { return entry.second.pool.Get() == &pool; });
    if (former != poolsByID.end()) {
        Forget(former);
    }
}

void Context::Forget(std::map<Util::ShortID, Registration>::iterator entry) {
    if (std::size_t const ticket = entry->second.ticket; ticket != NOT_WAITING) {
        assert(ticket < waitingPools.size() && waitingCount > 0);
        waitingPools[ticket] = PoolPtr();
        --waitingCount;
    }
    if (agenda != nullptr) {
        agenda->joined.erase(entry->first);
    }
    poolsByID.erase(entry);
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

/// Also where the context knows the pool by a former ID; null when it does not know it.
Context::Registration* Context::FindRegistration(MemberPool const& pool) {
    auto const isSame = [&](auto const& entry) { return entry.second.pool.Get() == &pool; };
    auto found = poolsByID.find(pool.GetMemberPoolID());
    if (found == poolsByID.end() || !isSame(*found)) {
        found = std::find_if(poolsByID.begin(), poolsByID.end(), isSame);
    }
    return found != poolsByID.end() ? &found->second : nullptr;
}

/// Hands out new tickets: to all that wait or, after a pass, to those that it has left out or could not build.
void Context::EndWaiting(Pass const* pass) {
    std::vector<Registration*> stillWaiting;
    for (auto& entry : poolsByID) {
        MemberPool const* const pool = entry.second.pool;
        bool const isIn = pass == nullptr || (pool != nullptr && (pool->IsInUse() || pool->clearing));
        if (entry.second.ticket != NOT_WAITING && pool != nullptr && isIn) {
            stillWaiting.push_back(&entry.second);
        }
    }
    std::sort(stillWaiting.begin(), stillWaiting.end(), [](auto* a, auto* b) { return a->ticket < b->ticket; });
    for (std::size_t i = 0; pass != nullptr && i < pass->unbuilt.size(); ++i) {
        MemberPool const* const pool = pass->unbuilt[i];
        Registration* const registration = pool != nullptr && !pool->compiled ? FindRegistration(*pool) : nullptr;
        if (registration != nullptr &&
            std::find(stillWaiting.begin(), stillWaiting.end(), registration) == stillWaiting.end()) {
            stillWaiting.push_back(registration);
        }
    }
    std::vector<PoolPtr> pools;
    pools.reserve(stillWaiting.size()); // the last that may run out of memory
    for (auto& entry : poolsByID) {
        entry.second.ticket = NOT_WAITING;
    }
    for (Registration* const registration : stillWaiting) {
        registration->ticket = pools.size();
        pools.push_back(registration->pool);
    }
    waitingPools.swap(pools);
    waitingCount = waitingPools.size();
}

// Building.

/// In list order, also over pools that join the list or go meanwhile.
void Context::ForEachWaitingPool(StepOfPass step, Pass& pass) {
    for (std::size_t i = 0; i < waitingPools.size(); ++i) {
        if (MemberPool* const pool = waitingPools[i]) {
            step(*pool, pass);
        }
    }
}

/// Ascending by ID, also over pools that come, go or change their ID meanwhile.
void Context::ForEachPool(StepOfPass step, Pass& pass) {
    struct Turns {
        Context& context;
        Agenda agenda;
        Agenda* const outer; ///< Of the pass around this one: a new context permits passes inside passes.
        explicit Turns(Context& newContext) : context(newContext), outer(newContext.agenda) {
            for (auto const& entry : context.poolsByID) {
                agenda.known.emplace(entry.first, entry.second.pool);
            }
            context.agenda = &agenda;
        }
        ~Turns() { context.agenda = outer; }
    } turns(*this);
    for (PoolPtr next; turns.agenda.TakeNext(next);) {
        if (MemberPool* const pool = next) {
            step(*pool, pass);
        }
    }
}

void Context::BuildMemberPool(MemberPool& pool) {
    if (pool.clearing) {
        return;
    }
    if (pool.IsInUse()) {
        GlobalMessageManager::OutputMessage("Error :: Context :: The Pool \"%s\" can not be built while it is in use",
                                            pool.GetName().c_str());
        return;
    }
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

void Context::TryToBuildMemberPool(MemberPool& pool, Pass& pass) {
    PoolPtr const alive = pool.GetWeakPtr();
    bool isThrough = false;
    pass.exception.During([&] {
        BuildMemberPool(pool);
        isThrough = true;
    });
    if (!isThrough && alive.Get() != nullptr) {
        GlobalMessageManager::OutputMessage(
            "Error :: Context :: An exception was thrown while the Pool \"%s\" was built", pool.GetName().c_str());
        pool.constructionFailed = false; // or its frames would not try again
        pass.exception.During([&] { pass.unbuilt.push_back(alive); });
    }
}

void Context::SetBasePools(MemberPool& pool, Pass& pass) {
    pass.exception.During([&] { pool.SetBasePoolsForMemberSelections(); });
}

void Context::ConstructMemberPool(MemberPool& pool, Pass& pass) {
    if (!pool.IsInUse() && !pool.clearing && !pass.IsUnbuilt(pool)) {
        pass.exception.During([&] { pool.TriggerPoolConstructor(); });
    }
}

void Context::EndPass(Pass& pass) {
    pass.exception.During([&] { EndWaiting(&pass); });
}

void Context::ForceConstructAllMemberPools() {
    if (waitingCount == 0 || buildGuard) {
        return;
    }
    BuildGuard const guard;
    Pass pass;
    spatialRelations.Reset();
    ForEachWaitingPool(TryToBuildMemberPool, pass);
    ForEachPool(SetBasePools, pass);
    ForEachWaitingPool(ConstructMemberPool, pass);
    EndPass(pass);
    pass.exception.ThrowOn();
}

void Context::ForceReconstructAllMemberPools() {
    if (buildGuard) {
        return;
    }
    BuildGuard const guard;
    Pass pass;
    spatialRelations.Reset();
    ForEachPool(TryToBuildMemberPool, pass);
    ForEachPool(SetBasePools, pass);
    ForEachPool(ConstructMemberPool, pass);
    EndPass(pass);
    Path::ForceGlobalPathResolve();
    pass.exception.ThrowOn();
}

} // namespace Gentra
