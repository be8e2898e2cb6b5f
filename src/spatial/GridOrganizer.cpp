// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// All arithmetic is in single precision and in the order written here, so that every platform sorts a member
// into the same cell.

#include "gentra/spatial/GridOrganizer.h"

#include "../util/Prefetch.h"

#include "gentra/pools/MemberPool.h"
#include "gentra/properties/Datum.h"
#include "gentra/properties/MemberSelection.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Gentra {

namespace {

constexpr int MEMBERS_PER_CELL = 4;
constexpr int MOST_CELLS_IN_LINE = 1000;

/// From this size on the records that a query tests are mostly not in the nearest cache.
constexpr std::size_t PREFETCH_POPULATION = 50'000;

/// The cell of a place between 0 and `count`, cut down to the cells that exist. What is no number is in the
/// first one. Only a float that fits is converted.
int ClampedCell(float place, int count) noexcept {
    auto const last = static_cast<float>(count - 1);
    float const notBelow = place > 0.0f ? place : 0.0f;
    return static_cast<int>(notBelow < last ? notBelow : last);
}

/// The number of cells in a line for a wish that may be infinite or not a number.
int ClampedCount(float wish) noexcept {
    return 1 + ClampedCell(wish, MOST_CELLS_IN_LINE);
}

} // namespace

constinit std::array<Member, 256> GridOrganizer::found{};

/// One query, with what all its cells have in common.
struct GridOrganizer::Query {
    Point centre;
    float squaredRadius;
    Member exclude;
    Point fromOrigin;   ///< The centre as seen from the corner of the grid.
    float squaredInner; ///< Cells whose centre is nearer lie wholly inside the circle.
    float squaredOuter; ///< Cells whose centre is farther lie wholly outside.
    Cell first;
    Cell last;
};

GridOrganizer::GridOrganizer(MemberSelection* newSelection, Context* newContext,
                             Util::RefCountPtr<Property> newPositionProperty)
    : SpatialOrganizer(newSelection, newContext, newPositionProperty) {}

std::span<Member const> GridOrganizer::GetCell(int column, int row) const noexcept {
    if (column < 0 || column >= columns || row < 0 || row >= rows || cells.starts.empty()) {
        return {};
    }
    std::size_t const cell = IndexOf({column, row});
    return {cells.members.data() + cells.starts[cell], cells.members.data() + cells.starts[cell + 1]};
}

/// Also of the cell behind the last one of its column, which is the first of the next.
std::size_t GridOrganizer::IndexOf(Cell cell) const noexcept {
    assert(cell.column >= 0 && cell.column <= columns && cell.row >= 0 && cell.row <= rows);
    return static_cast<std::size_t>(cell.column) * static_cast<std::size_t>(rows) + static_cast<std::size_t>(cell.row);
}

/// Reads the two floats one by one: copying the vector would take them through memory.
GridOrganizer::Point GridOrganizer::PositionAt(unsigned char const* position) noexcept {
    return {Datum::Read<float>(position + offsetof(Math::Vec3, x)),
            Datum::Read<float>(position + offsetof(Math::Vec3, z))};
}

/// Not a number for Member::NIL, so that it is in no cell.
GridOrganizer::Point GridOrganizer::PositionOf(Member member) const noexcept {
    constexpr float NOWHERE = std::numeric_limits<float>::quiet_NaN();
    return member.IsValid() ? PositionAt(member.record + positionOffset) : Point{NOWHERE, NOWHERE};
}

GridOrganizer::Cell GridOrganizer::CellAt(Point point) const noexcept {
    auto const [u, v] = bounds.Normalize(point.x, point.z);
    return {ClampedCell(u * static_cast<float>(columns), columns), ClampedCell(v * static_cast<float>(rows), rows)};
}

// The layout.

void GridOrganizer::Rebuild() {
    bounds.Reset();
    std::size_t count = 0;
    if (PoolWithPositions() != nullptr) {
        std::vector<Member> const& members = selection->GetAllMembers();
        count = members.size();
        for (Member const member : members) {
            Point const position = PositionOf(member);
            if (std::isfinite(position.x) && std::isfinite(position.z)) {
                bounds.Extend(position.x, position.z);
            }
        }
    }
    auto const wholeCells = count / MEMBERS_PER_CELL;
    auto const target = static_cast<float>(wholeCells);
    float const width = bounds.maxX - bounds.minX;
    float const depth = bounds.maxZ - bounds.minZ;
    float const aspect = width / depth;
    bool const isLine = width == 0.0f || depth == 0.0f;
    rows = isLine ? 1 : ClampedCount(std::sqrt(target / aspect));
    columns = ClampedCount(target / static_cast<float>(rows));
    cellWidth = width / static_cast<float>(columns);
    cellDepth = depth / static_cast<float>(rows);
    ForgetMembers();
}

