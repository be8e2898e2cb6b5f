// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Host.h"

#include "support/Allocations.h"

#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <sstream>

namespace {

using namespace Gentra;
using namespace Support;
using Util::ShortID;
using SelectionPtr = Util::RefCountPtr<MemberSelectionProperty>;

Util::String NameOf(Path& path) {
    Util::String name("unchanged");
    path.GetPathName(name);
    return name;
}

std::string Saved(Path const& path) {
    std::ostringstream stream;
    path.SaveToStream(stream);
    return stream.str();
}

/// A pool that waits for no pass any more, which would clear it.
struct BuiltPool : Pool {
    explicit BuiltPool(char const* newName = "Pool") : Pool(newName) { MainContext().ForceConstructAllMemberPools(); }
};

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
        toStreets->SetBasePoolFromID();
        toHouses->SetBasePoolFromID();
        cities.SetMemberCount(2);
        for (int city = 0; city < 2; ++city) {
            MemberSelection& ofCity = *toStreets->GetMemberSelection(cities, city);
            ofCity.SetMemberCount(3);
            for (int street = 0; street < 3; ++street) {
                MemberSelection& ofStreet = *toHouses->GetMemberSelection(ofCity, street);
                ofStreet.SetMemberCount(4);
                for (int house = 0; house < 4; ++house) {
                    auto value = static_cast<float>(100 * city + 10 * street + house);
                    number->SetDataToMemberSelection(&value, ofStreet, house);
                }
            }
        }
        path.SetRootMemberPool(cities);
        path.AddRootingMemberSelectionBack(toStreets);
        path.AddRootingMemberSelectionBack(toHouses);
        path.SetDestinationProperty(number);
    }
    static float ValueAt(void const* datum) { return datum != nullptr ? Datum::Read<float>(datum) : -1; }

    BuiltPool cities{"Cities"};
    BuiltPool streets{"Streets"};
    BuiltPool houses{"Houses"};
    SelectionPtr toStreets{new MemberSelectionProperty("In it")};
    SelectionPtr toHouses{new MemberSelectionProperty("Along it")};
    PropertyPtr number = Value("Number");
    Path path;
};

TEST(Paths, LeadNowhereWhenEmpty) {
    Path path;
    MessageLog const log;
    EXPECT_TRUE(path.ResolvePathIfNeccessary());
    EXPECT_EQ(NameOf(path), "");
    EXPECT_EQ(path.GetDestinationMemberSelectionNoIndices(), nullptr);
    EXPECT_EQ(path.GetDestinationMemberSelectionUsingIndices(), nullptr);
    EXPECT_FALSE(path.GetDestinationMemberNoIndices().IsValid() || path.GetDestinationMemberUsingIndices().IsValid());
    EXPECT_FALSE(path.GetDestinationPropertyDataNoIndices() || path.GetDestinationPropertyDataUsingIndices());
    EXPECT_EQ(path.GetDestinationPropertyIncludingMemberSelections(), Property::NIL);
    EXPECT_EQ(path.GetDestinationMemberSelectionID(), ShortID(0));
    EXPECT_EQ(path.GetIndicesForManipulation(), std::vector<int>{0});
    path.SetDestinationMemberSelectionNoIndices(nullptr);
    EXPECT_EQ(Saved(path), std::string("0 0 0\0", 6));
    EXPECT_TRUE(MessageLog::Take().empty());
}

