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
/// organizer sorts the members once, and again only when it is told to (Update(), Rebuild(), Refresh()). In
/// between it knows nobody who has come, still knows who was deleted (whose record may by then be another
/// member's), and may take members for where they were when they were sorted.
///
/// Whenever members are sorted the selection must list none that has gone with a clearing of its pool. Without a
/// position to read (the pool's records have no vector of the position property where it was at first) nobody is
/// sorted. Nobody is found when the selection has gone or has another pool, or when the pool has been cleared, since
/// the members were sorted. No record is read then.
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

    /// Appends to `result` the members nearer than `radius` (in world units) to `centre`, but for `exclude`;
    /// Member::NIL excludes nobody. Nobody is nearer than a radius of 0 or less. `result` is not cleared first and
    /// must have the same base pool: otherwise nothing is added, see MemberSelection::AddMember. Allocates
    /// nothing once `result` has held as many members.
    virtual void GetMembersInRadius(MemberSelection& result, Math::Vec3 const& centre, float radius,
                                    Member exclude) = 0;
    /// Adds `timeElapsed` to the times since the last rebuild and refresh. When the former is then longer
    /// than `rebuildInterval` rebuilds and refreshes, else refreshes when the latter is longer than
    /// `refreshInterval`. All in seconds; with an interval of 0 each call with a positive time acts. Every call
    /// counts: of several behaviours that use one organizer, let one do it.
    virtual void Update(float refreshInterval, float rebuildInterval, float timeElapsed);
    /// Makes a layout for the present positions of the members. Call Refresh() next.
    virtual void Rebuild() = 0;
    /// Sorts the members into the layout.
    virtual void Refresh() = 0;

    /// The organised selection, or null when it has gone.
    [[nodiscard]] MemberSelection* GetSelection() const noexcept { return selection.Get(); }
    /// The one given at construction.
    [[nodiscard]] Context* GetContext() const noexcept { return context; }

protected:
    ~SpatialOrganizer() = default;

    /// Begins anew, as if it had just been made for that selection.
    void Organize(MemberSelection* newSelection, Context* newContext, Util::RefCountPtr<Property> newPositionProperty);
    /// The pool of the members, if their records have a position to read now; else null.
    [[nodiscard]] MemberPool* PoolWithPositions() const noexcept;
    /// Notes whose members are being sorted.
    void BeginSorting(MemberPool const& pool) noexcept;
    /// The pool of the members that were sorted, if they are still there; else null.
    [[nodiscard]] MemberPool* PoolOfSorted() const noexcept;

    Context* context = nullptr;                                   ///< Not owned.
    Util::WeakPtr<MemberSelection> selection;                     ///< Null again when the selection is destroyed.
    Util::RefCountPtr<Property> positionProperty = Property::NIL; ///< Never a null pointer.
    std::int32_t positionOffset = -1; ///< In the member record, in bytes, as of the construction.
    float refreshTimer = 0.0f;        ///< Seconds since the last refresh, as Update() was told.
    float rebuildTimer = 0.0f;        ///< Seconds since the last rebuild.

private:
    std::uint64_t sortedGeneration = 0; ///< Of the pool when its members were sorted; 0 for none.
};

} // namespace Gentra

#endif
