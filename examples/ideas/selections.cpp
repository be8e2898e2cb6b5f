// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Selections: ordered lists of members of one pool, with a cursor that wraps around.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

int main() {
    MemberPool cows(ContextManager::GetMainContext());
    Util::RefCountPtr<ValueProperty> const number(new ValueProperty("Number"));
    cows.AddMemberProperty(number);
    for (; number->value < 6; number->value += 1) {
        cows.AddNewMember();
    }
    auto const numberOf = [&](Member cow) { return Datum::Read<float>(cow.record + number->GetDataOffset()); };

    MemberSelection herd(&cows);
    herd.AddMembers(cows, cows.GetAllMembers());
    herd.RemoveMemberByIndex(4); // from the herd: the cow is still in the pool
    herd.ActivateFirstMember();
    do {
        std::cout << numberOf(herd.ActiveMember()) << ' ';
        herd.ActivateNextMember();
    } while (!herd.FirstMemberActive());
    std::cout << "\n" << cows.GetNumMembers() << " in the pool, " << herd.GetNumMembers() << " in the herd\n";

    herd.ActivateLastMember();
    Member const last = herd.RemoveActiveMember();
    cows.RemoveMember(last); // out of every list that holds it first,
    cows.DeleteMember(last); // then the member itself
    std::cout << numberOf(herd.ActiveMember()) << " is active, " << cows.GetNumMembers() << " in the pool\n";
}
