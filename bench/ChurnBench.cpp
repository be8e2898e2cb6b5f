// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Create N members, remove and delete half of them at random, create half again.

#include "RatioTable.h"

#include <gentra/gentra.h>

#include <ext/pb_ds/assoc_container.hpp>
#include <ext/pb_ds/tree_policy.hpp>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Gentra;

constexpr std::size_t RECORD_SIZE = 28;

/// By hand: records in blocks, a free list, and a vector of members from which the last one fills a gap.
class HandMadePool {
public:
    HandMadePool() { std::memset(defaults, 1, sizeof defaults); }
    void Create() {
        if (freeRecords.empty()) {
            constexpr std::size_t count = 65536 / RECORD_SIZE;
            blocks.push_back(std::make_unique_for_overwrite<unsigned char[]>(count * RECORD_SIZE));
            for (std::size_t i = 0; i < count; ++i) {
                freeRecords.push_back(blocks.back().get() + i * RECORD_SIZE);
            }
        }
        unsigned char* const record = freeRecords.back();
        freeRecords.pop_back();
        std::memcpy(record, defaults, RECORD_SIZE);
        members.push_back(record);
    }
    void Delete(std::size_t index) {
        freeRecords.push_back(members[index]);
        members[index] = members.back();
        members.pop_back();
    }
    std::vector<unsigned char*> members;
    std::vector<unsigned char*> freeRecords;

private:
    unsigned char defaults[RECORD_SIZE];
    std::vector<std::unique_ptr<unsigned char[]>> blocks;
};

std::uint64_t Result(std::size_t members) {
    return static_cast<std::uint64_t>(members) << 12;
}

/// The positions of victims, each among the members that are left then.
std::vector<std::size_t> Positions(std::size_t count) {
    std::mt19937 random(1);
    std::vector<std::size_t> positions;
    for (std::size_t left = count; left > count / 2; --left) {
        positions.push_back(random() % left);
    }
    return positions;
}

/// Which of so many are to go, in the order in which they are walked past.
std::vector<bool> Chosen(std::size_t count) {
    std::vector<bool> chosen(count);
    std::fill(chosen.begin(), chosen.begin() + static_cast<std::ptrdiff_t>(count / 2), true);
    std::shuffle(chosen.begin(), chosen.end(), std::mt19937(1));
    return chosen;
}

/// Lets `thin` take half of them out.
template<class Thin>
void ByHand(benchmark::State& state, Thin const& thin) {
    auto const count = static_cast<std::size_t>(state.range(0));
    std::size_t members = 0;
    for (auto _ : state) {
        HandMadePool pool;
        for (std::size_t i = 0; i < count; ++i) {
            pool.Create();
        }
        thin(pool);
        for (std::size_t i = 0; i < count / 2; ++i) {
            pool.Create();
        }
        members = pool.members.size();
        benchmark::DoNotOptimize(pool.members.data());
    }
    Bench::SetResult(state, Result(members));
}

void AnyByHand(benchmark::State& state) {
    std::vector<std::size_t> const positions = Positions(static_cast<std::size_t>(state.range(0)));
    ByHand(state, [&](HandMadePool& pool) {
        for (std::size_t const position : positions) {
            pool.Delete(position);
        }
    });
}

void WalkByHand(benchmark::State& state) {
    std::vector<bool> const chosen = Chosen(static_cast<std::size_t>(state.range(0)));
    ByHand(state, [&](HandMadePool& pool) {
        std::size_t position = 0;
        for (bool const goes : chosen) {
            if (goes) {
                pool.Delete(position);
            } else {
                ++position;
            }
        }
    });
}

/// What keeps the order and finds positions: GNU's order-statistics tree, of records by the time of their creation.
void ByTree(benchmark::State& state) {
    using Tree = __gnu_pbds::tree<std::size_t, unsigned char*, std::less<>, __gnu_pbds::rb_tree_tag,
                                  __gnu_pbds::tree_order_statistics_node_update>;
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<std::size_t> const positions = Positions(count);
    std::size_t members = 0;
    for (auto _ : state) {
        HandMadePool pool;
        Tree tree;
        std::size_t created = 0;
        auto const create = [&](std::size_t howMany) {
            for (std::size_t i = 0; i < howMany; ++i) {
                pool.Create();
                tree.insert({created++, pool.members.back()});
            }
        };
        create(count);
        for (std::size_t const position : positions) {
            auto const victim = tree.find_by_order(position);
            pool.freeRecords.push_back(victim->second);
            tree.erase(victim);
        }
        create(count / 2);
        members = tree.size();
        benchmark::DoNotOptimize(&tree);
    }
    Bench::SetResult(state, Result(members));
}

