// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SPATIAL_SPATIALORGANIZER_H
#define GENTRA_SPATIAL_SPATIALORGANIZER_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Member.h"
#include "gentra/properties/Property.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/Vec3.h"
#include "gentra/util/WeakPtr.h"

#include <cstdint>

namespace Gentra {

class Context;
class MemberPool;
class MemberSelection;

/// Answers which members of one selection are near a point, in the horizontal plane of `x` and `z`; `y` does
/// not count.
///
/// SpatialRelations makes the organizers; behaviours reach them by Behaviour::GetSpatialOrganizer(). An
/// organizer sorts the members once, and again only when it is told to (Update(), Rebuild(), Refresh()); in
/// between it answers by what it knows.
///
/// The selection must outlive it, and where the library sees that the selection has gone, that its pool has
/// been cleared since the members were sorted, or that the pool has no member property "Position" of the
/// type VECTOR where it was at first, the organizer finds nobody and reads no record.
class GENTRA_EXPORT SpatialOrganizer {
public:
    /// `newPositionProperty` is the position of the members of the selection's base pool. Nothing is sorted
    /// yet. The selection and the context are not owned; the selection may be null.
    SpatialOrganizer(MemberSelection* newSelection, Context* newContext,
                     Util::RefCountPtr<Property> newPositionProperty);
    SpatialOrganizer(SpatialOrganizer const&) = delete;
    SpatialOrganizer& operator=(SpatialOrganizer const&) = delete;

    // Virtual operations in slot order; compiled plug-ins depend on it. There is no virtual destructor: the
    // spatial relations destroy an organizer as what they created it as.

    /// Appends to `result` the members within `radius` (in world units) of `centre`, but for `exclude`;
    /// Member::NIL excludes nobody. Nothing is within a radius of 0 or less. `result` is not cleared first and
    /// must have the same base pool: otherwise nothing is added, see MemberSelection::AddMember. Allocates
    /// nothing once `result` has held as many members.
    virtual void GetMembersInRadius(MemberSelection& result, Math::Vec3 const& centre, float radius,
                                    Member exclude) = 0;
    /// Adds `timeElapsed` to the times since the last rebuild and refresh. When the former is then longer
    /// than `rebuildInterval` rebuilds and refreshes, else refreshes when the latter is longer than
    /// `refreshInterval`. All in seconds; with an interval of 0 each call with a positive time acts.
    virtual void Update(float refreshInterval, float rebuildInterval, float timeElapsed);
    /// Makes a layout for the present positions of the members. Call Refresh() next.
    virtual void Rebuild() = 0;
    /// Sorts the members into the layout.
    virtual void Refresh() = 0;

    /// The organised selection, or null when it has gone.
    [[nodiscard]] MemberSelection* GetSelection() const noexcept { return selection.Get(); }
    [[nodiscard]] Context* GetContext() const noexcept { return context; }

protected:
    ~SpatialOrganizer() = default;

    /// The pool whose records have a position to read; null when there is none.
    [[nodiscard]] MemberPool* PoolWithPositions() const noexcept;
    /// How often that pool has been cleared: members that were known before are gone then.
    [[nodiscard]] static unsigned int TimesCleared(MemberPool const& pool) noexcept;

    Context* context;                             ///< Not owned.
    Util::WeakPtr<MemberSelection> selection;     ///< Null again when the selection is destroyed.
    Util::RefCountPtr<Property> positionProperty; ///< Never a null pointer.
    std::int32_t positionOffset;                  ///< In the member record, in bytes, as of the construction.
    float refreshTimer = 0.0f;                    ///< Seconds since the last refresh, as Update() was told.
    float rebuildTimer = 0.0f;                    ///< Seconds since the last rebuild.

private:
    bool isVector; ///< Whether the property is one whose data is a Math::Vec3.
};

} // namespace Gentra

#endif