TEST(Paths, WalkByActiveMembersAndByIndices) {
    Map map;
    Path& path = map.path;
    EXPECT_EQ(NameOf(path), "Cities:In it:Along it:Number");
    EXPECT_EQ(path.GetDestinationPropertyDataNoIndices(), nullptr) << "no active city";
    map.cities.ActivateMember(1);
    map.toStreets->GetMemberSelection(map.cities, -1)->ActivateMember(2);
    MemberSelection* const houses = path.GetDestinationMemberSelectionNoIndices();
    ASSERT_EQ(houses, map.toHouses->GetMemberSelection(*map.toStreets->GetMemberSelection(map.cities, 1), 2));
    EXPECT_EQ(path.GetDestinationMemberNoIndices(), Member::NIL);
    houses->ActivateMember(3);
    EXPECT_EQ(path.GetDestinationMemberNoIndices(), houses->GetMemberByIndex(3));
    EXPECT_EQ(Map::ValueAt(path.GetDestinationPropertyDataNoIndices()), 123);

    for (auto const& [indices, value] :
         std::map<std::vector<int>, float>{{{0, 0, 0}, 0},
                                           {{1, 1, 2}, 112},
                                           {{0, 2, 3}, 23},
                                           {{2, 0, 0}, -1},
                                           {{0, 3, 0}, -1},
                                           {{0, 0, 4}, -1},
                                           {{-1, -1, -1}, 123},
                                           {{}, -1},
                                           {{1}, -1},
                                           {{1, std::numeric_limits<int>::max(), 0}, -1},
                                           {{std::numeric_limits<int>::min(), 2, 0}, 120}}) {
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

    // A level shares the property with the pool: nothing is a copy of anything.
    Path withoutDestination;
    withoutDestination.SetRootMemberPoolID(map.cities.GetMemberPoolID());
    withoutDestination.AddRootingMemberSelectionBack(map.toStreets);
    int const count = map.toStreets.GetCount();
    withoutDestination.ResolvePath();
    EXPECT_EQ(map.toStreets.GetCount(), count) << "one reference for one";
    EXPECT_EQ(withoutDestination.GetDestinationPropertyIncludingMemberSelections(), map.toStreets);
    EXPECT_EQ(path.GetDestinationPropertyIncludingMemberSelections(), map.number);
    EXPECT_EQ(withoutDestination.GetDestinationPropertyDataUsingIndices(), nullptr);
    EXPECT_EQ(NameOf(withoutDestination), "Cities:In it");
}

TEST(Paths, StoreSelections) {
    Map map;
    MemberSelection stored(&map.houses);
    map.cities.ActivateMember(0);
    MemberSelection& streets = *map.toStreets->GetMemberSelection(map.cities, 0);
    streets.ActivateMember(1);
    map.path.SetDestinationMemberSelectionNoIndices(&stored);
    EXPECT_EQ(map.path.GetDestinationMemberSelectionNoIndices(), &stored);
    map.path.GetIndicesForManipulation() = {1, 2, 0};
    map.path.SetDestinationMemberSelectionUsingIndices(&stored);
    EXPECT_EQ(map.toHouses->GetMemberSelection(*map.toStreets->GetMemberSelection(map.cities, 1), 2), &stored);
    EXPECT_NE(map.toHouses->GetMemberSelection(streets, 2), &stored);
    EXPECT_NE(map.toHouses->GetMemberSelection(streets, 0), &stored);
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
    for (int i = 0; i < 2; ++i) {
        root.SetDestinationMemberSelectionNoIndices(&stored);
        root.SetDestinationMemberSelectionUsingIndices(&stored);
    }
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
    EXPECT_EQ(growing.GetDestinationMemberSelectionNoIndices(), &map.houses);
    growing.SetDestinationProperty(map.number);
    EXPECT_EQ(NameOf(growing), "Houses:Number");
    EXPECT_EQ(Map::ValueAt(growing.GetDestinationPropertyDataUsingIndices()), 0);
    // A used path becomes another one.
    Path used = map.path;
    EXPECT_EQ(NameOf(used), "Cities:In it:Along it:Number");
    used.MakeShortestPossiblePathToProperty(map.number);
    EXPECT_EQ(NameOf(used), "Houses:Number");
    EXPECT_EQ(Saved(used), Saved(growing));
    used = map.path;
    ASSERT_TRUE(used.ResolvePathIfNeccessary());
    std::istringstream text(Saved(growing));
    used.LoadFromStream(text);
    EXPECT_EQ(Saved(used), Saved(growing));
    EXPECT_EQ(NameOf(used), "Houses:Number");
    used = map.path;
    ASSERT_TRUE(used.ResolvePathIfNeccessary());
    used.Clear();
    EXPECT_EQ(Saved(used), std::string("0 0 0\0", 6));
    used.SetRootMemberPoolID(map.houses.GetMemberPoolID());
    EXPECT_EQ(NameOf(used), "Houses") << "it resolves again";

    Path shortest;
    shortest.MakeShortestPossiblePathToProperty(map.number);
    EXPECT_EQ(NameOf(shortest), "Houses:Number");
    map.houses.ActivateMember(5);
    EXPECT_EQ(Map::ValueAt(shortest.GetDestinationPropertyDataNoIndices()), 11);
    for (PropertyPtr const& nowhere :
         {Property::NIL, PropertyPtr(Value("No pool's")), PropertyPtr(static_cast<Property*>(nullptr))}) {
        shortest.MakeShortestPossiblePathToProperty(map.number);
        shortest.MakeShortestPossiblePathToProperty(nowhere);
        EXPECT_EQ(Saved(shortest), std::string("0 0 0\0", 6));
    }
    Path copy = map.path;
    EXPECT_EQ(Saved(copy), Saved(map.path));
    copy.Clear();
    EXPECT_EQ(NameOf(map.path), "Cities:In it:Along it:Number");

    Path ofNothing;
    ofNothing.SetRootMemberPool(map.cities);
    ofNothing.ResolvePathIfNeccessary();
    ofNothing.AddRootingMemberSelectionFront(SelectionPtr(static_cast<MemberSelectionProperty*>(nullptr)));
    ofNothing.SetDestinationProperty(PropertyPtr(static_cast<Property*>(nullptr)));
    EXPECT_EQ(ofNothing.GetDestinationMemberSelectionUsingIndices(), nullptr);
    MemberSelection* const ofNil = MemberSelectionProperty::NIL->GetMemberSelection(map.cities, 0);
    ofNothing.SetDestinationMemberSelectionNoIndices(&map.cities);
    EXPECT_EQ(MemberSelectionProperty::NIL->GetMemberSelection(map.cities, 0), ofNil) << "everybody's";
}

TEST(Paths, FailWhereAnIDLeadsNowhere) {
    Map map;
    BuiltPool stray;
    SelectionPtr const baseless(new MemberSelectionProperty("Baseless"));
    stray.AddMemberProperty(baseless);
    auto const id = [](PropertyPtr const& property) { return property->GetPropertyID(); };
    ShortID const cities = map.cities.GetMemberPoolID();
    struct Row {
        std::vector<ShortID> ids; ///< Root, levels, destination.
        bool resolves;
    };
    Row const table[] = {
        {{cities, id(map.toStreets), 0}, true},
        {{cities, 0}, true},
        {{0, id(map.number), 77}, true}, // no root, no path
        {{77, 0}, false},
        {{cities, 77, 0}, false},
        {{cities, id(map.number), 0}, false}, // of another type
        {{cities, id(baseless), 0}, false},
        {{cities, id(map.toStreets), 77}, false},
        {{cities, id(map.toStreets), id(map.number)}, true},
    };
    for (Row const& row : table) {
        std::stringstream text;
        text << static_cast<int>(row.ids.front()) << ' ' << row.ids.size() - 2;
        for (auto each = row.ids.begin() + 1; each != row.ids.end(); ++each) {
            text << ' ' << static_cast<int>(*each);
        }
        SCOPED_TRACE(text.str());
        Path path;
        path.LoadFromStream(text);
        EXPECT_EQ(Saved(path), text.str() + '\0');
        MessageLog const log;
        EXPECT_EQ(path.ResolvePathIfNeccessary(), row.resolves);
        EXPECT_EQ(MessageLog::Take(), row.resolves ? Messages{} : Messages{"Path could not be resolved"});
        if (!row.resolves) {
            EXPECT_EQ(NameOf(path), "Path not resolved");
            EXPECT_EQ(path.GetDestinationMemberSelectionNoIndices(), nullptr);
            EXPECT_EQ(path.GetDestinationMemberUsingIndices(), Member::NIL);
            EXPECT_EQ(path.GetDestinationPropertyDataNoIndices(), nullptr);
            EXPECT_EQ(path.GetDestinationPropertyIncludingMemberSelections(), Property::NIL);
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
    wrong.SetRootMemberPool(map.houses);
    wrong.AddRootingMemberSelectionBack(map.toStreets);
    EXPECT_TRUE(wrong.ResolvePathIfNeccessary());
    EXPECT_EQ(wrong.GetDestinationMemberSelectionUsingIndices(), nullptr);
    MemberSelection selection(&map.streets);
    map.houses.ActivateFirstMember();
    std::vector<unsigned char> const before(map.houses.ActiveMember().record, map.houses.ActiveMember().record + 4);
    wrong.SetDestinationMemberSelectionNoIndices(&selection);
    wrong.SetDestinationMemberSelectionUsingIndices(&selection);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), map.houses.ActiveMember().record));
    // The destination may be of any pool, but is only read where records reach.
    Path beyond;
    beyond.SetRootMemberPool(map.houses);
    beyond.SetDestinationProperty(map.toStreets);
    EXPECT_EQ(beyond.GetDestinationPropertyDataUsingIndices(), nullptr);

    // Classes of the host's that only claim the type, or deny it.
    struct Pretender : ValueProperty {
        Pretender() : ValueProperty("Pretender") {}
        PropertyType GetPropertyType() override { return MEMBERSELECTION; }
    };
    struct Denier : MemberSelectionProperty {
        PropertyType GetPropertyType() override { return VALUE; }
    };
    BuiltPool pool;
    Util::RefCountPtr<MemberSelectionProperty> const denier(new Denier);
    denier->SetBasePoolID(pool.GetMemberPoolID());
    denier->SetBasePoolFromID();
    for (PropertyPtr const& property : {PropertyPtr(new Pretender), PropertyPtr(denier)}) {
        pool.AddMemberProperty(property);
        std::stringstream text(std::to_string(static_cast<int>(pool.GetMemberPoolID())) + " 1 " +
                               std::to_string(static_cast<int>(property->GetPropertyID())) + " 0");
        Path path;
        path.LoadFromStream(text);
        EXPECT_FALSE(path.ResolvePathIfNeccessary());
    }

    // Members that went with their pool, in a selection that the host left there.
    std::optional<Pool> gone(std::in_place);
    gone->AddMemberProperty(Value("Number"));
    gone->AddNewMember();
    MemberSelection orphans(&*gone);
    orphans.AddMembers(*gone, gone->GetAllMembers());
    map.cities.ActivateFirstMember();
    map.toStreets->GetMemberSelection(map.cities, 0)->ActivateFirstMember();
    map.path.SetDestinationMemberSelectionNoIndices(&orphans);
    gone.reset();
    EXPECT_EQ(map.path.GetDestinationPropertyDataUsingIndices(), nullptr);
}

