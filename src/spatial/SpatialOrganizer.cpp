// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/spatial/SpatialOrganizer.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelection.h"

namespace Gentra {

SpatialOrganizer::SpatialOrganizer(MemberSelection* newSelection, Context* newContext,
                                   Util::RefCountPtr<Property> newPositionProperty) {
    Organize(newSelection, newContext, newPositionProperty);
}

void SpatialOrganizer::Organize(MemberSelection* newSelection, Context* newContext,
                                Util::RefCountPtr<Property> newPositionProperty) {
    Util::WeakPtr<MemberSelection> const watched =
        newSelection != nullptr ? newSelection->Watch() : Util::WeakPtr<MemberSelection>();
    Util::RefCountPtr<Property> const formerProperty =
        positionProperty; // released last: it may run a host's destructor
    context = newContext;
    selection = watched;
    positionProperty = newPositionProperty.Get() != nullptr ? newPositionProperty : Property::NIL;
    positionOffset = positionProperty->GetDataOffset();
    refreshTimer = 0.0f;
    rebuildTimer = 0.0f;
    sortedGeneration = 0;
}

void SpatialOrganizer::Update(float refreshInterval, float rebuildInterval, float timeElapsed) {
    rebuildTimer += timeElapsed;
    refreshTimer += timeElapsed;
    if (rebuildTimer > rebuildInterval) {
        Rebuild();
        Refresh();
        rebuildTimer = 0.0f;
        refreshTimer = 0.0f;
    } else if (refreshTimer > refreshInterval) {
        Refresh();
        refreshTimer = 0.0f;
    }
}

MemberPool* SpatialOrganizer::PoolWithPositions() const noexcept {
    MemberSelection const* const organised = selection;
    MemberPool* const pool = organised != nullptr ? organised->GetBasePool() : nullptr;
    bool const isThere = pool != nullptr && positionOffset >= 0 && positionProperty->GetPropertyType() == VECTOR &&
                         pool->OffsetOf(*positionProperty) == positionOffset;
    return isThere ? pool : nullptr;
}

void SpatialOrganizer::BeginSorting(MemberPool const& pool) noexcept {
    sortedGeneration = pool.GetGeneration();
}

/// A clearing counts from its beginning, and no two pools have a generation in common.
MemberPool* SpatialOrganizer::PoolOfSorted() const noexcept {
    MemberSelection const* const organised = selection;
    MemberPool* const pool = organised != nullptr ? organised->GetBasePool() : nullptr;
    return pool != nullptr && pool->GetGeneration() == sortedGeneration ? pool : nullptr;
}

} // namespace Gentra
