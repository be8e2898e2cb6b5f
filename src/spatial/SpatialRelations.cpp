// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/spatial/SpatialRelations.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/properties/Property.h"
#include "gentra/spatial/GridOrganizer.h"

#include <algorithm>

namespace Gentra {

SpatialRelations::SpatialRelations(Context& newContext) : context(&newContext) {}

SpatialOrganizer& SpatialRelations::GetSpatialOrganizer(MemberSelection& selection) {
    auto const found = organizers.find(&selection);
    if (found == organizers.end()) {
        return *organizers.emplace(&selection, MakeOrganizer(selection)).first->second;
    }
    if (found->second->GetSelection() != &selection) { // but one that had the same address
        OrganizerPtr const organizer = MakeOrganizer(selection);
        dropped.push_back(found->second);
        found->second->ReleaseMemory();
        found->second = organizer;
    }
    return *found->second;
}

SpatialRelations::OrganizerPtr SpatialRelations::MakeOrganizer(MemberSelection& selection) const {
    MemberPool const* const pool = selection.GetBasePool();
    auto organizer = std::make_shared<GridOrganizer>(
        &selection, context, pool != nullptr ? pool->GetPropertyFromName("Position") : Property::NIL);
    organizer->Rebuild();
    organizer->Refresh();
    return organizer;
}

void SpatialRelations::Reset() {
    auto const unreleased = dropped.begin() + static_cast<std::ptrdiff_t>(released);
    auto const answering = std::partition(unreleased, dropped.end(),
                                          [](OrganizerPtr const& organizer) { return !organizer->CanAnswer(); });
    for (auto organizer = unreleased; organizer != answering; ++organizer) {
        (*organizer)->ReleaseMemory();
    }
    released = static_cast<std::size_t>(answering - dropped.begin());
    dropped.reserve(dropped.size() + organizers.size());
    for (auto const& entry : organizers) {
        dropped.push_back(entry.second);
    }
    organizers.clear();
}

} // namespace Gentra
