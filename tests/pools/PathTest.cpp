// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include "support/Allocations.h"

#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <utility>

namespace {

using namespace Gentra;
using namespace Support;
using namespace std::string_literals;
using Util::ShortID;
using SelectionPtr = Util::RefCountPtr<MemberSelectionProperty>;

constexpr char UNRESOLVED[] = "Path not resolved";

Util::String NameOf(Path& path) {
    Util::String name("unchanged");
    path.GetPathName(name);
    return name;
}

/// Without the NUL that ends it.
std::string Saved(Path const& path) {
    std::ostringstream stream;
    path.SaveToStream(stream);
    std::string text = stream.str();
    EXPECT_EQ(text.back(), '\0');
    return text.substr(0, text.size() - 1);
}

Path Loaded(std::string const& text) {
    std::istringstream stream(text);
    Path path;
    path.LoadFromStream(stream);
    return path;
}

bool LeadsNowhere(Path& path) {
    return path.GetDestinationMemberSelectionNoIndices() == nullptr &&
           path.GetDestinationMemberSelectionUsingIndices() == nullptr &&
           !path.GetDestinationMemberNoIndices().IsValid() && !path.GetDestinationMemberUsingIndices().IsValid() &&
           path.GetDestinationPropertyDataNoIndices() == nullptr &&
           path.GetDestinationPropertyDataUsingIndices() == nullptr &&
           path.GetDestinationPropertyIncludingMemberSelections() == Property::NIL;
}

/// A pool that waits for no pass any more, which would clear it.
struct BuiltPool : Pool {
    explicit BuiltPool(char const* newName = "Pool") : Pool(newName) { MainContext().ForceConstructAllMemberPools(); }
    std::string ID() const { return std::to_string(static_cast<int>(GetMemberPoolID())); }
};

std::string ID(PropertyPtr const& property) {
    return std::to_string(static_cast<int>(property->GetPropertyID()));
}

/// Cities whose members hold streets, which hold houses, which have a number.
struct Map {
    Map() {
        toHouses->SetPropertyID(-3);
        cities.AddMemberProperty(Value("Odd"));
        streets.AddMemberProperty(Value("Odd"));
        cities.AddMemberProperty(toStreets);
        streets.AddMemberProperty(toHouses);
        houses.AddMemberProperty(number);
        toStreets->SetBasePoolID(streets.GetMemberPoolID());
        toHouses->SetBasePoolID(houses.GetMemberPoolID());
        cities.SetBasePoolsForMemberSelections();
        streets.SetBasePoolsForMemberSelections();
        cities.SetMemberCount(2);
        for (int i = 0; i < 24; ++i) {
            auto value = static_cast<float>(i / 12 * 100 + i / 4 % 3 * 10 + i % 4);
            StreetsOf(i / 12).SetMemberCount(3);
            HousesOf(i / 12, i / 4 % 3).SetMemberCount(4);
            number->SetDataToMemberSelection(&value, HousesOf(i / 12, i / 4 % 3), i % 4);
        }
        path.SetRootMemberPool(cities);
        path.AddRootingMemberSelectionBack(toStreets);
        path.AddRootingMemberSelectionBack(toHouses);
        path.SetDestinationProperty(number);
    }
    MemberSelection& StreetsOf(int city) { return *toStreets->GetMemberSelection(cities, city); }
    MemberSelection& HousesOf(int city, int street) { return *toHouses->GetMemberSelection(StreetsOf(city), street); }
    static float ValueAt(void const* datum) { return datum != nullptr ? Datum::Read<float>(datum) : -1; }