TEST(Paths, KeepWhatTheyFoundUntilTheyResolveAgain) {
    Map map;
    ASSERT_TRUE(map.path.ResolvePathIfNeccessary());
    map.houses.InitializeMemberPool();
    MessageLog const log;
    EXPECT_EQ(NameOf(map.path), "Cities:In it:Along it:Number");
    EXPECT_EQ(map.path.GetDestinationPropertyIncludingMemberSelections(), map.number);
    Path::ForceGlobalPathResolve();
    EXPECT_EQ(NameOf(map.path), "Path not resolved");
    EXPECT_EQ(MessageLog::Take(), Messages{"Path could not be resolved"});

    std::optional<BuiltPool> mortal(std::in_place, "Mortal");
    Path path;
    path.SetRootMemberPool(*mortal);
    EXPECT_EQ(path.GetDestinationMemberSelectionNoIndices(), &*mortal);
    mortal.reset();
    EXPECT_EQ(path.GetDestinationMemberSelectionNoIndices(), nullptr);
    path.SetDestinationMemberSelectionNoIndices(nullptr);
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
    EXPECT_EQ(Saved(path), std::string("0 0 0\0", 6));
}

TEST(Paths, ResolveAfterThePoolsAreBuilt) {
    std::optional<Constructor> construct(std::in_place, [](MemberPool& pool) {
        PropertyPtr const speed = Value("Speed");
        speed->SetPropertyID(4711);
        pool.AddPoolProperty(speed);
    });
    Pool pool("Waiting");
    Path path;
    path.SetRootMemberPool(pool);
    path.SetDestinationProperty(Value("Speed"));
    std::stringstream text(std::to_string(static_cast<int>(pool.GetMemberPoolID())) + " 0 4711");
    path.LoadFromStream(text);
    EXPECT_EQ(NameOf(path), "Waiting:Speed") << "resolving has built the pool";
    EXPECT_NE(path.GetDestinationPropertyDataNoIndices(), nullptr);
    construct.reset();
    MainContext().ForceReconstructAllMemberPools();
    EXPECT_EQ(NameOf(path), "Path not resolved") << "the pass has taken the property away";
}

