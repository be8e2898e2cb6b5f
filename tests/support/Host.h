// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_HOST_H
#define GENTRA_TESTS_SUPPORT_HOST_H

#include "MessageLog.h"

#include <gentra/gentra.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Support {

using PropertyPtr = Util::RefCountPtr<Gentra::Property>;
using BehaviourPtr = Util::RefCountPtr<Gentra::Behaviour>;

inline Gentra::Context& MainContext() {
    return Gentra::ContextManager::GetMainContext();
}

/// Calls a function for each event of a type, as a host's listener does.
class Listener : public Util::EventListener {
public:
    using Handler = std::function<void(Util::Event const&)>;

    Listener(Util::EventType const& type, Handler newHandler) : EventListener("Test"), handler(std::move(newHandler)) {
        Gentra::GlobalEventManager::RegisterListener(this, type);
    }
    void HandleEvent(Util::Event const& event) override { handler(event); }

private:
    Handler handler;
};

/// Fills each pool that is being constructed.
class Constructor final : public Listener {
public:
    explicit Constructor(std::function<void(Gentra::MemberPool&)> fill)
        : Listener(Gentra::MemberPool::EVENT_CONSTRUCT,
                   [fill](Util::Event const& event) { fill(*static_cast<Gentra::MemberPool*>(event.subject)); }) {}
};

/// A pool on the main context.
struct Pool : Gentra::MemberPool {
    explicit Pool(char const* newName = "Pool") : MemberPool(MainContext()) { SetName(newName); }
};

/// A behaviour that lays open what derived classes see, and records what the pool does with it.
class TestBehaviour : public Gentra::Behaviour {
public:
    explicit TestBehaviour(char const* newName = "Behaviour") { SetBehaviourName(newName); }

    using Behaviour::AddParameterToInterface;
    using Behaviour::AddParameterToInterfaceFront;
    using Behaviour::BehaviourLess;
    using Behaviour::ClearLinkedParameters;
    using Behaviour::ClearParameterInterface;
    using Behaviour::fastParams;
    using Behaviour::GetInterfaceDescription;
    using Behaviour::GetNumInterfaceLinks;
    using Behaviour::GetPropertyTypeFromParameterInterface;
    using Behaviour::linkedProperties;
    using Behaviour::LinkPropertyToInterface;
    using Behaviour::member;
    using Behaviour::orderKey;
    using Behaviour::parameterInterface;
    using Behaviour::SetOwnerPool;
    using Behaviour::visibleInterface;

    void CheckForUpdate() override { calls.emplace_back("check"); }
    bool TriggerLiveBehaviour() override {
        calls.emplace_back("trigger");
        if (GetOwnerPool() != nullptr) {
            member = GetOwnerPool()->ActiveMember();
        }
        return work ? work(*this) : false;
    }

    /// Returns what was called since the last time.
    std::vector<std::string> TakeCalls() { return std::exchange(calls, {}); }

    std::function<bool(TestBehaviour&)> work;
    std::vector<std::string> calls;
};

/// A property with a given owner, value and type, as a host would make it.
inline Util::RefCountPtr<Gentra::ValueProperty> Value(char const* name, float value = 0.0f) {
    Util::RefCountPtr<Gentra::ValueProperty> const property(new Gentra::ValueProperty(name));
    property->value = value;
    return property;
}
inline Util::RefCountPtr<Gentra::VectorProperty> Vector(char const* name, Math::Vec3 vector = {}) {
    Util::RefCountPtr<Gentra::VectorProperty> const property(new Gentra::VectorProperty(name));
    property->vector = vector;
    return property;
}

inline std::vector<std::string> Names(std::vector<PropertyPtr> const& properties) {
    std::vector<std::string> names;
    for (PropertyPtr const& property : properties) {
        names.push_back(property->GetName());
    }
    return names;
}

} // namespace Support

#endif
