// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/spatial/SpatialRelations.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/properties/Property.h"
#include "gentra/spatial/GridOrganizer.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace Gentra {

SpatialRelations::SpatialRelations(Context& newContext) : context(&newContext) {}

SpatialOrganizer& SpatialRelations::GetSpatialOrganizer(MemberSelection& selection) {
    auto found = organizers.find(&selection);
    if (found == organizers.end()) {
        if (organizers.size() >= collectAt) {
            CollectIdle();
        }
        found = organizers.try_emplace(&selection).first;
    }
    Organizers& own = found->second;
    if (own.isFresh && own.current->GetSelection() == &selection) {
        return *own.current;
    }
    if (own.isFresh) { // for another selection, which had the same address
        own.isFresh = false;
        own.current.swap(own.former);
    }
    MemberPool const* const pool = selection.GetBasePool();
    Util::RefCountPtr<Property> const position =
        pool != nullptr ? pool->GetPropertyFromName("Position") : Property::NIL;
    if (own.current == nullptr && !idle.empty()) {
        own.current = idle.back();
        idle.pop_back();
    }
    if (own.current == nullptr) {
        own.current = std::make_shared<GridOrganizer>(&selection, context, position);
    } else {
        own.current->Organize(&selection, context, position);
    }
    own.current->Rebuild();
    own.current->Refresh();
    own.isFresh = true;
    assert(own.current != own.former);
    return *own.current;
}

/// Takes the organizers of selections that have gone for others to come.
void SpatialRelations::CollectIdle() {
    idle.reserve(idle.size() + 2 * organizers.size());
    for (auto entry = organizers.begin(); entry != organizers.end();) {
        OrganizerPtr const both[] = {entry->second.current, entry->second.former};
        bool const isAlive = std::any_of(std::begin(both), std::end(both), [](OrganizerPtr const& each) {
            return each != nullptr && each->GetSelection() != nullptr;
        });
        if (isAlive) {
            ++entry;
            continue;
        }
        for (OrganizerPtr const& each : both) {
            if (each != nullptr) {
                each->ReleaseMemory();
                idle.push_back(each);
            }
        }
        entry = organizers.erase(entry);
    }
    collectAt = 2 * organizers.size() + 16;
}

void SpatialRelations::Reset() {
    for (auto& entry : organizers) {
        Organizers& own = entry.second;
        if (!own.isFresh) { // not asked for since the last pass
            continue;
        }
        own.isFresh = false;
        own.current.swap(own.former);
        if (own.current != nullptr && !own.current->CanAnswer()) {
            own.current->ReleaseMemory();
        }
    }
}

} // namespace Gentra
