// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// One frame of position += velocity * step and a counter, over records of 28 bytes.

#include "RatioTable.h"

#include <gentra/gentra.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>

namespace {

using namespace Gentra;
using Util::RefCountPtr;

constexpr float STEP = 0.01f;
constexpr int SIZES[] = {1000, 100'000, 1'000'000};

void Move(Math::Vec3& position, Math::Vec3 const& velocity, float& count, float step) {
    position.x += velocity.x * step;
    position.y += velocity.y * step;
    position.z += velocity.z * step;
    count += 1.0f;
}

/// The links that all behaviours here have.
class Mover : public Behaviour {
public:
    Mover() {
        MemberVec3(0, "Position", SHARED_INTRINSIC, {1, 2, 3});
        MemberVec3(1, "Velocity", SHARED_INTRINSIC, {1, 0, -1});
        MemberValue(2, "Count", SHARED_INTRINSIC, 0);
        PoolValue(3, "Step", SHARED_INTRINSIC);
    }
};

/// The default path: one virtual call per member, accessors by link index.
class DefaultMover : public Mover {
public:
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        Move(UseMemberVec3(0), UseMemberVec3(1), UseMemberValue(2), ReadPoolValue(3));
        return true;
    }
};

class OverridingMover : public Mover {
public:
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        for (Member const& each : members) {
            member = each;
            Move(UseMemberVec3(0), UseMemberVec3(1), UseMemberValue(2), ReadPoolValue(3));
        }
    }
};

/// Takes the offsets once before the loop.
class HoistingMover : public Mover {
public:
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        int const position = fastParams[0].dataOffset;
        int const velocity = fastParams[1].dataOffset;
        int const count = fastParams[2].dataOffset;
        float const step = ReadPoolValue(3);
        for (Member const& each : members) {
            Move(*reinterpret_cast<Math::Vec3*>(each.record + position),
                 *reinterpret_cast<Math::Vec3*>(each.record + velocity), *reinterpret_cast<float*>(each.record + count),
                 step);
        }
    }
};

/// By hand, in the shape of the default path: each member is read afresh from the vector and put into a slot, and a
/// virtual call takes it from there and reads the offsets again. No checks, no prefetch, no weak pointers.
class Shape {
public:
    virtual ~Shape() = default;
    void Process(std::vector<Member>& members, Member& current) {
        std::size_t const count = members.size();
        for (std::size_t i = 0; i < count; ++i) {
            current = members[i];
            Work();
        }
    }
    virtual bool Work() {
        member = *slot;
        Move(*reinterpret_cast<Math::Vec3*>(member.record + offsets[0]),
             *reinterpret_cast<Math::Vec3*>(member.record + offsets[1]),
             *reinterpret_cast<float*>(member.record + offsets[2]), step);
        return true;
    }
    Member* slot = nullptr;
    Member member;
    int offsets[3] = {0, 12, 24};
    float step = STEP;
};

enum Order { CREATED, RECYCLED, RANDOM };

/// A pool with one active behaviour and its members in one of three orders. The variants of a size and order
/// share one pool, so that they work on the same memory.
class Population {
public:
    explicit Population(int count, Order order) : pool(ContextManager::GetMainContext()) {
        for (auto& mover : movers) {
            pool.LinkPassiveBehaviour(mover);
        }
        pool.GetPropertyFromName("Step")->value = STEP;
        pool.CompileMemberPool();
        pool.SetMemberCount(count);
        std::mt19937 random(1);
        std::vector<Member> members = pool.GetAllMembers();
        if (order == RECYCLED) {
            std::shuffle(members.begin(), members.end(), random);
            members.resize(members.size() / 2);
            for (Member const& each : members) {
                pool.RemoveMember(each);
                pool.DeleteMember(each);
            }
            pool.SetMemberCount(count);
        } else if (order == RANDOM) {
            std::shuffle(members.begin(), members.end(), random);
            static_cast<MemberSelection&>(pool).Clear();
            pool.AddMembers(pool, members);
        }
    }
    void Reset() {
        Math::Vec3 const position(1, 2, 3);
        for (Member const& each : pool.GetAllMembers()) {
            Datum::Write(each.record, position);
            Datum::Write(each.record + 24, 0.0f);
        }
    }
    std::uint64_t Result() {
        std::uint64_t hash = Bench::HashBytes(nullptr, 0);
        for (Member const& each : pool.GetAllMembers()) {
            hash = Bench::HashBytes(each.record, 28, hash);
        }
        return hash;
    }

