// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// What the debugger is asked to show, at the call of Look().
#include <gentra/gentra.h>

using namespace Gentra;

namespace {

class Drift : public Behaviour {
public:
    Drift() {
        SetBehaviourName("Drift");
        FlexibleVec3(0, "Wind");
        FlexibleValue(1, "Nothing");
    }
};

} // namespace

extern "C" __attribute__((noinline)) void Look(void const*) {
    asm volatile("" ::: "memory"); // a call that stays
}

int main() {
    constexpr unsigned short LETTERS[][3] = {
        {'h', 'i', 0}, {0xD83D, 0xDE00, 0}, {0xD83D, 0}}; // the last is half a letter
    MemberPool birds(ContextManager::GetMainContext());
    birds.SetName("Birds");
    birds.SetNewMemberPoolID(4711);
    Util::RefCountPtr<VectorProperty> const wind(new VectorProperty("Wind"));
    wind->vector = {1, 0, 0.5f};
    wind->SetPropertyID(17);
    birds.AddPoolProperty(wind);
    Util::RefCountPtr<ValueProperty> const weight(new ValueProperty("Weight"));
    Util::RefCountPtr<TextProperty> const ring(new TextProperty("Ring"));
    birds.AddMemberProperty(weight);
    birds.AddMemberProperty(new VectorProperty("Position"));
    birds.AddMemberProperty(new MemberSelectionProperty("Friends"));
    birds.AddMemberProperty(ring);
    birds.AddMemberProperty(new FixedSizeDataProperty("Flags", 2, nullptr));
    for (weight->value = 0; weight->value < 4; weight->value += 1) {
        birds.AddNewMember();
    }
    for (int i = 0; i < 3; ++i) {
        unsigned short const* letters = LETTERS[i];
        ring->SetDataToMemberSelection(&letters, birds, 2 - i);
    }
    Member const third = birds.GetMemberByIndex(2);
    Member const nobody;
    MemberSelection flock(&birds);
    flock.AddMembers(birds, birds.GetAllMembers());
    flock.ActivateFirstMember();
    flock.InsertMemberAfterActiveMember(third);
    flock.RemoveMember(birds.GetMemberByIndex(1));
    flock.AddMember(birds, birds.GetMemberByIndex(0));
    Drift drift;
    drift.LinkPropertyToVisibleInterface(wind, 0);
    Util::RefCountPtr<Property> const shared = wind;
    Util::ShortID const id(-12);
    Util::EventType const& created = MemberPool::EVENT_CREATED;
    Util::String const name("a name, \xE9t\xE9"); // not UTF-8
    Util::Event const event(created, 1, 2, nullptr);
    void const* const all[] = {&birds, &third, &nobody, &flock, &drift, &shared, &id, &name, &event};
    Look(all);
}
