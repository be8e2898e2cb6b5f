// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Paths: from a pool through selections that its members hold to a datum of a member of another pool, and as text.
#include "Builder.h"

#include <iostream>
#include <sstream>

using namespace Gentra;

int main() {
    MemberPool dogs(ContextManager::GetMainContext());
    MemberPool owners(ContextManager::GetMainContext());
    dogs.SetName("Dogs");
    owners.SetName("Owners");
    Util::RefCountPtr<ValueProperty> const age(new ValueProperty("Age"));
    Util::RefCountPtr<MemberSelectionProperty> const pets(new MemberSelectionProperty("Pets"));
    pets->SetBasePoolID(dogs.GetMemberPoolID());
    Builder const builder([&](MemberPool& pool) {
        pool.AddMemberProperty(&pool == &dogs ? Util::RefCountPtr<Property>(age) : Util::RefCountPtr<Property>(pets));
    });
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    for (age->value = 1; age->value < 6; age->value += 1) {
        dogs.AddNewMember();
    }
    owners.SetMemberCount(2);
    pets->GetMemberSelection(owners, 1)->AddMember(dogs, dogs.GetMemberByIndex(2));
    pets->GetMemberSelection(owners, 1)->AddMember(dogs, dogs.GetMemberByIndex(4));

    Path path;
    path.SetRootMemberPool(owners);
    path.AddRootingMemberSelectionBack(pets);
    path.SetDestinationProperty(age);
    Util::String name;
    path.GetPathName(name);
    std::stringstream text;
    path.SaveToStream(text);

    Path loaded;
    loaded.LoadFromStream(text);
    for (int pet = 0; pet < 3; ++pet) {
        loaded.ResolvePathIfNeccessary();
        loaded.GetIndicesForManipulation() = {1, pet}; // the second owner's
        void const* const datum = loaded.GetDestinationPropertyDataUsingIndices();
        std::cout << name << ", pet " << pet << ": ";
        datum != nullptr ? std::cout << Datum::Read<float>(datum) << "\n" : std::cout << "there is none\n";
    }
}
