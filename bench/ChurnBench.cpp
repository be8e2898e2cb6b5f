// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Create N members, remove and delete half of them at random, create half again.

#include "RatioTable.h"

#include <gentra/gentra.h>

#include <cstring>
#include <memory>
#include <random>

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

private:
    unsigned char defaults[RECORD_SIZE];
    std::vector<unsigned char*> freeRecords;
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

void ByHand(benchmark::State& state) {
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<std::size_t> const positions = Positions(count);
    std::size_t members = 0;
    for (auto _ : state) {
        HandMadePool pool;
        for (std::size_t i = 0; i < count; ++i) {
            pool.Create();
        }
        for (std::size_t const position : positions) {
            pool.Delete(position);
        }
        for (std::size_t i = 0; i < count / 2; ++i) {
            pool.Create();
        }
        members = pool.members.size();
        benchmark::DoNotOptimize(pool.members.data());
    }
    Bench::SetResult(state, Result(members));
}

void Library(benchmark::State& state, bool byValue) {
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<std::size_t> const positions = Positions(count);
    std::size_t members = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pool = std::make_unique<MemberPool>(ContextManager::GetMainContext());
        pool->AddMemberProperty(new VectorProperty("Position"));
        pool->AddMemberProperty(new VectorProperty("Velocity"));
        pool->AddMemberProperty(new ValueProperty("Count"));
        state.ResumeTiming();

        pool->SetMemberCount(static_cast<int>(count));
        if (byValue) {
            state.PauseTiming();
            std::vector<Member> victims;
            std::vector<Member> left = pool->GetAllMembers();
            for (std::size_t const position : positions) {
                victims.push_back(left[position]);
                left[position] = left.back();
                left.pop_back();
            }
            state.ResumeTiming();
            for (Member const victim : victims) {
                pool->RemoveMember(victim);
                pool->DeleteMember(victim);
            }
        } else {
            for (std::size_t const position : positions) {
                pool->DeleteMember(pool->RemoveMemberByIndex(static_cast<int>(position)));
            }
        }
        pool->SetMemberCount(static_cast<int>(count));
        members = pool->GetAllMembers().size();
        pool.reset();
    }
    Bench::SetResult(state, Result(members));
}

void Register() {
    for (int const count : {1000, 100'000, 1'000'000}) {
        std::string const n = "/" + std::to_string(count);
        benchmark::RegisterBenchmark("churn-hand", ByHand)->Arg(count);
        benchmark::RegisterBenchmark("churn-index", Library, false)->Arg(count);
        benchmark::RegisterBenchmark("churn-value", Library, true)->Arg(count);
        std::string const label = "churn " + std::to_string(count) + ": ";
        Bench::CompareTimes(label + "by index / free list by hand", "churn-index" + n, "churn-hand" + n, 3.0);
        Bench::CompareTimes(label + "by value / free list by hand", "churn-value" + n, "churn-hand" + n, 4.0);
    }
}

[[maybe_unused]] int const registered = (Register(), 0);

} // namespace
