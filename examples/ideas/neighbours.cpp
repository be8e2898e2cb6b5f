// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Space: a selection's organizer finds the members near a place.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

namespace {

/// Asks around the place at x = 80, and counts by looking at everybody.
void Compare(char const* what, SpatialOrganizer& organizer, MemberPool& pool) {
    constexpr float X = 80;
    constexpr float RADIUS = 15;
    MemberSelection found(&pool);
    organizer.GetMembersInRadius(found, {X, 0, 20}, RADIUS, Member::NIL);
    int count = 0;
    int const position = pool.GetDataOffsetFromPropertyName("Position");
    for (Member const each : pool.GetAllMembers()) {
        auto const at = Datum::Read<Math::Vec3>(each.record + position);
        float const x = at.x - X;
        float const z = at.z - 20;
        count += x * x + z * z < RADIUS * RADIUS ? 1 : 0;
    }
    std::cout << what << ": " << found.GetNumMembers() << " found of " << count << "\n";
}

} // namespace

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
    organizer.Rebuild(); // a layout for where the members are now,
    organizer.Refresh(); // and the members sorted into it
    near.Clear();
    organizer.GetMembersInRadius(near, {20, 0, 20}, 5, Member::NIL);
    std::cout << near.GetNumMembers() << " within 5 after one has moved there\n";

    // A layout of yesterday.
    moved = {80, 0, 20};
    for (int i = 0; i < 5; ++i) { // the first row goes far away
        position->SetDataToMemberSelection(&moved, trees, i);
    }
    organizer.Refresh();
    Compare("sorted into the former layout", organizer, trees);
    organizer.Rebuild();
    organizer.Refresh();
    Compare("into one of today", organizer, trees);

    // Members on a line.
    MemberPool alley(ContextManager::GetMainContext());
    alley.AddMemberProperty(position);
    for (int i = 0; i < 20; ++i) {
        position->vector = {10.0f * static_cast<float>(i), 0, 20};
        alley.AddNewMember();
    }
    SpatialOrganizer& ofAlley = ContextManager::GetMainContext().GetSpatialRelations().GetSpatialOrganizer(alley);
    Compare("on a line", ofAlley, alley);
    position->vector = {0, 0, 40}; // a post beside the line, just farther than anybody looks
    alley.AddNewMember();
    ofAlley.Rebuild();
    ofAlley.Refresh();
    Compare("with a post beside it", ofAlley, alley);
}
