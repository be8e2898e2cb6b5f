// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_SUPPORT_BUILDING_H
#define EXAMPLES_SUPPORT_BUILDING_H

#include <gentra/gentra.h>

#include <cstdint>
#include <random>

/// What the examples' hosts and behaviours have in common.
namespace Example {

using BehaviourPtr = Util::RefCountPtr<Gentra::Behaviour>;

/// Adds a pool property with a value.
inline void AddValue(Gentra::MemberPool& pool, char const* name, float value) {
    Gentra::Parameter parameter;
    parameter.MakePropertyCreationParameter(Gentra::VALUE, name, false);
    parameter.value = value;
    pool.CreatePoolPropertyFromParameter(parameter, 0);
}
inline void AddVector(Gentra::MemberPool& pool, char const* name, Math::Vec3 vector) {
    Gentra::Parameter parameter;
    parameter.MakePropertyCreationParameter(Gentra::VECTOR, name, false);
    parameter.vector = vector;
    pool.CreatePoolPropertyFromParameter(parameter, 0);
}

/// Makes a behaviour by name and links each of its visible parameters to the pool's property of that name.
inline BehaviourPtr New(Gentra::MemberPool& pool, char const* behaviourName) {
    BehaviourPtr behaviour = Gentra::ContextManager::GetNewBehaviourFromName(behaviourName);
    for (int i = 0; i < behaviour->GetNumVisibleInterfaceLinks(); ++i) {
        Util::String parameterName;
        Gentra::PropertyOwner owner = Gentra::POOL;
        Gentra::PropertyType type = Gentra::UNDEFINED;
        bool intrinsic = false;
        behaviour->GetVisibleInterfaceDescription(i, parameterName, owner, type, intrinsic);
        behaviour->LinkPropertyToVisibleInterface(pool.GetPropertyFromName(parameterName), i);
    }
    return behaviour;
}

/// A factory that registers itself.
template<class Kind>
class Factory : public Gentra::BehaviourFactory {
public:
    explicit Factory(char const* newName) : BehaviourFactory(newName) { Init(); }
    BehaviourPtr CreateBehaviour() override { return new Kind; }
};

/// Reads a datum of any member of the pool whose member property `property` is.
template<class T>
[[nodiscard]] T Read(Gentra::Member member, Gentra::Basic_Parameter const& property) {
    return Gentra::Datum::Read<T>(member.record + property.dataOffset);
}

/// Adds `factor` times `v` to `sum`, in the plane.
inline void AddScaled(Math::Vec3& sum, Math::Vec3 const& v, float factor) {
    sum.x += factor * v.x;
    sum.z += factor * v.z;
}

/// Random numbers that are the same everywhere: the standard's distributions differ between libraries.
class Random {
public:
    void Seed(std::uint32_t seed) { engine.seed(seed); }
    [[nodiscard]] float Uniform(float low, float high) {
        return low + (high - low) * (static_cast<float>(engine() >> 8) / 16777216.0f);
    }

private:
    std::mt19937 engine;
};

} // namespace Example

#endif
