// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Records: data lie end to end in the order of addition, without gaps, so not every address is aligned.
#include <gentra/gentra.h>

#include <cstdint>
#include <iostream>

using namespace Gentra;

int main() {
    MemberPool phones(ContextManager::GetMainContext());
    phones.AddMemberProperty(new FixedSizeDataProperty("Country", 2, nullptr)); // two bytes shift all that follows
    phones.AddMemberProperty(new ValueProperty("Charge"));
    phones.AddMemberProperty(new VectorProperty("Position"));
    phones.AddMemberProperty(new FixedSizeDataProperty("Flags", 1, nullptr));
    phones.AddMemberProperty(new ValueProperty("Signal"));
    phones.SetMemberCount(2);

    for (auto const& property : phones.GetAllMemberProperties()) {
        std::cout << property->GetName() << ": " << property->GetDataSize() << " bytes at " << property->GetDataOffset()
                  << "\n";
    }

    // A reference to such a float would be undefined. Datum reads and writes at any address.
    int const signal = phones.GetDataOffsetFromPropertyName("Signal");
    for (Member const phone : phones.GetAllMembers()) {
        Datum::Write(phone.record + signal, Datum::Read<float>(phone.record + signal) + 0.75f);
    }
    std::cout << "the signal is " << Datum::Read<float>(phones.GetDataFromMember(1, 4)) << "\n";

    // With sizes that are all multiples of 4 everything is aligned, in every record, and references are safe.
    MemberPool aligned(ContextManager::GetMainContext());
    for (char const* const name : {"Charge", "Signal"}) {
        aligned.AddMemberProperty(new ValueProperty(name));
    }
    aligned.AddMemberProperty(new FixedSizeDataProperty("Rest", 4, nullptr)); // two bytes, a flag and one to fill up
    aligned.SetMemberCount(3);
    bool areAligned = true;
    for (Member const phone : aligned.GetAllMembers()) {
        areAligned = areAligned && reinterpret_cast<std::uintptr_t>(phone.record) % alignof(float) == 0;
    }
    std::cout << (areAligned ? "all records are aligned\n" : "some records are not aligned\n");
}