    BuiltPool cities{"Cities"};
    BuiltPool streets{"Streets"};
    BuiltPool houses{"Houses"};
    SelectionPtr toStreets{new MemberSelectionProperty("In it")};
    SelectionPtr toHouses{new MemberSelectionProperty("Along it")};
    PropertyPtr number = Value("Number");
    Path path;
};

TEST(Paths, WalkByActiveMembersAndByIndices) {
    Map map;
    Path& path = map.path;
    EXPECT_EQ(NameOf(path), "Cities:In it:Along it:Number");
    EXPECT_EQ(path.GetDestinationPropertyDataNoIndices(), nullptr) << "no active city";
    map.cities.ActivateMember(1);
    map.StreetsOf(1).ActivateMember(2);
    MemberSelection& houses = map.HousesOf(1, 2);
    ASSERT_EQ(path.GetDestinationMemberSelectionNoIndices(), &houses);
    EXPECT_EQ(path.GetDestinationMemberNoIndices(), Member::NIL);
    houses.ActivateMember(3);
    EXPECT_EQ(path.GetDestinationMemberNoIndices(), houses.GetMemberByIndex(3));
    EXPECT_EQ(Map::ValueAt(path.GetDestinationPropertyDataNoIndices()), 123);

    constexpr int MOST = std::numeric_limits<int>::max();
    std::pair<std::vector<int>, float> const walks[] = {
        {{0, 0, 0}, 0},      {{1, 1, 2}, 112}, {{2, 0, 0}, -1}, {{0, 3, 0}, -1},    {{0, 0, 4}, -1},
        {{-1, -1, -1}, 123}, {{}, -1},         {{1}, -1},       {{1, MOST, 0}, -1}, {{-MOST, 2, 0}, 120}};
    for (auto const& [indices, value] : walks) {
        path.GetIndicesForManipulation() = indices;
        SCOPED_TRACE(testing::PrintToString(indices));
        EXPECT_EQ(Map::ValueAt(path.GetDestinationPropertyDataUsingIndices()), value);
        bool const hasMember = value >= 0 && indices.back() >= 0;
        EXPECT_EQ(path.GetDestinationMemberUsingIndices().IsValid(), hasMember);
    }
    path.GetIndicesForManipulation() = {1, 1, 1};
    Path::ForceGlobalPathResolve();
    EXPECT_EQ(path.GetIndicesForManipulation(), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(path.GetDestinationMemberSelectionID(), map.toHouses->GetPropertyID());
    EXPECT_EQ(path.GetDestinationPropertyIncludingMemberSelections(), map.number);

    Path withoutDestination;
    withoutDestination.SetRootMemberPoolID(map.cities.GetMemberPoolID());
    withoutDestination.AddRootingMemberSelectionBack(map.toStreets);
    withoutDestination.ResolvePath();
    EXPECT_EQ(withoutDestination.GetDestinationPropertyIncludingMemberSelections(), map.toStreets);
    EXPECT_EQ(withoutDestination.GetDestinationPropertyDataUsingIndices(), nullptr);
    EXPECT_EQ(NameOf(withoutDestination), "Cities:In it");

    SelectionPtr const ofPool(new MemberSelectionProperty("All"));
    ofPool->SetBasePoolID(map.houses.GetMemberPoolID());
    map.cities.AddPoolProperty(ofPool);
    map.cities.SetBasePoolsForMemberSelections();
    Path overPool;
    overPool.SetRootMemberPool(map.cities);
    overPool.AddRootingMemberSelectionBack(ofPool);
    EXPECT_EQ(overPool.GetDestinationMemberSelectionUsingIndices(), ofPool->GetMemberSelection(map.cities, 0));
    EXPECT_EQ(overPool.GetDestinationPropertyDataUsingIndices(), nullptr);
}

TEST(Paths, StoreSelections) {
    Map map;
    MemberSelection stored(&map.houses);
    map.path.SetDestinationMemberSelectionNoIndices(&stored); // where no city is active
    map.cities.ActivateMember(0);
    map.StreetsOf(0).ActivateMember(1);
    map.path.SetDestinationMemberSelectionNoIndices(&stored);
    EXPECT_EQ(map.path.GetDestinationMemberSelectionNoIndices(), &stored);
    map.path.GetIndicesForManipulation() = {1, 2, 0};
    map.path.SetDestinationMemberSelectionUsingIndices(&stored);
    EXPECT_EQ(&map.HousesOf(1, 2), &stored);
    map.path.SetDestinationMemberSelectionUsingIndices(nullptr);
    EXPECT_EQ(map.path.GetDestinationMemberSelectionUsingIndices(), nullptr);
    EXPECT_EQ(map.path.GetDestinationPropertyDataUsingIndices(), nullptr);

    MessageLog const log;
    Path root;
    root.SetRootMemberPool(map.cities);
    EXPECT_EQ(root.GetDestinationMemberSelectionNoIndices(), &map.cities);
    EXPECT_EQ(root.GetDestinationMemberNoIndices(), map.cities.ActiveMember());
    EXPECT_EQ(root.GetDestinationMemberSelectionID(), map.cities.GetMemberPoolID());
    EXPECT_EQ(root.GetDestinationPropertyIncludingMemberSelections(), Property::NIL);
    root.SetDestinationMemberSelectionNoIndices(&stored);
    root.SetDestinationMemberSelectionUsingIndices(&stored);
    EXPECT_EQ(MessageLog::Take(), (Messages{"Error : Set MemberSelection not possible, because the Path "
                                            "doesn't point to a MemberSelection"}));
}

TEST(Paths, AreBuiltFromBothEnds) {
    Map map;
    Path path;
    path.SetRootMemberPool(map.cities);
    path.AddRootingMemberSelectionBack(map.toHouses);
    path.ResolvePathIfNeccessary();
    path.GetIndicesForManipulation() = {4, 7};
    path.AddRootingMemberSelectionFront(map.toStreets);
    EXPECT_EQ(path.GetIndicesForManipulation(), (std::vector<int>{4, 0, 7}));
    EXPECT_EQ(NameOf(path), "Cities:In it:Along it");
    Path::ForceGlobalPathResolve();
    EXPECT_EQ(NameOf(path), "Cities:In it:Along it") << "the IDs are in the same order";

    // Building on what is resolved changes that as well.
    Path growing;
    growing.ResolvePathIfNeccessary();
    growing.SetRootMemberPool(map.houses);
    growing.SetDestinationProperty(map.number);
    EXPECT_EQ(NameOf(growing), "Houses:Number");
    growing.AddRootingMemberSelectionBack(map.toStreets);
    EXPECT_EQ(NameOf(growing), "Houses:In it:Number");
    growing.AddRootingMemberSelectionFront(SelectionPtr(static_cast<MemberSelectionProperty*>(nullptr)));
    growing.SetDestinationProperty(PropertyPtr(static_cast<Property*>(nullptr)));
    MemberSelection* const ofNil = MemberSelectionProperty::NIL->GetMemberSelection(map.cities, 0);
    growing.SetDestinationMemberSelectionNoIndices(&map.cities);
    EXPECT_EQ(growing.GetDestinationMemberSelectionUsingIndices(), nullptr);
    EXPECT_EQ(MemberSelectionProperty::NIL->GetMemberSelection(map.cities, 0), ofNil) << "everybody's";
}

TEST(Paths, BecomeOthersAfterTheyWereUsed) {
    Map map;
    PropertyPtr const nobodys[] = {Property::NIL, Value("No pool's"), PropertyPtr(static_cast<Property*>(nullptr))};
    for (PropertyPtr const& target : {map.number, nobodys[0], nobodys[1], nobodys[2]}) {
        bool const leads = target == map.number;
        Path shortest = map.path;
        shortest.SetDestinationProperty(map.toStreets);
        EXPECT_EQ(NameOf(shortest), "Cities:In it:Along it:In it");
        shortest.MakeShortestPossiblePathToProperty(target);
        std::string const saved = Saved(shortest);
        EXPECT_EQ(saved, leads ? map.houses.ID() + " 0 " + ID(map.number) : "0 0 0");
        std::istringstream text(saved);
        Path loaded = map.path;
        ASSERT_TRUE(loaded.ResolvePathIfNeccessary());
        loaded.LoadFromStream(text);
        for (Path* const path : {&shortest, &loaded}) {
            path->SetRootMemberPoolID(map.houses.GetMemberPoolID());
            EXPECT_EQ(NameOf(*path), leads ? "Houses:Number" : "Houses") << "it resolves again";
        }
    }
    EXPECT_EQ(NameOf(map.path), "Cities:In it:Along it:Number") << "copies are apart";
}

TEST(Paths, FailWhereAnIDLeadsNowhere) {
    Map map;
    SelectionPtr const baseless(new MemberSelectionProperty("Baseless"));
    map.houses.AddPoolProperty(baseless);
    std::string const cities = map.cities.ID();
    std::string const streets = ID(map.toStreets);
    for (auto const& [text, resolves] : std::map<std::string, bool>{
             {cities + " 1 " + streets + " 0", true},
             {cities + " 0 0", true},
             {"0 1 " + ID(map.number) + " 77", true}, // no root, no path
             {"77 0 0", false},
             {cities + " 1 77 0", false},
             {cities + " 1 " + ID(map.number) + " 0", false}, // of another type
             {cities + " 1 " + ID(baseless) + " 0", false},
             {cities + " 1 " + streets + " 77", false},
             {cities + " 1 " + streets + ' ' + ID(map.number), true},
         }) {
        SCOPED_TRACE(text);
        Path path = Loaded(text);
        EXPECT_EQ(Saved(path), text);
        MessageLog const log;
        EXPECT_EQ(path.ResolvePathIfNeccessary(), resolves);
        EXPECT_EQ(MessageLog::Take(), resolves ? Messages{} : Messages{"Path could not be resolved"});
        if (!resolves) {
            EXPECT_EQ(NameOf(path), UNRESOLVED);
            EXPECT_TRUE(LeadsNowhere(path));
            path.SetDestinationMemberSelectionNoIndices(&map.cities);
            EXPECT_TRUE(MessageLog::Take().empty()) << "once per resolution";
            Path::ForceGlobalPathResolve();
            EXPECT_FALSE(path.ResolvePathIfNeccessary());
            EXPECT_EQ(MessageLog::Take().size(), 1u);
        }
    }
}

TEST(Paths, NeverTakeOtherDataForSelections) {
    // The datum of one pool's property lies elsewhere, or is something else, in another pool's records.
    Map map;
    Path wrong;
    wrong.SetRootMemberPool(map.streets);
    wrong.AddRootingMemberSelectionBack(map.toStreets);
    EXPECT_TRUE(wrong.ResolvePathIfNeccessary());
    EXPECT_EQ(wrong.GetDestinationMemberSelectionUsingIndices(), nullptr);
    map.streets.ActivateFirstMember();
    MemberSelection const* const there = map.toHouses->GetMemberSelection(map.streets, 0);
    wrong.SetDestinationMemberSelectionNoIndices(&map.streets);
    wrong.SetDestinationMemberSelectionUsingIndices(&map.streets);
    EXPECT_EQ(map.toHouses->GetMemberSelection(map.streets, 0), there);
    // The destination may be of any pool, but is only read where records reach.
    wrong.Clear();
    wrong.SetRootMemberPool(map.houses);
    wrong.SetDestinationProperty(map.toStreets);
    EXPECT_EQ(wrong.GetDestinationPropertyDataUsingIndices(), nullptr);

    struct Pretender : ValueProperty {
        PropertyType GetPropertyType() override { return MEMBERSELECTION; }
    };
    PropertyPtr const pretender(new Pretender); // a class of the host's that only claims the type
    map.cities.AddPoolProperty(pretender);
    EXPECT_FALSE(Loaded(map.cities.ID() + " 1 " + ID(pretender) + " 0").ResolvePathIfNeccessary());

    // Members that went with their pool, in a selection that the host left there.
    std::optional<BuiltPool> gone(std::in_place);
    gone->AddMemberProperty(Value("Number"));
    gone->AddNewMember();
    MemberSelection orphans(&*gone);
    orphans.AddMembers(*gone, gone->GetAllMembers());
    map.path.SetDestinationMemberSelectionUsingIndices(&orphans);
    EXPECT_NE(map.path.GetDestinationPropertyDataUsingIndices(), nullptr);
    gone.reset();
    EXPECT_EQ(map.path.GetDestinationPropertyDataUsingIndices(), nullptr);
    map.toStreets->SetMemberSelection(&orphans, map.cities, 0);
    EXPECT_EQ(map.path.GetDestinationMemberSelectionUsingIndices(), nullptr);
}

TEST(Paths, KeepWhatTheyFoundUntilTheyResolveAgain) {
    Map map;
    ASSERT_TRUE(map.path.ResolvePathIfNeccessary());
    map.houses.InitializeMemberPool();
    EXPECT_EQ(NameOf(map.path), "Cities:In it:Along it:Number");
    Path::ForceGlobalPathResolve();
    EXPECT_EQ(NameOf(map.path), UNRESOLVED);

    std::optional<BuiltPool> mortal(std::in_place, "Mortal");
    Path path;
    path.SetRootMemberPool(*mortal);
    EXPECT_EQ(path.GetDestinationMemberSelectionNoIndices(), &*mortal);
    mortal.reset();
    EXPECT_EQ(path.GetDestinationMemberSelectionNoIndices(), nullptr);
    EXPECT_EQ(NameOf(path), "");
}

TEST(Paths, AreClearedByThePropertyTheyHeldLast) {
    static Path* cleared = nullptr;
    struct Clearing : MemberSelectionProperty {
        ~Clearing() { cleared->Clear(); }
    };
    Path path;
    cleared = &path;
    path.AddRootingMemberSelectionBack(SelectionPtr(new Clearing));
    path.AddRootingMemberSelectionBack(SelectionPtr(new Clearing));
    path.Clear();
    EXPECT_EQ(Saved(path), "0 0 0");
    EXPECT_EQ(NameOf(path), "");
    EXPECT_TRUE(LeadsNowhere(path));
    EXPECT_EQ(path.GetDestinationMemberSelectionID(), ShortID(0));
    EXPECT_EQ(path.GetIndicesForManipulation(), std::vector<int>{0});
}

TEST(Paths, ResolveAfterThePoolsAreBuilt) {
    SelectionPtr const own(new MemberSelectionProperty("Own"));
    std::optional<Constructor> construct(std::in_place, [&](MemberPool& pool) {
        own->SetBasePoolID(pool.GetMemberPoolID());
        pool.AddPoolProperty(own);
        PropertyPtr const speed = Value("Speed");
        speed->SetPropertyID(4711);
        pool.AddPoolProperty(speed);
    });
    Pool pool("Waiting");
    Path path = Loaded(std::to_string(static_cast<int>(pool.GetMemberPoolID())) + " 0 4711");
    EXPECT_EQ(NameOf(path), "Waiting:Speed") << "resolving has built the pool";
    EXPECT_NE(path.GetDestinationPropertyDataNoIndices(), nullptr);
    EXPECT_EQ(own->GetBasePool(), &pool);
    construct.reset();
    MainContext().ForceReconstructAllMemberPools();
    EXPECT_EQ(NameOf(path), UNRESOLVED) << "the pass has taken the property away";
}

TEST(PathText, EndsWhereItStopsBeingOne) {
    struct Row {
        std::string text;
        std::string read; ///< What is saved again.
        bool good;
    };
    Row const table[] = {
        {"17 2 5 -3 42\0"s, "17 2 5 -3 42", true},
        {"-2147483648 0 2147483647", "-2147483648 0 2147483647", true},
        {"  17\n0\t1 and more", "17 0 1", true},
        {"", "0 0 0", false},
        {"17", "17 0 0", false},
        {"17 2 5", "17 1 5 0", false},
        {"17 2 5 -3", "17 2 5 -3 0", false},
        {"17 2 5\0-3 42"s, "17 1 5 0", false},
        {"2147483648 0 1", "0 0 0", false},
        {"17 4294967296 1 2", "17 0 0", false},
        {"17 1 2147483648 3", "17 0 0", false},
        {"17 0 -2147483649", "17 0 0", false},
        {"17 4294967295 1 2 3", "17 3 1 2 3 0", false},
        {"17 -1 1 2", "17 2 1 2 0", false}, // streams read it as the largest count
    };
    for (Row const& row : table) {
        SCOPED_TRACE(row.text);
        std::istringstream stream(row.text);
        Path path;
        path.SetRootMemberPoolID(99);
        std::size_t const before = BytesAllocatedSoFar();
        path.LoadFromStream(stream);
        EXPECT_LT(BytesAllocatedSoFar(), before + 1000) << "no memory for levels to come";
        EXPECT_EQ(Saved(path), row.read);
        EXPECT_EQ(!stream.fail(), row.good);
    }
}

TEST(PathText, HoldsSeveralPathsInARow) {
    Map const map;
    std::stringstream stream;
    Path const paths[] = {Path(), map.path, Path()};
    for (Path const& path : paths) {
        path.SaveToStream(stream);
    }
    Path loaded;
    for (Path const& path : paths) {
        loaded.LoadFromStream(stream);
        EXPECT_EQ(Saved(loaded), Saved(path));
    }
    EXPECT_EQ(stream.peek(), '\0') << "left for whoever reads on";
    loaded.LoadFromStream(stream);
    EXPECT_TRUE(stream.fail());
}

} // namespace
