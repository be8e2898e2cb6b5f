// A first host: one pool, one behaviour, a few frames.
#include <gentra/gentra.h>

#include <cstdio>

using namespace Gentra;

// A behaviour names no properties. It declares what it needs, and works on one member at a time.
class Drift : public Behaviour {
public:
    Drift() {
        SetBehaviourName("Drift");
        MemberVec3(0, "Position", SHARED_INTRINSIC, {0.0f, 0.0f, 0.0f}); // the pool makes a property for it
        FlexibleValue(1, "Speed");                                       // the host links it
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberVec3(0).x += ReadFlexibleValue(1);
        return true;
    }
};

// The host fills a pool when it hears that the pool is being constructed.
class Host : public Util::EventListener {
public:
    Host() : EventListener("Host") { GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT); }
    void HandleEvent(Util::Event const& event) override {
        auto& pool = *static_cast<MemberPool*>(event.subject);
        Util::RefCountPtr<ValueProperty> const speed(new ValueProperty("Speed"));
        speed->value = 0.5f;
        pool.AddPoolProperty(speed);
        Util::RefCountPtr<Behaviour> const drift(new Drift);
        pool.LinkActiveBehaviour(drift);
        drift->LinkPropertyToVisibleInterface(speed, 0);
    }
};

int main() {
    Host const host;
    MemberPool birds(ContextManager::GetMainContext());
    birds.SetName("Birds");
    birds.ProcessMemberPool(); // the first frame builds the pool
    birds.SetMemberCount(1000);
    for (int frame = 0; frame < 6; ++frame) {
        birds.ProcessMemberPool();
    }
    birds.ActivateFirstMember();
    auto const* const x = static_cast<float const*>(birds.GetPropertyFromName("Position")->GetData());
    std::printf("%d birds, the first bird is at x = %.1f\n", birds.GetNumMembers(), static_cast<double>(*x));
}
