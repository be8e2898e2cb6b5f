// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Filling, reading and thinning out selections.

#include "RatioTable.h"

#include <gentra/gentra.h>

#include <algorithm>
#include <list>
#include <random>

namespace {

using namespace Gentra;

std::vector<unsigned char>& Records() {
    static std::vector<unsigned char> records(1'000'000);
    return records;
}

std::vector<Member> SomeMembers(std::size_t count) {
    std::vector<Member> members;
    for (std::size_t i = 0; i < count; ++i) {
        members.emplace_back(&Records()[i]);
    }
    return members;
}

MemberPool& Pool() {
    static MemberPool pool(ContextManager::GetMainContext());
    return pool;
}

std::uint64_t Result(std::vector<Member> const& members) {
    std::uint64_t hash = members.size() << 20;
    for (Member const& member : members) {
        hash = hash * 31 + static_cast<std::uint64_t>(member.record - Records().data() + 1);
    }
    return hash << 12;
}

void FillSelection(benchmark::State& state) {
    std::vector<Member> const members = SomeMembers(static_cast<std::size_t>(state.range(0)));
    MemberPool& pool = Pool();
    MemberSelection selection(&pool);
    for (auto _ : state) {
        selection.Clear();
        for (Member const member : members) {
            selection.AddMember(pool, member);
        }
        benchmark::DoNotOptimize(selection.GetAllMembers().data());
    }
    Bench::SetResult(state, Result(selection.GetAllMembers()));
}

/// Filled in runs, as queries do.
void FillByRuns(benchmark::State& state) {
    constexpr std::size_t RUN = 15;
    std::vector<Member> const members = SomeMembers(static_cast<std::size_t>(state.range(0)));
    std::vector<std::vector<Member>> runs;
    for (std::size_t i = 0; i < members.size(); i += RUN) {
        auto const first = members.begin() + static_cast<std::ptrdiff_t>(i);
        runs.emplace_back(first, first + static_cast<std::ptrdiff_t>(std::min(RUN, members.size() - i)));
    }
    MemberPool& pool = Pool();
    MemberSelection selection(&pool);
    for (auto _ : state) {
        selection.Clear();
        for (std::vector<Member> const& run : runs) {
            selection.AddMembers(pool, run);
        }
        benchmark::DoNotOptimize(selection.GetAllMembers().data());
    }
    Bench::SetResult(state, Result(selection.GetAllMembers()));
}

void FillVector(benchmark::State& state) {
    std::vector<Member> const members = SomeMembers(static_cast<std::size_t>(state.range(0)));
    std::vector<Member> vector;
    for (auto _ : state) {
        vector.clear();
        for (Member const member : members) {
            vector.push_back(member);
        }
        benchmark::DoNotOptimize(vector.data());
    }
    Bench::SetResult(state, Result(vector));
}

void FillList(benchmark::State& state) {
    std::vector<Member> const members = SomeMembers(static_cast<std::size_t>(state.range(0)));
    std::list<Member> list;
    std::vector<Member> vector;
    for (auto _ : state) {
        list.clear();
        for (Member const member : members) {
            list.push_back(member);
        }
        vector.assign(list.begin(), list.end());
        benchmark::DoNotOptimize(vector.data());
    }
    Bench::SetResult(state, Result(vector));
}

constexpr std::size_t THINNED = 10'000;

std::vector<Member> Victims() {
    std::vector<Member> victims = SomeMembers(THINNED);
    std::shuffle(victims.begin(), victims.end(), std::mt19937(1));
    victims.resize(THINNED / 2);
    return victims;
}

void ThinSelection(benchmark::State& state) {
    std::vector<Member> const members = SomeMembers(THINNED);
    std::vector<Member> const victims = Victims();
    MemberSelection selection(&Pool());
    for (auto _ : state) {
        selection.Clear();
        selection.AddMembers(Pool(), members);
        for (Member const victim : victims) {
            selection.RemoveMember(victim);
        }
        benchmark::DoNotOptimize(selection.GetAllMembers().data());
    }
    Bench::SetResult(state, Result(selection.GetAllMembers()));
}

void ThinBySearching(benchmark::State& state) {
    std::vector<Member> const members = SomeMembers(THINNED);
    std::vector<Member> const victims = Victims();
    std::vector<Member> vector;
    for (auto _ : state) {
        vector = members;
        for (Member const victim : victims) {
            vector.erase(std::find(vector.begin(), vector.end(), victim));
        }
        benchmark::DoNotOptimize(vector.data());
    }
    Bench::SetResult(state, Result(vector));
}

void Register() {
    for (int const count : {30, 1000, 100'000}) {
        benchmark::RegisterBenchmark("fill-selection", FillSelection)->Arg(count);
        benchmark::RegisterBenchmark("fill-runs", FillByRuns)->Arg(count);
        benchmark::RegisterBenchmark("fill-vector", FillVector)->Arg(count);
        benchmark::RegisterBenchmark("fill-list", FillList)->Arg(count);
        std::string const n = "/" + std::to_string(count);
        std::string const label = "append " + std::to_string(count) + " and read: selection / ";
        Bench::CompareTimes(label + "vector", "fill-selection" + n, "fill-vector" + n, 2.2);
        Bench::CompareTimes("append " + std::to_string(count) + " in runs and read: selection / vector",
                            "fill-runs" + n, "fill-vector" + n, 1.7);
        Bench::CompareTimes(label + "list and copy", "fill-selection" + n, "fill-list" + n, 0.1);
    }
    benchmark::RegisterBenchmark("thin-selection", ThinSelection)->Arg(THINNED);
    benchmark::RegisterBenchmark("thin-searching", ThinBySearching)->Arg(THINNED);
    Bench::CompareTimes("remove 5000 of 10000 by value: selection / searching a vector", "thin-selection/10000",
                        "thin-searching/10000", 0.05);
}

[[maybe_unused]] int const registered = (Register(), 0);

} // namespace
