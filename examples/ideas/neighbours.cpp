// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Space: a selection's organizer finds the members near a place.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

int main() {
    MemberPool trees(ContextManager::GetMainContext());
    Util::RefCountPtr<VectorProperty> const position(
        new VectorProperty("Position")); // the name that organizers look for
    trees.AddMemberProperty(position);
    for (int i = 0; i < 25; ++i) { // five rows of five, 10 apart
        position->vector = {10.0f * static_cast<float>(i % 5), 0, 10.0f * static_cast<float>(i / 5)};
        trees.AddNewMember();
    }

    SpatialOrganizer& organizer = ContextManager::GetMainContext().GetSpatialRelations().GetSpatialOrganizer(trees);
    MemberSelection near(&trees);
    for (float const radius : {5.0f, 10.5f, 15.0f}) {
        near.Clear();
        Member const middle = trees.GetMemberByIndex(12);
        organizer.GetMembersInRadius(near, {20, 0, 20}, radius, middle); // but the one in the middle
        std::cout << near.GetNumMembers() << " within " << radius << "\n";
    }

    Math::Vec3 moved(22, 0, 21);
    position->SetDataToMemberSelection(&moved, trees, 0);
    near.Clear();
    organizer.Refresh(); // sorts the members by where they are now
    organizer.GetMembersInRadius(near, {20, 0, 20}, 5, Member::NIL);
    std::cout << near.GetNumMembers() << " within 5 after one has moved there\n";
}
