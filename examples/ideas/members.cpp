// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Members: their records are laid out by the properties that the pool has when the first one is created.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

int main() {
    MemberPool cars(ContextManager::GetMainContext());
    Util::RefCountPtr<ValueProperty> const fuel(new ValueProperty("Fuel"));
    fuel->value = 40; // what each new car starts with
    cars.AddMemberProperty(fuel);
    cars.AddMemberProperty(new VectorProperty("Position"));
    cars.SetMemberCount(3);

    float less = 12.5f;
    fuel->SetDataToMemberSelection(&less, cars, 1);
    for (int i = 0; i < cars.GetNumMembers(); ++i) {
        std::cout << "car " << i << " has " << Datum::Read<float>(fuel->GetDataFromMemberSelection(cars, i))
                  << " litres\n";
    }
    std::cout << "the position lies " << cars.GetDataOffsetFromPropertyName("Position") << " bytes into a record\n";

    // With members the layout is fixed.
    cars.AddMemberProperty(new ValueProperty("Speed"));
    char messages[500];
    GlobalMessageManager::GetAllMessages(messages, sizeof messages);
    std::cout << messages;
}
