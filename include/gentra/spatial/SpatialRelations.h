// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SPATIAL_SPATIALRELATIONS_H
#define GENTRA_SPATIAL_SPATIALRELATIONS_H

#include "gentra/gentra_export.h"

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Gentra {

class Context;
class GridOrganizer;
class MemberSelection;
class SpatialOrganizer;

/// The spatial organizers of one context, at most one per selection.
///
/// A copy shares the organizers that exist, and these name the context that they were made for.
class GENTRA_EXPORT SpatialRelations {
public:
    /// No organizers yet. `newContext` is what the organizers are told as theirs.
    explicit SpatialRelations(Context& newContext);

    /// The organizer of that selection; on the first request makes one, by the property "Position" of the
    /// selection's base pool, and sorts the members. A selection that has taken the address of one that has
    /// gone gets one of its own.
    ///
    /// The reference stays usable as long as the spatial relations. Call it again after each construct pass all the
    /// same: when the pass has built the pool, the old organizer finds nobody, until after another pass it serves its
    /// selection anew. One that was asked for before its pool got the property finds nobody until the next pass. Once
    /// its selection has gone, an organizer may come to serve another one.
    [[nodiscard]] SpatialOrganizer& GetSpatialOrganizer(MemberSelection& selection);

    /// Drops all organizers, so that they are made afresh for the layouts that a construct pass is about to
    /// change. The context calls it at the start of each pass.
    ///
    /// Of those that were dropped by the pass before, the ones that cannot find anybody any more give back the memory
    /// of their cells.
    void Reset();

private:
    using OrganizerPtr = std::shared_ptr<GridOrganizer>; // it destroys an organizer as what it was made as

    /// Two for a selection, in turn: behaviours may still hold a reference to the one that the last pass has dropped.
    struct Organizers {
        OrganizerPtr current;
        OrganizerPtr former;
        bool isFresh = false; ///< Whether `current` was made since the last pass.
    };

    void CollectIdle();

    std::unordered_map<MemberSelection*, Organizers> organizers; ///< By the selection's address.
    Context* context;                                            ///< Not owned.
    std::vector<OrganizerPtr> idle;                              ///< Their selections have gone.
    std::size_t collectAt = 16;                                  ///< The number of organizers to look for such ones at.
};

} // namespace Gentra

#endif