void GridOrganizer::ForgetMembers() {
    cells.members.clear();
    cells.starts.clear();
}

/// A counting sort: stable, so that members keep their order within a cell.
void GridOrganizer::Refresh() {
    ForgetMembers();
    MemberPool const* const pool = PoolWithPositions();
    if (pool == nullptr || columns == 0) {
        return;
    }
    BeginSorting(*pool);
    std::vector<Member> const& members = selection->GetAllMembers();
    // One more cell, behind the others, takes those that are nowhere. The counts are kept two places further
    // on, so that after the sums each start stands one place further on, and moves to its place while the
    // members before it are put down.
    std::size_t const nowhere = IndexOf({columns, 0});
    std::vector<std::uint32_t>& starts = cells.starts;
    cells.cellOf.resize(members.size());
    cells.members.resize(members.size());
    starts.assign(nowhere + 3, 0); // last: while it is empty nothing counts as sorted, should memory run out
    for (std::size_t i = 0; i < members.size(); ++i) {
        Point const position = PositionOf(members[i]);
        std::size_t const cell = IndexOf(CellAt(position));
        bool const isSomewhere = !std::isnan(position.x) && !std::isnan(position.z);
        cells.cellOf[i] = static_cast<std::uint32_t>(isSomewhere ? cell : nowhere);
        ++starts[cells.cellOf[i] + 2];
    }
    for (std::size_t cell = 2; cell < starts.size(); ++cell) {
        starts[cell] += starts[cell - 1];
    }
    assert(starts.back() == members.size());
    for (std::size_t i = 0; i < members.size(); ++i) {
        cells.members[starts[cells.cellOf[i] + 1]++] = members[i];
    }
}

// Queries.

void GridOrganizer::GetMembersInRadius(MemberSelection& result, Math::Vec3 const& centre, float radius,
                                       Member exclude) {
    MemberPool* const pool = PoolOfSorted();
    if (pool == nullptr || cells.starts.empty() || !(radius > 0.0f)) {
        return;
    }
    float const x = centre.x;
    float const z = centre.z;
    float const half = 0.5f * std::sqrt(cellWidth * cellWidth + cellDepth * cellDepth);
    float const outer = radius + half;
    float const inner = radius - half < 0.0f ? 0.0f : radius - half;
    Query const query{{x, z},
                      radius * radius,
                      exclude,
                      {x - bounds.minX, z - bounds.minZ},
                      inner * inner,
                      outer * outer,
                      CellAt({x - radius, z - radius}),
                      CellAt({x + radius, z + radius})};
    if (result.GetBasePool() == pool) {
        Append(result, query);
    } else {
        AppendToForeign(result, *pool, query);
    }
}

/// Calls `onInside` or `onStraddling` with a first member and an end for the members of consecutive cells
/// that lie wholly inside the circle or that it cuts.
template<class OnInside, class OnStraddling>
void GridOrganizer::ForEachRun(Query const& query, OnInside const& onInside, OnStraddling const& onStraddling) const {
    enum Kind { INSIDE, STRADDLING, OUTSIDE };
    assert(query.last.column < columns && query.last.row < rows);
    Member const* const members = cells.members.data();
    for (int column = query.first.column; column <= query.last.column; ++column) {
        float const fromColumn = cellWidth * (static_cast<float>(column) + 0.5f) - query.fromOrigin.x;
        float const squaredFromColumn = fromColumn * fromColumn;
        auto const kindOf = [&](int row) {
            float const fromRow = cellDepth * (static_cast<float>(row) + 0.5f) - query.fromOrigin.z;
            float const squaredDistance = squaredFromColumn + fromRow * fromRow;
            if (squaredDistance < query.squaredInner) {
                return INSIDE;
            }
            // Where the distance overflows to what is no number, the members are tested.
            return squaredDistance > query.squaredOuter ? OUTSIDE : STRADDLING;
        };
        std::uint32_t const* const starts = cells.starts.data() + IndexOf({column, 0});
        for (int row = query.first.row; row <= query.last.row;) {
            Kind const kind = kindOf(row);
            int const firstRow = row;
            do {
                ++row;
            } while (row <= query.last.row && kindOf(row) == kind);
            Member const* const first = members + starts[firstRow];
            Member const* const end = members + starts[row];
            assert(first <= end && end <= members + cells.members.size());
            if (kind == INSIDE) {
                onInside(first, end);
            } else if (kind == STRADDLING) {
                onStraddling(first, end);
            }
        }
    }
}