/// Lets `thin` take half of them out; what `choose` makes of the pool before, is not timed.
template<class Choose, class Thin>
void Library(benchmark::State& state, Choose const& choose, Thin const& thin) {
    auto const count = static_cast<int>(state.range(0));
    std::size_t members = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pool = std::make_unique<MemberPool>(ContextManager::GetMainContext());
        pool->AddMemberProperty(new VectorProperty("Position"));
        pool->AddMemberProperty(new VectorProperty("Velocity"));
        pool->AddMemberProperty(new ValueProperty("Count"));
        state.ResumeTiming();

        pool->SetMemberCount(count);
        state.PauseTiming();
        auto const victims = choose(*pool);
        state.ResumeTiming();
        thin(*pool, victims);
        pool->SetMemberCount(count);
        members = pool->GetAllMembers().size();
        pool.reset();
    }
    Bench::SetResult(state, Result(members));
}

void ByIndex(benchmark::State& state) {
    std::vector<std::size_t> const positions = Positions(static_cast<std::size_t>(state.range(0)));
    Library(
        state, [](MemberPool&) { return 0; },
        [&](MemberPool& pool, int) {
            for (std::size_t const position : positions) {
                pool.DeleteMember(pool.RemoveMemberByIndex(static_cast<int>(position)));
            }
        });
}

void ByValue(benchmark::State& state) {
    std::vector<std::size_t> const positions = Positions(static_cast<std::size_t>(state.range(0)));
    auto const choose = [&](MemberPool& pool) {
        std::vector<Member> victims;
        std::vector<Member> left = pool.GetAllMembers();
        for (std::size_t const position : positions) {
            victims.push_back(left[position]);
            left[position] = left.back();
            left.pop_back();
        }
        return victims;
    };
    Library(state, choose, [](MemberPool& pool, std::vector<Member> const& victims) {
        for (Member const victim : victims) {
            pool.RemoveMember(victim);
            pool.DeleteMember(victim);
        }
    });
}

void InOneGo(benchmark::State& state) {
    std::vector<bool> const chosen = Chosen(static_cast<std::size_t>(state.range(0)));
    auto const choose = [&](MemberPool& pool) {
        std::vector<Member> victims;
        for (std::size_t i = 0; i < chosen.size(); ++i) {
            if (chosen[i]) {
                victims.push_back(pool.GetAllMembers()[i]);
            }
        }
        return victims;
    };
    Library(state, choose,
            [](MemberPool& pool, std::vector<Member> const& victims) { pool.RemoveAndDeleteMembers(victims); });
}

void ByCursor(benchmark::State& state) {
    std::vector<bool> const chosen = Chosen(static_cast<std::size_t>(state.range(0)));
    Library(
        state, [](MemberPool&) { return 0; },
        [&](MemberPool& pool, int) {
            pool.ActivateFirstMember();
            for (bool const goes : chosen) {
                if (goes) {
                    pool.DeleteMember(pool.RemoveActiveMember());
                } else {
                    pool.ActivateNextMember();
                }
            }
        });
}

void Register() {
    struct Variant {
        char const* name;
        void (*run)(benchmark::State&);
        char const* baseline;
        double aim;
    };
    for (int const count : {1000, 100'000, 1'000'000}) {
        std::string const n = "/" + std::to_string(count);
        std::string const label = "churn " + std::to_string(count) + ": ";
        benchmark::RegisterBenchmark("churn-hand", AnyByHand)->Arg(count);
        benchmark::RegisterBenchmark("churn-walk", WalkByHand)->Arg(count);
        benchmark::RegisterBenchmark("churn-tree", ByTree)->Arg(count);
        for (Variant const& variant : {Variant{"value", ByValue, "hand", 4.5}, Variant{"cursor", ByCursor, "walk", 4.5},
                                       Variant{"set", InOneGo, "walk", 4.5}, Variant{"index", ByIndex, "tree", 0.5}}) {
            std::string const name = std::string("churn-") + variant.name;
            benchmark::RegisterBenchmark(name.c_str(), variant.run)->Arg(count);
            Bench::CompareTimes(label + "by " + variant.name + " / " + variant.baseline, name + n,
                                std::string("churn-") + variant.baseline + n, variant.aim);
        }
    }
}

[[maybe_unused]] int const registered = (Register(), 0);

} // namespace