TEST(PathText, EndsWhereItStopsBeingOne) {
    struct Row {
        std::string text;
        std::string read; ///< What is saved again, without the NUL.
        bool good;
    };
    std::string const nul(1, '\0');
    Row const table[] = {
        {"17 2 5 -3 42" + nul, "17 2 5 -3 42", true},
        {"-2147483648 0 2147483647", "-2147483648 0 2147483647", true},
        {"  17\n0\t1 and more", "17 0 1", true},
        {"", "0 0 0", false},
        {"x", "0 0 0", false},
        {"17", "17 0 0", false},
        {"17 x", "17 0 0", false},
        {"17 2", "17 0 0", false},
        {"17 2 5", "17 1 5 0", false},
        {"17 2 5 x 42", "17 1 5 0", false},
        {"17 2 5 -3", "17 2 5 -3 0", false},
        {"17 2 5 -3 y", "17 2 5 -3 0", false},
        {"17 2 5" + nul + "-3 42", "17 1 5 0", false},
        {"2147483648 0 1", "0 0 0", false},
        {"-99999999999999999999 0 1", "0 0 0", false},
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
        EXPECT_EQ(Saved(path), row.read + nul);
        EXPECT_EQ(!stream.fail(), row.good);
        Path again;
        std::istringstream copy(Saved(path));
        again.LoadFromStream(copy);
        EXPECT_EQ(Saved(again), Saved(path));
        path.ResolvePathIfNeccessary();
    }
}

