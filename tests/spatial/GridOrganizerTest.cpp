// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include "support/Allocations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <random>
#include <span>

namespace {

using namespace Gentra;
using Math::Vec3;
using namespace Support;

constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NAN_ = std::numeric_limits<float>::quiet_NaN();
constexpr float HUGE_ = std::numeric_limits<float>::max();

/// A pool whose members have a position, behind an odd number of other bytes.
struct Crowd : Pool {
    explicit Crowd(std::vector<Vec3> const& positions = {}, char const* positionName = "Position")
        : position(Vector(positionName)) {
        LayOut(new FixedSizeDataProperty("Odd", 5, nullptr), position);
        for (Vec3 const& each : positions) {
            Add(each);
        }
    }
    void LayOut(PropertyPtr const& odd, PropertyPtr const& newPosition) {
        InitializeMemberPool();
        AddMemberProperty(odd);
        AddMemberProperty(newPosition);
    }
    void Add(Vec3 const& at) {
        Member const member = CreateNewMember();
        AddMember(*this, member);
        Move(member, at);
    }
    void Move(Member member, Vec3 const& to) { Datum::Write(member.record + position->GetDataOffset(), to); }
    Vec3 At(Member member) const { return Datum::Read<Vec3>(member.record + position->GetDataOffset()); }
    GridOrganizer& Grid() { return Grid(*this); }
    static GridOrganizer& Grid(MemberSelection& selection) {
        return dynamic_cast<GridOrganizer&>(MainContext().GetSpatialRelations().GetSpatialOrganizer(selection));
    }

    PropertyPtr position;
};

std::vector<Member> Near(SpatialOrganizer& organizer, Vec3 const& centre, float radius, Member exclude = Member::NIL) {
    MemberSelection* const selection = organizer.GetSelection();
    MemberSelection result(selection != nullptr ? selection->GetBasePool() : nullptr);
    organizer.GetMembersInRadius(result, centre, radius, exclude);
    return result.GetAllMembers();
}

/// Points of a lattice that fills a rectangle at the origin, borders included; y must not count.
std::vector<Vec3> Lattice(int nx, int nz, float width, float depth) {
    std::vector<Vec3> points;
    for (int i = 0; i < nx * nz; ++i) {
        points.push_back({width * static_cast<float>(i % nx) / static_cast<float>(std::max(nx - 1, 1)),
                          static_cast<float>(1000 * i),
                          depth * static_cast<float>(i / nx) / static_cast<float>(std::max(nz - 1, 1))});
    }
    return points;
}

TEST(GridLayout, AimsAtFourMembersACell) {
    struct Row {
        std::vector<Vec3> positions;
        int columns, rows;
        float cellWidth, cellDepth;
    };
    Row const table[] = {
        {Lattice(10, 10, 10, 10), 5, 6, 2.0f, 10.0f / 6},
        {Lattice(10, 10, 20, 10), 7, 4, 20.0f / 7, 2.5f},
        {Lattice(3, 1, 5, 0), 1, 1, 5, 0},
        {Lattice(100, 1, 13, 0), 26, 1, 0.5f, 0},       // all with one z
        {Lattice(1, 100, 0, 13), 26, 1, 0, 13},         // all with one x
        {{}, 1, 1, 0, 0},                               // nobody
        {Lattice(200, 200, 1e6f, 1), 1000, 1, 1e3f, 1}, // limits
        {Lattice(200, 200, 1, 1e6f), 11, 1000, 1.0f / 11, 1e3f},
        // Only finite positions count for the rectangle.
        {{{NAN_, 0, 1}, {}, {INF, 0, 0}, {0, 0, -INF}, {4, 0, 2}, {1, 0, NAN_}, {1, 0, 1}, {2, 0, 1}}, 2, 2, 2, 1},
    };
    for (Row const& row : table) {
        Crowd crowd(row.positions);
        GridOrganizer const& grid = crowd.Grid();
        SCOPED_TRACE(row.positions.size());
        EXPECT_EQ(grid.GetColumns(), row.columns);
        EXPECT_EQ(grid.GetRows(), row.rows);
        EXPECT_FLOAT_EQ(grid.GetCellWidth(), row.cellWidth);
        EXPECT_FLOAT_EQ(grid.GetCellDepth(), row.cellDepth);
        EXPECT_TRUE(row.rows == 1 || grid.GetCell(0, 0).size() < row.positions.size() / 2);
    }
}

/// The same grid written down again in the simplest way: lists of members by cell.
struct GridModel {
    explicit GridModel(Crowd& newCrowd) : crowd(newCrowd) {}

