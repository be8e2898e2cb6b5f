// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Neighbour queries: the grid against a kd-tree (nanoflann), an R-tree (Boost.Geometry) and its own floor, a
// hand-written grid of the same rule that tests copies of the positions.

#include "RatioTable.h"

#include <gentra/gentra.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <nanoflann.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <random>

namespace {

using namespace Gentra;
using Math::Vec3;

enum Kind { UNIFORM, CLUSTERED };

/// Members in random order of place, on average one to a unit of area.
struct Crowd {
    Crowd(Kind kind, std::size_t count) : pool(ContextManager::GetMainContext()) {
        auto const position = Util::RefCountPtr<VectorProperty>(new VectorProperty("Position"));
        pool.AddMemberProperty(position);
        pool.AddMemberProperty(Util::RefCountPtr<VectorProperty>(new VectorProperty("Velocity")));
        pool.AddMemberProperty(Util::RefCountPtr<ValueProperty>(new ValueProperty("Mood")));
        offset = position->GetDataOffset();
        pool.SetMemberCount(static_cast<int>(count));
        members = pool.GetAllMembers();

        std::mt19937 random(7);
        float const side = std::sqrt(static_cast<float>(count));
        std::uniform_real_distribution<float> anywhere(0, side);
        std::normal_distribution<float> aside(0, 4);
        std::vector<Vec3> centres(count / 200 + 1);
        for (Vec3& centre : centres) {
            centre = {anywhere(random), 0, anywhere(random)};
        }
        for (Member const member : members) {
            Vec3 at(anywhere(random), 0, anywhere(random));
            if (kind == CLUSTERED) {
                at = centres[random() % centres.size()];
                at.x += aside(random);
                at.z += aside(random);
            }
            Datum::Write(member.record + offset, at);
        }
        grid = &dynamic_cast<GridOrganizer&>(
            ContextManager::GetMainContext().GetSpatialRelations().GetSpatialOrganizer(pool));
    }