TEST(PathText, HoldsSeveralPathsInARow) {
    Map map;
    std::stringstream stream;
    Path const empty;
    Path root;
    root.SetRootMemberPoolID(-5);
    for (Path const* const path :
         {&empty, static_cast<Path const*>(&map.path), &empty, static_cast<Path const*>(&root)}) {
        path->SaveToStream(stream);
    }
    for (Path const* const path :
         {&empty, static_cast<Path const*>(&map.path), &empty, static_cast<Path const*>(&root)}) {
        Path loaded;
        loaded.LoadFromStream(stream);
        EXPECT_EQ(Saved(loaded), Saved(*path));
    }
    EXPECT_EQ(stream.peek(), '\0') << "left for whoever reads on";
    Path none;
    none.LoadFromStream(stream);
    EXPECT_TRUE(stream.fail());
    std::ostringstream padded;
    padded << std::showpos;
    root.SaveToStream(padded);
    EXPECT_EQ(padded.str(), std::string("-5 0 +0\0", 8)) << "flags apply, as to any number";
}

class PathModel : public testing::TestWithParam<unsigned int> {};

/// Random paths through pools and properties that come and go, against a walk written down again.
TEST_P(PathModel, AgreesWithWhatThereIs) {
    std::mt19937 random(GetParam());
    auto const below = [&](std::size_t n) { return random() % n; };
    std::vector<std::unique_ptr<BuiltPool>> pools;
    std::vector<SelectionPtr> levels;
    std::vector<PropertyPtr> ends;
    auto const some = [&](auto const& list) -> auto& {
        return list[below(list.size())];
    };
    auto const grow = [&] {
        pools.push_back(std::make_unique<BuiltPool>());
        Pool& pool = *pools.back();
        for (std::size_t i = below(3); i > 0; --i) {
            pool.AddMemberProperty(Value("Filler"));
        }
        SelectionPtr const level(new MemberSelectionProperty("Level"));
        level->SetBasePoolID(some(pools)->GetMemberPoolID());
        level->SetBasePoolFromID();
        pool.AddMemberProperty(level);
        ends.push_back(Value("End"));
        pool.AddMemberProperty(ends.back());
        levels.push_back(level);
        pool.SetMemberCount(static_cast<int>(below(4)));
        for (auto const& each : pools) { // fills some of the selections
            for (int i = 0; i < each->GetNumMembers(); ++i) {
                SelectionPtr const property = each->GetPropertyFromName("Level").DynamicCast<MemberSelectionProperty>();
                MemberSelection* const selection =
                    property.Get() != nullptr ? property->GetMemberSelection(*each, i) : nullptr;
                MemberPool* const base = selection != nullptr ? selection->GetBasePool() : nullptr;
                if (base != nullptr && base->GetNumMembers() > 0 && below(2) == 0) {
                    selection->AddMember(*base, base->GetMemberByIndex(0));
                }
            }
        }
    };
    for (int i = 0; i < 4; ++i) {
        grow();
    }
    for (int step = 0; step < 200; ++step) {
        switch (below(6)) {
        case 0:
            grow();
            break;
        case 1:
            if (pools.size() > 2) {
                pools.erase(pools.begin() + static_cast<std::ptrdiff_t>(below(pools.size())));
                Path::ForceGlobalPathResolve();
            }
            break;
        case 2:
            some(pools)->SetNewMemberPoolID(ShortID());
            break;
        case 3: {
            Pool& pool = *some(pools);
            if (pool.GetNumMembers() > 0) {
                pool.ActivateMember(static_cast<int>(below(static_cast<std::size_t>(pool.GetNumMembers()))));
            }
            break;
        }
        default:
            break;
        }
        Path path;
        ShortID const rootID = some(pools)->GetMemberPoolID();
        std::vector<SelectionPtr> chain;
        PropertyPtr end = Property::NIL;
        path.SetRootMemberPoolID(rootID);
        for (std::size_t i = below(4); i > 0; --i) {
            chain.push_back(some(levels));
            path.AddRootingMemberSelectionBack(chain.back());
        }
        if (below(2) == 0) {
            end = some(ends);
            path.SetDestinationProperty(end);
        }
        std::stringstream text;
        path.SaveToStream(text);
        Path loaded;
        loaded.LoadFromStream(text);

        MemberPool* const root = MainContext().GetMemberPoolFromID(rootID);
        auto const isKnown = [](PropertyPtr const& property) {
            return MainContext().GetPropertyByID(property->GetPropertyID()) == property;
        };
        bool resolves = root != nullptr;
        for (SelectionPtr const& level : chain) {
            resolves = resolves && isKnown(level) && level->GetBasePool() != nullptr;
        }
        resolves = resolves && (end == Property::NIL || isKnown(end));
        bool const usingIndices = below(2) == 0;
        std::vector<int>& indices = loaded.GetIndicesForManipulation();
        for (int& index : indices) {
            index = static_cast<int>(below(3));
        }
        MemberSelection* expected = resolves ? root : nullptr;
        for (std::size_t i = 0; i < chain.size() && expected != nullptr; ++i) {
            MemberSelectionProperty& level = *chain[i];
            Member const member = usingIndices ? expected->GetMemberByIndex(indices[i]) : expected->ActiveMember();
            bool const isHere = level.GetOwnerPool() == expected->GetBasePool();
            expected = isHere && member.IsValid() ? Datum::Read<MemberSelection*>(member.record + level.GetDataOffset())
                                                  : nullptr;
        }
        ASSERT_EQ(loaded.ResolvePathIfNeccessary(), resolves) << "step " << step;
        ASSERT_EQ(usingIndices ? loaded.GetDestinationMemberSelectionUsingIndices()
                               : loaded.GetDestinationMemberSelectionNoIndices(),
                  expected)
            << "step " << step;
        void const* const datum = usingIndices ? loaded.GetDestinationPropertyDataUsingIndices()
                                               : loaded.GetDestinationPropertyDataNoIndices();
        if (expected == nullptr || end == Property::NIL) {
            ASSERT_EQ(datum, nullptr);
        } else if (end->GetOwnerPool() == expected->GetBasePool()) {
            Member const member = usingIndices ? expected->GetMemberByIndex(indices.back()) : expected->ActiveMember();
            ASSERT_EQ(datum, member.IsValid() ? member.record + end->GetDataOffset() : nullptr);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PathModel, testing::Range(0u, 12u));

} // namespace
