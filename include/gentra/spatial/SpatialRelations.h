// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SPATIAL_SPATIALRELATIONS_H
#define GENTRA_SPATIAL_SPATIALRELATIONS_H

namespace Gentra {

class Context;

/// The spatial organizers of one context, at most one per selection. There are no kinds of organizers yet.
class SpatialRelations {
public:
    explicit SpatialRelations(Context& newContext) noexcept : context(&newContext) {}

    /// Drops all organizers, so that they are made afresh for the layouts that a construct pass is about to
    /// change. The context calls it at the start of each pass.
    void Reset() noexcept {}

private:
    [[maybe_unused]] Context* context; ///< Not owned.
};

} // namespace Gentra

#endif
