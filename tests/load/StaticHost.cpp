// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A host whose static objects use the library before main() and after it, in a file that sees one header
// only.
#include "gentra/pools/Context.h"

namespace {
Gentra::Context earlyContext;
}

#include <gentra/gentra.h>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace Gentra;

void Require(bool holds, char const* what) {
    if (!holds) {
        std::fprintf(stderr, "static host: %s\n", what);
        std::_Exit(1);
    }
}

class Walk : public Behaviour {
public:
    Walk() { MemberValue(0, "Distance", SHARED_INTRINSIC, 2); }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) += 1;
        return true;
    }
};

class Factory : public BehaviourFactory {
public:
    Factory() : BehaviourFactory("Walk") { Init(); }
    Util::RefCountPtr<Behaviour> CreateBehaviour() override { return new Walk; }
} factory;

/// Counts the pool events; the last one comes from a static pool's destructor.
struct Listener : Util::EventListener {
    Listener() : EventListener("Static") { GlobalEventManager::RegisterListener(this, MemberPool::EVENT); }
    ~Listener() { Require(events == 3, "the pool's construction, building and destruction were heard"); }
    void HandleEvent(Util::Event const&) override { ++events; }
    int events = 0;
} listener;

/// Lives longer than the pool that it is bound to.
struct StaticReference : PropertyReference {
    ~StaticReference() { Require(GetOwnerPool() == nullptr && GetProperty() == Property::NIL, "it was unbound"); }
} reference;
Path path;

struct StaticPool : MemberPool {
    StaticPool() : MemberPool(ContextManager::GetMainContext()) {
        SetName("Static");
        Require(earlyContext.GetMemberPoolFromName("Static") == this, "a static context hears of a static pool");
        Require(GetPropertyFromName("none") == Property::NIL && Property::NIL->GetName() == "NULL", "NIL is there");
        Require(GetBehaviourByName("none") == Behaviour::NIL, "the behaviours' NIL is there");
    }
    ~StaticPool() { Require(Property::NIL->GetName() == "NULL", "NIL is still there"); }
} pool;

} // namespace

int main() {
    pool.ProcessMemberPool();
    pool.LinkActiveBehaviour(ContextManager::GetNewBehaviourFromName("Walk"));
    pool.CompileMemberPool();
    pool.SetMemberCount(3);
    pool.ProcessMemberPool();
    Require(Datum::Read<float>(pool.GetDataFromMember(2, 0)) == 3.0f, "the behaviour ran");
    reference.SetPropertyName("Distance");
    reference.SetOwnerPoolID(pool.GetMemberPoolID());
    path.MakeShortestPossiblePathToProperty(reference.GetProperty());
    Require(path.GetDestinationPropertyDataUsingIndices() == pool.GetDataFromMember(0, 0), "the path leads there");
    std::puts("static host: passed");
}
