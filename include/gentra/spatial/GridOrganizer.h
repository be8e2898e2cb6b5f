// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SPATIAL_GRIDORGANIZER_H
#define GENTRA_SPATIAL_GRIDORGANIZER_H

#include "gentra/gentra_export.h"
#include "gentra/spatial/BoundingRect.h"
#include "gentra/spatial/SpatialOrganizer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Gentra {

/// A regular grid over the members' bounding rectangle, with about four members to a cell.
///
/// A query looks at the cells under the square around its circle. Members of cells that lie wholly inside the
/// circle, by the distance of the cell's centre, are taken as they were last sorted; members of cells that
/// the circle cuts are tested against their present positions. They come column by column, row by row within
/// a column, and in the order of the selection within a cell.
///
/// When all members have the same `x` or the same `z`, they are in cell (0, 0), which is judged by the extent
/// of one cell at the beginning of the line: a query farther from its centre than the radius and half its
/// diagonal finds nobody, and one that covers it all of them.
/// Members whose position is infinite do not stretch the grid and are sorted into its border; members whose
/// position is not a number are in no cell.
class GENTRA_EXPORT GridOrganizer final : public SpatialOrganizer {
public:
    /// See SpatialOrganizer. There are no cells before the first Rebuild().
    GridOrganizer(MemberSelection* newSelection, Context* newContext, Util::RefCountPtr<Property> newPositionProperty);

    void GetMembersInRadius(MemberSelection& result, Math::Vec3 const& centre, float radius, Member exclude) override;
    void Rebuild() override;
    void Refresh() override;

    /// The rectangle of the last Rebuild().
    [[nodiscard]] BoundingRect const& GetBounds() const noexcept { return bounds; }
    /// @{
    /// Columns along `x` and rows along `z`, 1 to 1000 each; 0 before the first Rebuild().
    [[nodiscard]] int GetColumns() const noexcept { return columns; }
    [[nodiscard]] int GetRows() const noexcept { return rows; }
    /// @}
    /// @{
    /// Extents of a cell along `x` and `z`, in world units.
    [[nodiscard]] float GetCellWidth() const noexcept { return cellWidth; }
    [[nodiscard]] float GetCellDepth() const noexcept { return cellDepth; }
    /// @}
    /// The members of a cell, counted from 0, as of the last Refresh(); none for a cell that does not exist.
    [[nodiscard]] std::span<Member const> GetCell(int column, int row) const noexcept;

private:
    friend class SpatialRelations;

    /// A point in the horizontal plane.
    struct Point {
        float x;
        float z;
    };
    struct Cell {
        int column;
        int row;
    };
    /// The members of all cells in one piece: column by column, row by row, in the order of the selection.
    struct Cells {
        std::vector<Member> members;
        std::vector<std::uint32_t> starts; ///< Where each cell begins, and an end. Empty when nothing is sorted.
        std::vector<std::uint32_t> cellOf; ///< Of each member of the selection; kept for its memory.
    };
    struct Query;

    [[nodiscard]] static Point PositionAt(unsigned char const* position) noexcept;
    [[nodiscard]] Point PositionOf(Member member) const noexcept;
    [[nodiscard]] Cell CellAt(Point point) const noexcept;
    [[nodiscard]] std::size_t IndexOf(Cell cell) const noexcept;
    template<class OnInside, class OnStraddling>
    void ForEachRun(Query const& query, OnInside const& onInside, OnStraddling const& onStraddling) const;
    void Prefetch(Query const& query) const noexcept;
    template<class OnFound>
    void Test(Member const* first, Member const* end, Query const& query, OnFound const& onFound);
    void Append(MemberSelection& result, Query const& query);
    void AppendToForeign(MemberSelection& result, MemberPool& pool, Query const& query);
    void ForgetMembers();
    /// Whether the members that were sorted are still there.
    [[nodiscard]] bool CanAnswer() const noexcept { return PoolOfSorted() != nullptr; }
    /// Gives the memory of the cells back; nobody is found until the next Refresh().
    void ReleaseMemory() noexcept { cells = Cells(); }

    BoundingRect bounds;
    Cells cells;
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    float cellWidth = 0.0f;
    float cellDepth = 0.0f;

    static std::array<Member, 256> found; ///< Scratch of the query that runs; dropped organizers need none.
};

} // namespace Gentra

#endif