/// Tests members without a branch on the outcome, which nobody can predict.
template<class OnFound>
void GridOrganizer::Test(Member const* first, Member const* end, Query const& query, OnFound const& onFound) {
    // Copies, which cannot change while members are written down.
    Point const centre = query.centre;
    float const squaredRadius = query.squaredRadius;
    Member const exclude = query.exclude;
    std::ptrdiff_t const offset = positionOffset;
    Member* const scratch = found.data();
    while (first != end) {
        Member const* const stop = first + std::min(end - first, static_cast<std::ptrdiff_t>(found.size()));
        std::size_t count = 0;
        for (; first != stop; ++first) {
            Member const member = *first;
            Point const position = PositionAt(member.record + offset);
            float const x = centre.x - position.x;
            float const z = centre.z - position.z;
            bool const isNear = x * x + z * z < squaredRadius;
            scratch[count] = member;
            count += static_cast<std::size_t>(isNear & (member != exclude));
        }
        onFound(scratch, count);
    }
}

void GridOrganizer::Append(MemberSelection& result, Query const& query) {
    if (cells.members.size() >= PREFETCH_POPULATION) {
        Prefetch(query);
    }
    auto const append = [&result](Member const* first, std::size_t count) { result.AppendRange(first, count); };
    ForEachRun(
        query,
        [&](Member const* first, Member const* end) {
            // A member may be listed more than once, also the excluded one.
            Member const* from = first;
            for (Member const* each = first; query.exclude.IsValid() && each != end; ++each) {
                if (*each == query.exclude) {
                    append(from, static_cast<std::size_t>(each - from));
                    from = each + 1;
                }
            }
            append(from, static_cast<std::size_t>(end - from));
        },
        [&](Member const* first, Member const* end) { Test(first, end, query, append); });
}

/// Adds nothing, but the first member that would be added is reported, unless whole cells are added at once.
void GridOrganizer::AppendToForeign(MemberSelection& result, MemberPool& pool, Query const& query) {
    auto const report = [&](Member const* first, std::size_t count) {
        if (count > 0) {
            result.AddMember(pool, *first);
        }
    };
    ForEachRun(
        query,
        [&](Member const* first, Member const* end) {
            if (query.exclude.IsValid()) {
                auto const isOther = [&](Member member) { return member != query.exclude; };
                report(first, static_cast<std::size_t>(std::count_if(first, end, isOther)));
            }
        },
        [&](Member const* first, Member const* end) { Test(first, end, query, report); });
}

/// Three steps, each of which needs what the one before has fetched: where the cells begin, their members, and
/// the positions of those that will be tested.
void GridOrganizer::Prefetch(Query const& query) const noexcept {
    std::uint32_t const* const starts = cells.starts.data();
    for (int column = query.first.column; column <= query.last.column; ++column) {
        Util::PrefetchForReading(starts + IndexOf({column, query.first.row}));
    }
    for (int column = query.first.column; column <= query.last.column; ++column) {
        Util::PrefetchForReading(cells.members.data() + starts[IndexOf({column, query.first.row})]);
        Util::PrefetchForReading(cells.members.data() + starts[IndexOf({column, query.last.row + 1})]);
    }
    ForEachRun(
        query, [](Member const*, Member const*) {},
        [offset = positionOffset](Member const* first, Member const* end) {
            for (; first != end; ++first) {
                unsigned char const* const position = first->record + offset;
                Util::PrefetchForReading(position + offsetof(Math::Vec3, x));
                Util::PrefetchForReading(position + offsetof(Math::Vec3, z)); // perhaps in the next line
            }
        });
}

} // namespace Gentra
