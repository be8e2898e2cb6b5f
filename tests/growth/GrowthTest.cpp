// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// What an item costs must not grow with what was done before. The library is built here so that it counts its own steps
// (basic blocks), the bytes that it moves and those that it allocates; no clock is read.

#include "support/Allocations.h"
#include "support/Host.h"

#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>

namespace {

std::size_t steps = 0;
std::size_t bytesMoved = 0;

} // namespace

// Called by the library for each basic block.
extern "C" void __sanitizer_cov_trace_pc() { // NOLINT(bugprone-reserved-identifier)
    ++steps;
}
// In place of the functions of these names.
extern "C" void* __real_memmove(void* to, void const* from, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
extern "C" void* __wrap_memmove(void* to, void const* from, std::size_t size) { // NOLINT(bugprone-reserved-identifier)
    bytesMoved += size;
    return __real_memmove(to, from, size);
}
extern "C" void* __real_memcpy(void* to, void const* from, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
extern "C" void* __wrap_memcpy(void* to, void const* from, std::size_t size) { // NOLINT(bugprone-reserved-identifier)
    bytesMoved += size;
    return __real_memcpy(to, from, size);
}

namespace {

using namespace Gentra;
using namespace Support;

std::size_t Work() {
    return steps + (bytesMoved + BytesAllocatedSoFar()) / 16;
}

/// Does something n times in a world of that size, and says how much work that was; the making of the world does not
/// count.
template<class Act>
std::size_t Measured(Act const& act) {
    std::size_t const before = Work();
    act();
    return Work() - before;
}

constexpr int KEPT = 10; ///< How many members a list holds that is changed all the time.

struct Crowd : Pool {
    explicit Crowd(int count) {
        AddMemberProperty(Vector("Position"));
        SetMemberCount(count);
    }
};

std::size_t ChangeList(int n, std::function<void(MemberSelection&, Pool&, std::mt19937&)> const& change, int kept) {
    Crowd crowd(kept);
    MemberSelection list(&crowd);
    list.AddMembers(crowd, crowd.GetAllMembers());
    list.ActivateFirstMember();
    std::mt19937 random(1);
    return Measured([&] {
        for (int i = 0; i < n; ++i) {
            change(list, crowd, random);
        }
    });
}

void Replace(MemberSelection& list, Pool& pool, std::mt19937& random) {
    Member const some = pool.GetMemberByIndex(static_cast<int>(random() % static_cast<unsigned>(pool.GetNumMembers())));
    list.RemoveMember(some);
    list.AddMember(pool, some);
}
void Queue(MemberSelection& list, Pool& pool, std::mt19937&) {
    list.AddMember(pool, list.RemoveMemberByIndex(0));
}
void WalkAndReplace(MemberSelection& list, Pool& pool, std::mt19937&) {
    list.ActivateFirstMember();
    do {
        list.ActivateNextMember();
    } while (!list.FirstMemberActive());
    list.AddMember(pool, list.RemoveActiveMember());
}
void InsertAndRemove(MemberSelection& list, Pool& pool, std::mt19937& random) {
    Member const member = pool.GetMemberByIndex(0);
    random() % 2 == 0 ? list.InsertMemberAfterActiveMember(member) : list.InsertMemberBeforeActiveMember(member);
    list.RemoveMemberByIndex(static_cast<int>(random() % static_cast<unsigned>(list.GetNumMembers())));
    random() % 2 == 0 ? list.ActivateNextMember() : list.ActivatePreviousMember();
}

std::size_t Passes(int n, bool again, bool withOrganizer) {
    Crowd crowd(100);
    Constructor const constructor([](MemberPool& pool) { pool.AddMemberProperty(Vector("Position")); });
    return Measured([&] {
        for (int i = 0; i < n; ++i) {
            std::optional<Pool> waiting;
            if (again) {
                MainContext().ForceReconstructAllMemberPools();
            } else {
                waiting.emplace();
                MainContext().ForceConstructAllMemberPools();
            }
            if (withOrganizer) {
                static_cast<void>(MainContext().GetSpatialRelations().GetSpatialOrganizer(crowd));
            }
        }
    });
}

struct Silent final : Util::EventListener {
    Silent() : EventListener("Silent") { GlobalEventManager::RegisterListener(this, Util::EventType("Growth")); }
    void HandleEvent(Util::Event const&) override {}
};

template<class T>
std::size_t DestroyAll(std::vector<std::unique_ptr<T>> all, bool forwards) {
    return Measured([&] {
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[forwards ? i : all.size() - 1 - i].reset();
        }
    });
}
template<class T>
std::vector<std::unique_ptr<T>> Many(int n) {
    std::vector<std::unique_ptr<T>> all;
    for (int i = 0; i < n; ++i) {
        all.push_back(std::make_unique<T>());
    }
    return all;
}

/// The work of doing something n times.
struct Row {
    char const* name;
    std::size_t (*work)(int n);
    int smallest = 1000;
};

Row const rows[] = {
    {"a member is replaced by value, in a short list", [](int n) { return ChangeList(n, Replace, KEPT); }, 10'000},
    {"a queue moves on", [](int n) { return ChangeList(n, Queue, KEPT); }, 10'000},
    {"a list is walked and its first member replaced", [](int n) { return ChangeList(n, WalkAndReplace, KEPT); }},
    {"a member is inserted at the cursor and one removed by index",
     [](int n) { return ChangeList(n, InsertAndRemove, KEPT); }},
    {"a member is replaced by value, in a list of as many", [](int n) { return ChangeList(n, Replace, n); }},
    {"a queue of as many moves on", [](int n) { return ChangeList(n, Queue, n); }},
    {"a member is inserted and one removed, in a list of as many",
     [](int n) { return ChangeList(n, InsertAndRemove, n); }},
    {"members are removed and deleted in one go",
     [](int n) {
         Crowd crowd(n);
         std::vector<Member> going;
         for (int i = 0; i < n; i += 2) {
             going.push_back(crowd.GetMemberByIndex(i));
         }
         return Measured([&] { crowd.RemoveAndDeleteMembers(going); });
     }},
    {"a member property is added",
     [](int n) {
         Pool pool;
         return Measured([&] {
             for (int i = 0; i < n; ++i) {
                 pool.AddMemberProperty(new ValueProperty);
             }
         });
     }},
    {"a member is created whose record is larger than a block",
     [](int n) {
         Pool pool;
         pool.AddMemberProperty(new FixedSizeDataProperty(70'000u, nullptr));
         return Measured([&] { pool.SetMemberCount(n); }) - static_cast<std::size_t>(n) * 70'000 / 16;
     },
     100},
    {"a construct pass", [](int n) { return Passes(n, false, false); }},
    {"a construct pass, and an organizer", [](int n) { return Passes(n, false, true); }},
    {"a reconstruct pass", [](int n) { return Passes(n, true, false); }},
    {"a reconstruct pass, and an organizer", [](int n) { return Passes(n, true, true); }},
    {"a selection asks for an organizer and goes",
     [](int n) {
         Crowd crowd(1);
         return Measured([&] {
             for (int i = 0; i < n; ++i) {
                 auto const passing = std::make_unique<MemberSelection>(&crowd);
                 static_cast<void>(MainContext().GetSpatialRelations().GetSpatialOrganizer(*passing));
             }
         });
     }},
    {"a listener goes, the first one of its type", [](int n) { return DestroyAll(Many<Silent>(n), true); }},
    {"a listener goes, the last one of its type", [](int n) { return DestroyAll(Many<Silent>(n), false); }},
    {"a reference goes", [](int n) { return DestroyAll(Many<PropertyReference>(n), true); }},
    {"a context goes", [](int n) { return DestroyAll(Many<Context>(n), true); }, 300},
    {"a pool comes and goes beside a context that never builds",
     [](int n) {
         Context const second;
         return Measured([&] { DestroyAll(Many<Pool>(n), true); });
     }},
    {"members with selections and texts come and go",
     [](int n) {
         Pool pool;
         pool.AddMemberProperty(new MemberSelectionProperty);
         pool.AddMemberProperty(new TextProperty);
         return Measured([&] {
             pool.SetMemberCount(n);
             pool.RemoveAndDeleteMembers(std::vector<Member>(pool.GetAllMembers()));
             pool.SetMemberCount(n);
             pool.InitializeMemberPool();
         });
     }},
    {"a small pool is cleared that was large once", [](int n) {
         Pool pool;
         auto const selections = Util::RefCountPtr<MemberSelectionProperty>();
         auto const fill = [&](int count) {
             pool.AddMemberProperty(selections);
             pool.SetMemberCount(count);
             pool.InitializeMemberPool();
         };
         fill(n);
         return Measured([&] {
             for (int i = 0; i < n; ++i) {
                 fill(1);
             }
         });
     }}};

class Growth : public testing::TestWithParam<Row> {};

TEST_P(Growth, OfACostPerItemIsNone) {
    Row const& row = GetParam();
    constexpr std::size_t FACTOR = 8;
    GlobalMessageManager::ClearAllMessages();
    row.work(row.smallest); // whatever is made on first use
    auto const perItem = [&](std::size_t n) {
        return static_cast<double>(row.work(static_cast<int>(n))) / static_cast<double>(n);
    };
    double const small = perItem(static_cast<std::size_t>(row.smallest));
    double const large = perItem(FACTOR * static_cast<std::size_t>(row.smallest));
    std::printf("%-65s %9.1f steps an item, then %9.1f\n", row.name, small, large);
    EXPECT_LT(large, 2 * small) << row.name;
    EXPECT_GT(small, 0) << "nothing was counted";
}

INSTANTIATE_TEST_SUITE_P(Rows, Growth, testing::ValuesIn(rows));

} // namespace