    [[nodiscard]] Vec3 At(Member member) const { return Datum::Read<Vec3>(member.record + offset); }
    /// Whose neighbours are asked for: everybody's, in large crowds those of 100,000 members.
    [[nodiscard]] std::size_t QueryCount() const { return std::min<std::size_t>(members.size(), 100'000); }

    MemberPool pool;
    std::vector<Member> members;
    int offset;
    GridOrganizer* grid;
};

/// The crowd of that kind and size, made once.
Crowd& CrowdOf(Kind kind, std::size_t count) {
    static std::map<std::pair<Kind, std::size_t>, std::unique_ptr<Crowd>> crowds;
    std::unique_ptr<Crowd>& crowd = crowds[{kind, count}];
    if (crowd == nullptr) {
        crowd = std::make_unique<Crowd>(kind, count);
    }
    return *crowd;
}

/// The radius at which members have that many neighbours on average, found by halving.
float RadiusFor(Kind kind, std::size_t count, int neighbours) {
    static std::map<std::tuple<Kind, std::size_t, int>, float> radii;
    float& radius = radii[{kind, count, neighbours}];
    if (radius > 0) {
        return radius;
    }
    Crowd& crowd = CrowdOf(kind, count);
    MemberSelection result(&crowd.pool);
    float low = 0;
    float high = 20;
    for (int step = 0; step < 20; ++step) {
        radius = 0.5f * (low + high);
        result.Clear();
        for (std::size_t i = 0; i < 1000; ++i) {
            crowd.grid->GetMembersInRadius(result, crowd.At(crowd.members[i]), radius, Member::NIL);
        }
        (result.GetNumMembers() < 1000 * neighbours ? low : high) = radius;
    }
    return radius;
}

/// The floor: what is left of the grid when nobody moves and nobody asks amiss.
class HandGrid {
public:
    explicit HandGrid(Crowd const& crowd) {
        minX = minZ = 1e30f;
        float maxX = -1e30f;
        float maxZ = -1e30f;
        for (Member const member : crowd.members) {
            Vec3 const at = crowd.At(member);
            minX = std::min(minX, at.x), maxX = std::max(maxX, at.x);
            minZ = std::min(minZ, at.z), maxZ = std::max(maxZ, at.z);
        }
        auto const target = static_cast<float>(crowd.members.size() / 4);
        rows = 1 + static_cast<int>(std::sqrt(target / ((maxX - minX) / (maxZ - minZ))));
        columns = 1 + static_cast<int>(target / static_cast<float>(rows));
        rows = std::min(rows, 1000);
        columns = std::min(columns, 1000);
        width = (maxX - minX) / static_cast<float>(columns);
        depth = (maxZ - minZ) / static_cast<float>(rows);
        std::vector<std::vector<Entry>> lists(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
        for (Member const member : crowd.members) {
            Vec3 const at = crowd.At(member);
            lists[Index(Column(at.x), Row(at.z))].push_back({at.x, at.z, member});
        }
        for (std::vector<Entry> const& list : lists) {
            starts.push_back(entries.size());
            entries.insert(entries.end(), list.begin(), list.end());
        }
        starts.push_back(entries.size());
    }

    void Find(std::vector<Member>& result, float x, float z, float radius) const {
        float const half = 0.5f * std::sqrt(width * width + depth * depth);
        float const inner = std::max(radius - half, 0.0f);
        float const outer = radius + half;
        int const lastColumn = Column(x + radius);
        int const firstRow = Row(z - radius);
        int const lastRow = Row(z + radius);
        for (int column = Column(x - radius); column <= lastColumn; ++column) {
            float const dx = width * (static_cast<float>(column) + 0.5f) - (x - minX);
            for (int row = firstRow; row <= lastRow; ++row) {
                float const dz = depth * (static_cast<float>(row) + 0.5f) - (z - minZ);
                float const distance = dx * dx + dz * dz;
                std::size_t const cell = Index(column, row);
                std::size_t const size = result.size();
                std::size_t const first = starts[cell];
                std::size_t const end = starts[cell + 1];
                if (distance < inner * inner) {
                    result.resize(size + end - first);
                    for (std::size_t i = first; i < end; ++i) {
                        result[size + i - first] = entries[i].member;
                    }
                } else if (distance <= outer * outer) {
                    result.resize(size + end - first);
                    std::size_t count = size;
                    for (std::size_t i = first; i < end; ++i) {
                        float const ex = x - entries[i].x;
                        float const ez = z - entries[i].z;
                        result[count] = entries[i].member;
                        count += ex * ex + ez * ez < radius * radius ? 1 : 0;
                    }
                    result.resize(count);
                }
            }
        }
    }

private:
    struct Entry {
        float x, z;
        Member member;
    };
    [[nodiscard]] int Column(float x) const { return std::clamp(static_cast<int>((x - minX) / width), 0, columns - 1); }
    [[nodiscard]] int Row(float z) const { return std::clamp(static_cast<int>((z - minZ) / depth), 0, rows - 1); }
    [[nodiscard]] std::size_t Index(int column, int row) const {
        return static_cast<std::size_t>(column) * static_cast<std::size_t>(rows) + static_cast<std::size_t>(row);
    }

    float minX, minZ, width, depth;
    int columns, rows;
    std::vector<Entry> entries;
    std::vector<std::size_t> starts;
};

/// nanoflann's view of the members.
struct Adaptor {
    Crowd const& crowd;
    [[nodiscard]] std::size_t kdtree_get_point_count() const { return crowd.members.size(); }
    [[nodiscard]] float kdtree_get_pt(std::size_t index, std::size_t axis) const {
        return Datum::Read<float>(crowd.members[index].record + crowd.offset + (axis == 0 ? 0 : 8));
    }
    template<class Box>
    bool kdtree_get_bbox(Box&) const {
        return false;
    }
};
using KdTree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Adaptor>, Adaptor, 2>;

/// Collects the members that nanoflann finds.
struct Collector {
    std::vector<Member> const& members;
    float squaredRadius;
    std::vector<Member>& found;
    [[nodiscard]] std::size_t size() const { return found.size(); }
    [[nodiscard]] bool full() const { return true; }
    bool addPoint(float distance, std::size_t index) {
        if (distance < squaredRadius) {
            found.push_back(members[index]);
        }
        return true;
    }
    [[nodiscard]] float worstDist() const { return squaredRadius; }
};

using Point = boost::geometry::model::point<float, 2, boost::geometry::cs::cartesian>;
using Entry = std::pair<Point, Member>;
using RTree = boost::geometry::index::rtree<Entry, boost::geometry::index::quadratic<16>>;

/// Sums up found members without regard to their order.
struct Sum {
    std::uint64_t count = 0;
    std::uint64_t members = 0;
    void Add(Crowd const& crowd, std::vector<Member> const& found) {
        count += found.size();
        // Where the records lie differs from run to run, but is the same for all who search.
        for (Member const member : found) {
            members += static_cast<std::uint64_t>(member.record - crowd.members.front().record);
        }
    }
    [[nodiscard]] std::uint64_t Hash() const { return (count * 1'000'003u + members) << 12; }
};

Crowd& CrowdOf(benchmark::State const& state) {
    return CrowdOf(static_cast<Kind>(state.range(0)), static_cast<std::size_t>(state.range(1)));
}
float RadiusOf(benchmark::State const& state) {
    return RadiusFor(static_cast<Kind>(state.range(0)), static_cast<std::size_t>(state.range(1)),
                     static_cast<int>(state.range(2)));
}

/// Runs `find(x, z)`, which gives the found members, for each member to be asked for.
template<class Find>
void Ask(benchmark::State& state, Crowd const& crowd, Find const& find) {
    for (auto _ : state) {
        for (std::size_t i = 0; i < crowd.QueryCount(); ++i) {
            Vec3 const at = crowd.At(crowd.members[i]);
            benchmark::DoNotOptimize(find(at.x, at.z).data());
        }
    }
    Sum sum;
    for (std::size_t i = 0; i < 1000; ++i) {
        Vec3 const at = crowd.At(crowd.members[i]);
        sum.Add(crowd, find(at.x, at.z));
    }
    Bench::SetResult(state, sum.Hash());
}

void AskGrid(benchmark::State& state) {
    Crowd& crowd = CrowdOf(state);
    float const radius = RadiusOf(state);
    MemberSelection result(&crowd.pool);
    SpatialOrganizer& organizer = *crowd.grid;
    Ask(state, crowd, [&](float x, float z) -> std::vector<Member>& {
        result.Clear();
        organizer.GetMembersInRadius(result, {x, 0, z}, radius, Member::NIL);
        return result.GetAllMembers();
    });
}

void AskHandGrid(benchmark::State& state) {
    Crowd& crowd = CrowdOf(state);
    float const radius = RadiusOf(state);
    HandGrid const grid(crowd);
    std::vector<Member> result;
    Ask(state, crowd, [&](float x, float z) -> std::vector<Member>& {
        result.clear();
        grid.Find(result, x, z, radius);
        return result;
    });
}

void AskKdTree(benchmark::State& state) {
    Crowd& crowd = CrowdOf(state);
    float const radius = RadiusOf(state);
    Adaptor const adaptor{crowd};
    KdTree const tree(2, adaptor);
    std::vector<Member> result;
    Ask(state, crowd, [&](float x, float z) -> std::vector<Member>& {
        result.clear();
        float const centre[] = {x, z};
        Collector collector{crowd.members, radius * radius, result};
        tree.findNeighbors(collector, centre, nanoflann::SearchParams());
        return result;
    });
}

void AskRTree(benchmark::State& state) {
    namespace index = boost::geometry::index;
    Crowd& crowd = CrowdOf(state);
    float const radius = RadiusOf(state);
    std::vector<Entry> entries;
    for (Member const member : crowd.members) {
        entries.emplace_back(Point(crowd.At(member).x, crowd.At(member).z), member);
    }
    RTree const tree(entries.begin(), entries.end());
    std::vector<Member> result;
    Ask(state, crowd, [&](float x, float z) -> std::vector<Member>& {
        result.clear();
        boost::geometry::model::box<Point> const square(Point(x - radius, z - radius), Point(x + radius, z + radius));
        auto const isNear = [&](Entry const& entry) {
            float const dx = x - entry.first.get<0>();
            float const dz = z - entry.first.get<1>();
            return dx * dx + dz * dz < radius * radius;
        };
        for (auto it = tree.qbegin(index::intersects(square) && index::satisfies(isNear)); it != tree.qend(); ++it) {
            result.push_back(it->second);
        }
        return result;
    });
}

// Sorting. Whether the result is right the queries tell.

std::size_t CountSorted(GridOrganizer const& grid) {
    std::size_t count = 0;
    for (int column = 0; column < grid.GetColumns(); ++column) {
        for (int row = 0; row < grid.GetRows(); ++row) {
            count += grid.GetCell(column, row).size();
        }
    }
    return count;
}

void RefreshGrid(benchmark::State& state) {
    Crowd& crowd = CrowdOf(state);
    for (auto _ : state) {
        crowd.grid->Refresh();
    }
    Bench::SetResult(state, CountSorted(*crowd.grid) << 12);
}
void RebuildGrid(benchmark::State& state) {
    Crowd& crowd = CrowdOf(state);
    for (auto _ : state) {
        crowd.grid->Rebuild();
        crowd.grid->Refresh();
    }
    Bench::SetResult(state, CountSorted(*crowd.grid) << 12);
}
void BuildKdTree(benchmark::State& state) {
    Crowd& crowd = CrowdOf(state);
    Adaptor const adaptor{crowd};
    KdTree tree(2, adaptor);
    for (auto _ : state) {
        tree.buildIndex();
    }
    Bench::SetResult(state, tree.size(tree) << 12);
}

void Register() {
    for (Kind const kind : {UNIFORM, CLUSTERED}) {
        for (int const count : {1000, 10'000, 100'000, 1'000'000}) {
            bool const isSmall = count < 10'000;
            bool const isLarge = count > 100'000;
            std::string const crowd = std::string(kind == UNIFORM ? "uniform " : "clustered ") + std::to_string(count);
            std::string const arguments = "/" + std::to_string(kind) + "/" + std::to_string(count);
            for (int const neighbours : {8, 30, 100}) {
                std::pair<char const*, void (*)(benchmark::State&)> const variants[] = {
                    {"near-grid", AskGrid}, {"near-hand", AskHandGrid}, {"near-kd", AskKdTree}, {"near-r", AskRTree}};
                for (auto const& [name, run] : variants) {
                    benchmark::RegisterBenchmark(name, run)->Args({kind, count, neighbours});
                }
                std::string const all = arguments + "/" + std::to_string(neighbours);
                std::string const label = crowd + ", " + std::to_string(neighbours) + " near: grid / ";
                Bench::CompareTimes(label + "nanoflann", "near-grid" + all, "near-kd" + all,
                                    isSmall   ? 1.0
                                    : isLarge ? 1 / 3.5
                                              : 1 / 2.7);
                Bench::CompareTimes(label + "R-tree", "near-grid" + all, "near-r" + all, isLarge ? 1.1 : 1 / 1.6);
                Bench::CompareTimes(label + "by hand", "near-grid" + all, "near-hand" + all, isLarge ? 1.6 : 1.35);
            }
            benchmark::RegisterBenchmark("sort-refresh", RefreshGrid)->Args({kind, count});
            benchmark::RegisterBenchmark("sort-rebuild", RebuildGrid)->Args({kind, count});
            benchmark::RegisterBenchmark("sort-kd", BuildKdTree)->Args({kind, count});
            Bench::CompareTimes(crowd + ": refresh / nanoflann's build", "sort-refresh" + arguments,
                                "sort-kd" + arguments,
                                isSmall   ? 1.0
                                : isLarge ? 0.13
                                          : 0.08);
            Bench::CompareTimes(crowd + ": rebuild and refresh / the same", "sort-rebuild" + arguments,
                                "sort-kd" + arguments,
                                isSmall   ? 1.0
                                : isLarge ? 0.15
                                          : 0.12);
        }
    }
}

[[maybe_unused]] int const registered = (Register(), 0);

} // namespace
