// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/spatial/SpatialOrganizer.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelection.h"

namespace Gentra {

SpatialOrganizer::SpatialOrganizer(MemberSelection* newSelection, Context* newContext,
                                   Util::RefCountPtr<Property> newPositionProperty)
    : context(newContext),
      selection(newSelection != nullptr ? newSelection->Watch() : Util::WeakPtr<MemberSelection>()),
      positionProperty(newPositionProperty.Get() != nullptr ? newPositionProperty : Property::NIL),
      positionOffset(positionProperty->GetDataOffset()),
      isVector(positionProperty->GetPropertyType() == VECTOR &&
               positionProperty->GetDataSize() >= static_cast<int>(sizeof(Math::Vec3))) {}

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

/// A property that has left the pool, or moved in it, does not tell where the records have their positions.
MemberPool* SpatialOrganizer::PoolWithPositions() const noexcept {
    MemberSelection const* const organised = selection;
    MemberPool* const pool = organised != nullptr ? organised->GetBasePool() : nullptr;
    bool const isThere = pool != nullptr && isVector && positionProperty->GetPropertyOwner() == MEMBER &&
                         positionProperty->GetOwnerPool() == pool && positionOffset >= 0 &&
                         positionProperty->GetDataOffset() == positionOffset;
    return isThere ? pool : nullptr;
}

unsigned int SpatialOrganizer::TimesCleared(MemberPool const& pool) noexcept {
    return pool.timesCleared;
}

} // namespace Gentra