    RefCountPtr<Behaviour> movers[3] = {new DefaultMover, new OverridingMover, new HoistingMover};
    MemberPool pool;
};

Population& Get(int count, Order order) {
    static std::map<std::pair<int, Order>, std::unique_ptr<Population>> populations;
    auto& population = populations[{count, order}];
    if (population == nullptr) {
        population = std::make_unique<Population>(count, order);
    }
    return *population;
}

template<class Frame>
void Measure(benchmark::State& state, Population& population, Frame const& frame) {
    frame();
    population.Reset();
    frame();
    std::uint64_t const result = population.Result();
    for (auto _ : state) {
        frame();
    }
    Bench::SetResult(state, result);
}

void Library(benchmark::State& state, Order order, std::size_t mover) {
    Population& population = Get(static_cast<int>(state.range(0)), order);
    Measure(state, population, [&] { population.pool.ApplyPassiveBehaviour(population.movers[mover]); });
}

void ByHand(benchmark::State& state, Order order, bool inShape) {
    Population& population = Get(static_cast<int>(state.range(0)), order);
    std::vector<unsigned char*> records;
    for (Member const& each : population.pool.GetAllMembers()) {
        records.push_back(each.record);
    }
    if (!inShape) {
        Measure(state, population, [&] {
            for (unsigned char* const record : records) {
                Move(*reinterpret_cast<Math::Vec3*>(record), *reinterpret_cast<Math::Vec3*>(record + 12),
                     *reinterpret_cast<float*>(record + 24), STEP);
            }
        });
        return;
    }
    Shape shape;
    Member current;
    shape.slot = &current;
    std::vector<Member>& members = population.pool.GetAllMembers();
    Measure(state, population, [&] { shape.Process(members, current); });
}

void Register() {
    struct Variant {
        char const* name;
        std::size_t mover;
    };
    for (Order const order : {CREATED, RECYCLED, RANDOM}) {
        std::string const suffix = order == CREATED ? "" : order == RECYCLED ? "-recycled" : "-random";
        for (int const size : SIZES) {
            if (order != CREATED && size < 1'000'000) {
                continue;
            }
            for (Variant const& variant : {Variant{"default", 0}, Variant{"override", 1}, Variant{"hoisted", 2}}) {
                if (order == CREATED || variant.mover == 0) {
                    benchmark::RegisterBenchmark(("frame-" + std::string(variant.name) + suffix).c_str(), Library,
                                                 order, variant.mover)
                        ->Arg(size);
                }
            }
        }
    }
    for (int const size : SIZES) {
        benchmark::RegisterBenchmark("frame-baseline", ByHand, CREATED, false)->Arg(size);
        benchmark::RegisterBenchmark("frame-shape", ByHand, CREATED, true)->Arg(size);
        std::string const n = "/" + std::to_string(size);
        std::string const label = "frame " + std::to_string(size) + ": ";
        Bench::CompareTimes(label + "default path / same shape by hand", "frame-default" + n, "frame-shape" + n, 1.12);
        Bench::CompareTimes(label + "default path / loop by hand", "frame-default" + n, "frame-baseline" + n,
                            size < 1'000'000 ? 3.1 : 1.5);
        Bench::CompareTimes(label + "own ProcessMembers / loop by hand", "frame-override" + n, "frame-baseline" + n,
                            1.3);
        Bench::CompareTimes(label + "the same, offsets hoisted / loop by hand", "frame-hoisted" + n,
                            "frame-baseline" + n, 1.1);
    }
    Bench::CompareTimes("frame 1000000: default path, recycled / ordered loop", "frame-default-recycled/1000000",
                        "frame-baseline/1000000", 3.6);
    Bench::CompareTimes("frame 1000000: default path, random / ordered loop", "frame-default-random/1000000",
                        "frame-baseline/1000000", 5.5);
}

[[maybe_unused]] int const registered = (Register(), 0);

} // namespace