    void Rebuild() {
        std::vector<Member> const& members = crowd.GetAllMembers();
        minX = maxX = crowd.At(members.front()).x;
        minZ = maxZ = crowd.At(members.front()).z;
        for (Member const member : members) {
            Vec3 const p = crowd.At(member);
            minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
            minZ = std::min(minZ, p.z), maxZ = std::max(maxZ, p.z);
        }
        auto const target = static_cast<float>(members.size() / 4);
        isLine = minX == maxX || minZ == maxZ;
        rows = isLine ? 1 : std::min(1 + static_cast<int>(std::sqrt(target / ((maxX - minX) / (maxZ - minZ)))), 1000);
        columns = std::min(1 + static_cast<int>(target / static_cast<float>(rows)), 1000);
        width = (maxX - minX) / static_cast<float>(columns);
        depth = (maxZ - minZ) / static_cast<float>(rows);
    }
    std::pair<int, int> CellOf(float x, float z) const {
        if (isLine) {
            return {0, 0};
        }
        float const u = (x - minX) / (maxX - minX) * static_cast<float>(columns);
        float const v = (z - minZ) / (maxZ - minZ) * static_cast<float>(rows);
        return {std::clamp(static_cast<int>(u), 0, columns - 1), std::clamp(static_cast<int>(v), 0, rows - 1)};
    }
    void Refresh() {
        cells.clear();
        for (Member const member : crowd.GetAllMembers()) {
            cells[CellOf(crowd.At(member).x, crowd.At(member).z)].push_back(member);
        }
    }
    std::vector<Member> Near(Vec3 const& c, float r, Member exclude) const {
        std::vector<Member> found;
        auto const [firstColumn, firstRow] = CellOf(c.x - r, c.z - r);
        auto const [lastColumn, lastRow] = CellOf(c.x + r, c.z + r);
        float const half = 0.5f * std::sqrt(width * width + depth * depth);
        float const inner = std::max(r - half, 0.0f);
        for (auto const& [cell, members] : cells) { // column by column
            auto const [column, row] = cell;
            float const dx = width * (static_cast<float>(column) + 0.5f) - (c.x - minX);
            float const dz = depth * (static_cast<float>(row) + 0.5f) - (c.z - minZ);
            float const d2 = dx * dx + dz * dz;
            bool const isNear = column >= firstColumn && column <= lastColumn && row >= firstRow && row <= lastRow &&
                                d2 <= (r + half) * (r + half);
            for (Member const member : isNear ? members : std::vector<Member>()) {
                Vec3 const p = crowd.At(member);
                float const distance2 = (c.x - p.x) * (c.x - p.x) + (c.z - p.z) * (c.z - p.z);
                if ((d2 < inner * inner || distance2 < r * r) && member != exclude) {
                    found.push_back(member);
                }
            }
        }
        return found;
    }

