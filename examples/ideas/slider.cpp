// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A slider of an editor: a property in no pool, which is asked for its value before the behaviours that are linked to
// it run over members.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

/// What a window would have.
struct Slider {
    float position = 0;
};

class SliderProperty : public ValueProperty {
public:
    explicit SliderProperty(Slider const& newSlider) : ValueProperty("Slider"), slider(newSlider) {}
    void Update() override {
        value = slider.position;
        ++reads;
    }
    [[nodiscard]] int CountReads() const { return reads; }

private:
    Slider const& slider;
    int reads = 0;
};

class Heat : public Behaviour {
public:
    Heat() {
        SetBehaviourName("Heat");
        MemberValue(0, "Temperature", SHARED_INTRINSIC, 20);
        FlexibleValue(1, "Power");
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) += ReadFlexibleValue(1);
        return true;
    }
};

} // namespace

int main() {
    Slider slider;
    Util::RefCountPtr<SliderProperty> const power(new SliderProperty(slider));
    Builder const builder([&](MemberPool& pool) {
        Util::RefCountPtr<Behaviour> const heat(new Heat);
        heat->LinkPropertyToVisibleInterface(power, 0);
        pool.LinkActiveBehaviour(heat);
    });
    MemberPool rooms(ContextManager::GetMainContext());
    rooms.ProcessMemberPool();
    rooms.SetMemberCount(100);
    Util::RefCountPtr<Property> const temperature = rooms.GetPropertyFromName("Temperature");
    for (float const position : {0.0f, 0.5f, 2.0f}) {
        slider.position = position; // between two frames, by the user
        rooms.ProcessMemberPool();
        std::cout << "slider at " << position << ": the rooms have "
                  << Datum::Read<float>(temperature->GetDataFromMemberSelection(rooms, 99)) << " degrees\n";
    }
    std::cout << "read " << power->CountReads() << " times, not once for each room\n";
}
