// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A tool's view: behaviours by name, what their slots want, and links by name and type without knowing any of them.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

namespace {

class Sail : public Behaviour {
public:
    Sail() {
        SetBehaviourName("Sail");
        MemberVec3(0, "Position", SHARED_INTRINSIC, {});
        FlexibleVec3(1, "Wind");
        FlexibleValue(2, "Canvas");
        FlexibleBehaviourTrigger(3, "Ashore");
    }
};

class Row : public Behaviour {
public:
    Row() {
        SetBehaviourName("Row");
        MemberVec3(0, "Position", SHARED_INTRINSIC, {});
        MemberValue(1, "Strength", VISIBLE, 1);
    }
};

template<class Kind>
struct Factory final : BehaviourFactory {
    explicit Factory(char const* newName) : BehaviourFactory(newName) { Init(); }
    Util::RefCountPtr<Behaviour> CreateBehaviour() override { return new Kind; }
};
Factory<Sail> sail("Sail");
Factory<Row> row("Row");

constexpr char const* OWNERS[] = {"a pool's", "a member's", "anybody's"};
constexpr char const* TYPES[] = {"undefined", "value",          "vector",          "member selection",
                                 "behaviour", "data reference", "fixed-size data", "text"};

/// Links the slot to the pool's property of its name, or else to the first one of its type.
bool Link(Behaviour& behaviour, MemberPool const& pool, int slot, Util::String const& name, PropertyType type) {
    std::vector<Util::RefCountPtr<Property>> candidates;
    pool.GetAllPropertiesOfCertainType(candidates, type);
    for (auto const& candidate : candidates) {
        if (candidate->GetName() == name) {
            return behaviour.LinkPropertyToVisibleInterface(candidate, slot);
        }
    }
    return !candidates.empty() && behaviour.LinkPropertyToVisibleInterface(candidates.front(), slot);
}

} // namespace

int main() {
    MemberPool boats(ContextManager::GetMainContext());
    boats.AddMemberProperty(new ValueProperty("Strength"));
    boats.AddPoolProperty(new VectorProperty("Wind"));
    boats.AddPoolProperty(new ValueProperty("Canvas"));

    for (Util::String const& kind : ContextManager::GetBehavioursByName()) {
        Util::RefCountPtr<Behaviour> const behaviour = ContextManager::GetNewBehaviourFromName(kind);
        std::cout << behaviour->GetName() << "\n";
        for (int slot = 0; slot < behaviour->GetNumVisibleInterfaceLinks(); ++slot) {
            Util::String name;
            PropertyOwner owner = POOL;
            PropertyType type = UNDEFINED;
            bool intrinsic = false;
            behaviour->GetVisibleInterfaceDescription(slot, name, owner, type, intrinsic);
            bool const linked = Link(*behaviour, boats, slot, name, type);
            std::cout << "  " << name << ", " << OWNERS[owner] << " " << TYPES[type]
                      << (linked ? ": linked\n" : ": there is none\n");
        }
    }
}
