// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Behaviours in a shared object of their own.
#include <gentra/gentra.h>

using namespace Gentra;

namespace {

/// Grows each member at its own rate, up to a height.
class Grow : public Behaviour {
public:
    Grow() {
        SetBehaviourName("Grow");
        MemberValue(0, "Height", SHARED_INTRINSIC, 0.1f);
        FlexibleValue(1, "Rate");
        FlexibleValue(2, "Limit");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        float& height = UseMemberValue(0);
        height += ReadFlexibleValue(1) * (1 - height / ReadFlexibleValue(2));
        return true;
    }
};

/// Cuts down whoever is higher than a height.
class Cut : public Behaviour {
public:
    Cut() {
        SetBehaviourName("Cut");
        MemberValue(0, "Height", SHARED_INTRINSIC, 0.1f);
        FlexibleValue(1, "Limit");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        float& height = UseMemberValue(0);
        height = height > 0.8f * ReadFlexibleValue(1) ? 0.1f : height;
        return true;
    }
};

template<class Kind>
class Factory final : public BehaviourFactory {
public:
    explicit Factory(char const* newName) : BehaviourFactory(newName) { Init(); }
    Util::RefCountPtr<Behaviour> CreateBehaviour() override { return new Kind; }
};

void RegisterFactories() {
    static Factory<Grow> const grow("Grow");
    static Factory<Cut> const cut("Cut");
}

} // namespace

GENTRA_PLUG_IN(RegisterFactories)
