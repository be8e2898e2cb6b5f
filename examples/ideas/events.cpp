// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Events: pools and properties announce themselves. A root type stands for all of its kind.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

namespace {

class Reporter : private Util::EventListener {
public:
    Reporter() : EventListener("Reporter") {
        GlobalEventManager::RegisterListener(this, MemberPool::EVENT);
        GlobalEventManager::RegisterListener(this, Property::EVENT);
    }

private:
    void HandleEvent(Util::Event const& event) override {
        if (event.type.Matches(Property::EVENT)) {
            auto const& property = *static_cast<Util::RefCountPtr<Property> const*>(event.subject);
            std::cout << "property " << property->GetName() << (event.param1 == 0 ? " enters\n" : " leaves\n");
        } else if (event.type.Matches(MemberPool::EVENT_CREATED)) {
            std::cout << "a pool is created\n"; // too early for its name
        } else if (event.type.Matches(MemberPool::EVENT_DELETED)) {
            std::cout << "pool " << static_cast<MemberPool*>(event.subject)->GetName() << " goes\n";
        }
    }
};

} // namespace

int main() {
    Reporter const reporter;
    MemberPool birds(ContextManager::GetMainContext());
    birds.SetName("Birds");
    birds.AddMemberProperty(new ValueProperty("Height"));
    birds.AddPoolProperty(new VectorProperty("Wind"));
}