    Crowd& crowd;
    float minX = 0, maxX = 0, minZ = 0, maxZ = 0, width = 0, depth = 0;
    int columns = 0, rows = 0;
    bool isLine = true;
    std::map<std::pair<int, int>, std::vector<Member>> cells;
};

class GridModelTest : public testing::TestWithParam<unsigned int> {};

TEST_P(GridModelTest, AgreesWithListsByCell) {
    std::mt19937 random(GetParam());
    auto const uniform = [&](float low, float high) {
        return low + (high - low) * static_cast<float>(random() >> 8) / 16777216.0f;
    };
    // Odd seeds make clustered crowds; every fourth crowd stands on a line.
    bool const isClustered = GetParam() % 2 != 0;
    bool const isLine = GetParam() % 4 == 3;
    float const scale = std::pow(10.0f, uniform(-3, 5));
    float const stretch = std::pow(10.0f, uniform(-2, 2));
    auto const place = [&] {
        float const x = uniform(-1, 1);
        float const z = isLine ? 0.25f : uniform(-stretch, stretch);
        return Vec3(scale * ((isClustered ? x * x * x : x) + 3), uniform(-9, 9), scale * z);
    };
    Crowd crowd;
    // From some size on queries fetch ahead what they are about to test.
    int const count = GetParam() == 0 ? 51'000 : 1 + static_cast<int>(random() % 900);
    for (int i = 0; i < count; ++i) {
        crowd.Add(place());
        if (random() % 16 == 0) { // some are listed twice
            crowd.AddMember(crowd, crowd.GetMemberByIndex(i / 2));
        }
    }
    GridOrganizer& grid = crowd.Grid();
    GridModel model(crowd);
    model.Rebuild();
    model.Refresh();
    MemberSelection result(&crowd);
    for (int step = 0; step < (count < 1000 ? 300 : 60); ++step) {
        std::vector<Member> const& members = crowd.GetAllMembers();
        Member const one = members[random() % members.size()];
        switch (random() % 8) {
        case 0:
        case 1:
            crowd.Move(one, random() % 2 == 0 ? place() : Vec3(scale * uniform(-20, 20), 0, scale * uniform(-20, 20)));
            break;
        case 2:
            grid.Rebuild();
            model.Rebuild();
            [[fallthrough]];
        case 3:
            grid.Refresh();
            model.Refresh();
            break;
        default: {
            Vec3 const centre = random() % 4 == 0 ? crowd.At(one) : place();
            float const radius = scale * std::pow(10.0f, uniform(-2, 1));
            Member const exclude = random() % 2 == 0 ? one : Member::NIL;
            result.Clear();
            grid.GetMembersInRadius(result, centre, radius, exclude);
            ASSERT_EQ(result.GetAllMembers(), model.Near(centre, radius, exclude)) << "step " << step;
        }
        }
    }
    EXPECT_EQ(grid.GetColumns(), model.columns);
    EXPECT_EQ(grid.GetRows(), model.rows);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GridModelTest, testing::Range(0u, 24u));

TEST(GridQueries, AreStrictAndAppend) {
    Crowd crowd({{0, 0, 0}, {3, 7, 4}, {10, 0, 10}});
    std::vector<Member> const all = crowd.GetAllMembers();
    GridOrganizer& grid = crowd.Grid();
    EXPECT_EQ(Near(grid, {}, 5), (std::vector<Member>{all[0]})) << "exactly at the radius";
    EXPECT_EQ(Near(grid, {}, std::nextafter(5.0f, 6.0f)), (std::vector<Member>{all[0], all[1]}));
    EXPECT_EQ(Near(grid, {}, INF), all);
    EXPECT_TRUE(Near(grid, {5, 0, 5}, 1).empty()) << "in the very middle of the cell";
    EXPECT_EQ(Near(grid, {}, INF, all[1]), (std::vector<Member>{all[0], all[2]}));
    for (float const none : {0.0f, -1.0f, -INF, NAN_}) {
        EXPECT_TRUE(Near(grid, {}, none).empty());
    }
    MemberSelection result(&crowd);
    result.AddMember(crowd, all[2]);
    result.AddMember(crowd, all[2]);
    result.RemoveMemberByIndex(0); // an edited list is appended to as well
    grid.GetMembersInRadius(result, {}, 1, Member::NIL);
    EXPECT_EQ(result.GetAllMembers(), (std::vector<Member>{all[2], all[0]}));
    grid.GetMembersInRadius(crowd, {}, 1, Member::NIL);
    EXPECT_EQ(crowd.GetNumMembers(), 4) << "into the organised selection itself";
    crowd.RemoveAnyMember();
    grid.Rebuild();
    EXPECT_TRUE(Near(grid, {}, INF).empty()) << "sorted by another layout";
}

TEST(GridQueries, SurvivePositionsThatAreNoPlaces) {
    Crowd crowd(Lattice(20, 20, 20, 20));
    std::vector<Member> const all = crowd.GetAllMembers();
    GridOrganizer& grid = crowd.Grid();
    Vec3 const wild[] = {{NAN_, 0, 5},    {5, 0, NAN_},       {INF, 0, 5},
                         {-INF, 0, -INF}, {HUGE_, 0, -HUGE_}, {-HUGE_, 0, 1e20f}};
    for (std::size_t i = 0; i < std::size(wild); ++i) {
        crowd.Move(all[i * 7], wild[i]);
    }
    for (int round = 0; round < 3; ++round) { // as they were sorted, sorted again, and laid out again
        SCOPED_TRACE(round);
        for (Vec3 const& centre : wild) {
            for (float const radius : {1.0f, HUGE_, INF}) {
                EXPECT_LE(Near(grid, centre, radius).size(), all.size());
            }
        }
        if (round == 1) {
            grid.Rebuild();
        }
        grid.Refresh();
        std::span<Member const> const border = grid.GetCell(grid.GetColumns() - 1, 2);
        EXPECT_EQ(std::count(border.begin(), border.end(), all[14]), round == 0 ? 1 : 0) << "the infinite one";
        std::size_t sorted = 0;
        for (int i = 0; i < grid.GetColumns() * grid.GetRows(); ++i) {
            sorted += grid.GetCell(i / grid.GetRows(), i % grid.GetRows()).size();
        }
        EXPECT_EQ(sorted, all.size() - 2) << "whoever is no number is in no cell";
        EXPECT_TRUE(grid.GetCell(-1, 0).empty() && grid.GetCell(0, -1).empty());
        EXPECT_TRUE(grid.GetCell(grid.GetColumns(), 0).empty() && grid.GetCell(0, grid.GetRows()).empty());
    }
    EXPECT_EQ(Near(grid, {HUGE_, 0, -HUGE_}, 1).size(), 1u) << "where differences overflow";
}

TEST(GridQueries, LeaveForeignSelectionsAlone) {
    Crowd crowd(Lattice(10, 10, 10, 10));
    crowd.SetName("Crowd");
    Pool other("Other");
    GridOrganizer& grid = crowd.Grid();
    MessageLog const log;
    MemberSelection result(&other);
    grid.GetMembersInRadius(result, {5, 0, 5}, INF, Member::NIL);
    EXPECT_TRUE(MessageLog::Take().empty()) << "whole cells are added silently";
    grid.GetMembersInRadius(result, {-50, 0, 5}, 10, Member::NIL);
    EXPECT_TRUE(MessageLog::Take().empty()) << "nobody to add";
    grid.GetMembersInRadius(result, {5, 0, 5}, 1, Member::NIL);
    grid.GetMembersInRadius(result, {5, 0, 5}, INF, crowd.GetAllMembers()[0]);
    EXPECT_EQ(MessageLog::Take(), (Messages{"Error : Can't add Member to MemberSelection. The Members BasePool is "
                                            "\"Crowd\" while the MemberSelections BasePool is \"Other\""}));
    EXPECT_EQ(result.GetNumMembers(), 0);
}

TEST(GridQueries, AllocateNothingOnceTheirResultWasFilled) {
    Crowd crowd(Lattice(60, 60, 60, 60));
    GridOrganizer& grid = crowd.Grid();
    MemberSelection result(&crowd);
    std::size_t before = 0;
    for (int round = 0; round < 2; ++round) {
        before = AllocationsSoFar();
        for (Member const member : crowd.GetAllMembers()) {
            result.Clear();
            grid.GetMembersInRadius(result, crowd.At(member), 10, member);
            ASSERT_GT(result.GetAllMembers().size(), 70u);
        }
    }
    grid.Refresh();
    EXPECT_EQ(AllocationsSoFar(), before);
}

TEST(SpatialOrganizers, UpdateByTheirTimers) {
    struct Counting : SpatialOrganizer {
        explicit Counting(MemberSelection& organised) : SpatialOrganizer(&organised, &MainContext(), Property::NIL) {}
        void GetMembersInRadius(MemberSelection&, Vec3 const&, float, Member) override {}
        void Rebuild() override { calls += 'b'; }
        void Refresh() override { calls += 'r'; }
        std::string calls;
    };
    Crowd crowd;
    Counting organizer(crowd);
    for (int call = 0; call < 14; ++call) {
        organizer.Update(0.5f, 2.0f, 0.3f);
        organizer.calls += '.';
    }
    EXPECT_EQ(organizer.calls, ".r..r..r.br..r..r..r.br.");
    organizer.calls.clear();
    organizer.Update(0, 0, 0);
    EXPECT_EQ(organizer.calls, "") << "strictly longer";
    organizer.Update(0, 9, 0.1f);
    EXPECT_EQ(organizer.calls, "r");
}

TEST(SpatialRelation, KeepsOneOrganizerASelectionUntilReset) {
    Crowd crowd(Lattice(10, 10, 10, 10));
    MemberSelection half(&crowd);
    half.AddMembers(crowd, {crowd.GetAllMembers().begin(), crowd.GetAllMembers().begin() + 50});
    GridOrganizer& grid = crowd.Grid();
    GridOrganizer& gridOfHalf = Crowd::Grid(half);
    EXPECT_NE(&grid, &gridOfHalf);
    EXPECT_EQ(&grid, &crowd.Grid());
    EXPECT_EQ(grid.GetContext(), &MainContext());
    EXPECT_EQ(&TestBehaviour().GetSpatialOrganizer(half), &gridOfHalf);
    for (int i = 0; i < 50; ++i) { // the organizers of selections that have gone serve others
        MemberSelection brief(half);
        Crowd::Grid(brief);
    }
    EXPECT_EQ(gridOfHalf.GetSelection(), &half) << "not this one";
    EXPECT_EQ(Near(gridOfHalf, {5, 0, 5}, 100).size(), 50u);

    // Dropped ones go on answering, however often.
    std::set<GridOrganizer*> former;
    for (int i = 0; i < 4; ++i) {
        GridOrganizer* const last = &crowd.Grid();
        former.insert(last);
        MainContext().GetSpatialRelations().Reset();
        for (GridOrganizer* const each : former) {
            EXPECT_EQ(Near(*each, {5, 0, 5}, 100).size(), 100u);
        }
        EXPECT_NE(last, &crowd.Grid());
    }
    EXPECT_EQ(former.size(), 2u) << "in turn, however many passes there are";
}

TEST(SpatialRelation, TellsASelectionFromAnotherAtItsAddress) {
    Crowd crowd(Lattice(10, 10, 10, 10));
    std::optional<MemberSelection> selection(std::in_place, &crowd);
    selection->AddMember(crowd, crowd.GetAllMembers()[0]);
    GridOrganizer& first = Crowd::Grid(*selection);
    selection.reset();
    EXPECT_EQ(first.GetSelection(), nullptr);
    first.Rebuild();
    first.Refresh();
    selection.emplace(&crowd);
    selection->AddMembers(crowd, crowd.GetAllMembers());
    EXPECT_EQ(Near(Crowd::Grid(*selection), {5, 0, 5}, 100).size(), 100u);
    EXPECT_TRUE(Near(first, {5, 0, 5}, 100).empty()) << "the first is still there, of nobody";

    // A selection that its property uses again for another member.
    Pool holders;
    holders.AddMemberProperty(PropertyPtr(new MemberSelectionProperty("Held")));
    Member const former = holders.CreateNewMember();
    auto* const held = Datum::Read<MemberSelection*>(former.record);
    GridOrganizer& second = Crowd::Grid(*held);
    holders.DeleteMember(former);
    ASSERT_EQ(Datum::Read<MemberSelection*>(holders.CreateNewMember().record), held);
    EXPECT_NE(&Crowd::Grid(*held), &second);
}

TEST(SpatialOrganizers, ReadNoRecordWithoutAPosition) {
    Crowd noName({{1, 0, 1}}, "Place");
    Pool wrongType;
    wrongType.AddMemberProperty(Value("Position"));
    wrongType.AddNewMember();
    Crowd hidden({{1, 0, 1}});
    hidden.AddPoolProperty(Vector("Position"));
    Pool nobody;
    MemberSelection noPool(nullptr);
    for (MemberSelection* const selection :
         std::initializer_list<MemberSelection*>{&noName, &wrongType, &hidden, &nobody, &noPool}) {
        GridOrganizer& grid = Crowd::Grid(*selection);
        EXPECT_TRUE(Near(grid, {}, INF).empty());
        EXPECT_EQ(grid.GetColumns() * grid.GetRows(), 1);
    }
    Crowd crowd({{1, 0, 1}});
    GridOrganizer byHand(&crowd, nullptr, crowd.position);
    byHand.Refresh(); // but never built
    EXPECT_TRUE(byHand.GetColumns() == 0 && Near(byHand, {}, 100).empty());
    byHand.Update(0, 0, 1);
    EXPECT_EQ(Near(byHand, {}, 100).size(), 1u);
    GridOrganizer nothing(nullptr, nullptr, PropertyPtr(static_cast<Property*>(nullptr)));
    nothing.Rebuild();
    nothing.Refresh();
    EXPECT_TRUE(Near(nothing, {}, 1).empty());

    // The position has moved in the record, a copied property is of that layout, or tells a wrong offset.
    GridOrganizer& grid = crowd.Grid();
    PropertyPtr const copy(new VectorProperty(*crowd.position.DynamicCast<VectorProperty>()));
    crowd.LayOut(Value("Odd"), crowd.position);
    crowd.Add({1, 0, 1});
    GridOrganizer ofCopy(&crowd, &MainContext(), copy);
    Crowd lying({{1, 0, 1}});
    lying.position->SetDataOffset(100'000);
    for (GridOrganizer* const each : {&grid, &ofCopy, &lying.Grid()}) {
        each->Update(0, 0, 1);
        EXPECT_TRUE(Near(*each, {}, 100).empty());
    }
}

TEST(SpatialOrganizers, FindNobodyWhoHasGone) {
    Crowd crowd({{1, 0, 1}, {2, 0, 2}, {1, 0, 2}});
    MemberSelection survivor(&crowd);
    survivor.AddMembers(crowd, crowd.GetAllMembers());
    survivor.AddMember(crowd, Member::NIL);
    GridOrganizer& grid = Crowd::Grid(survivor);
    EXPECT_EQ(Near(grid, {}, 100).size(), 3u) << "a null handle is in no cell";
    {
        // While it is cleared the records are on their way out.
        Listener const early(Property::EVENT, [&](Util::Event const& event) {
            if (event.param1 == 1) {
                grid.Refresh();
                EXPECT_EQ(Near(grid, {}, 100).size(), 0u);
            }
        });
        crowd.LayOut(new FixedSizeDataProperty("Odd", 5, nullptr), crowd.position);
    }
    crowd.Add({1, 0, 1});
    EXPECT_TRUE(Near(grid, {}, 100).empty()) << "another generation, at the same offset";
    MainContext().GetSpatialRelations().Reset();
    EXPECT_TRUE(Near(grid, {}, 100).empty());
    survivor.Clear();
    survivor.AddMembers(crowd, crowd.GetAllMembers());
    grid.Refresh();
    EXPECT_EQ(Near(grid, {}, 100).size(), 1u) << "sorted again, it is as good as new";

    // Another pool takes the property over, and the selection becomes one of that pool.
    Crowd other;
    other.LayOut(new FixedSizeDataProperty("Odd", 5, nullptr), crowd.position);
    EXPECT_EQ(Near(grid, {}, 100).size(), 1u) << "the records are as they were";
    survivor = MemberSelection(&other);
    EXPECT_TRUE(Near(grid, {}, 100).empty());
    grid.Refresh();
    EXPECT_TRUE(Near(grid, {}, 100).empty());
}

TEST(SpatialOrganizers, AreMadeAfreshByPasses) {
    char const* first = "Position";
    Constructor const construct([&](MemberPool& pool) {
        pool.AddMemberProperty(Vector(first));
        pool.AddMemberProperty(Vector("Position"));
        pool.SetMemberCount(8);
    });
    Pool pool;
    MainContext().ForceConstructAllMemberPools();
    GridOrganizer& before = Crowd::Grid(pool);
    EXPECT_EQ(Near(before, {}, 1).size(), 8u);
    first = "Filler";
    MainContext().ForceReconstructAllMemberPools();
    EXPECT_TRUE(Near(before, {}, 1).empty());
    GridOrganizer& after = Crowd::Grid(pool);
    EXPECT_NE(&after, &before);
    EXPECT_EQ(Near(after, {}, 1).size(), 8u);
    Pool second;
    MainContext().ForceConstructAllMemberPools();
    EXPECT_NE(&Crowd::Grid(pool), &after);
    MemberPool twin(pool); // has members of its own, in the same layout
    twin.SetMemberCount(2);
    EXPECT_EQ(Near(Crowd::Grid(twin), {}, 1).size(), 2u);
}

} // namespace
