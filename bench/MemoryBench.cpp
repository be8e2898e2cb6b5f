// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Bytes per member of a large population, everything counted that the library allocates.

#include "RatioTable.h"

#include "Allocations.h"

#include <gentra/gentra.h>

#include <memory>
#include <random>

namespace {

using namespace Gentra;

constexpr int COUNT = 1'000'000;

template<class Use>
double BytesPerMember(Use const& use) {
    std::size_t const before = Bench::BytesHeld();
    auto const pool = std::make_unique<MemberPool>(ContextManager::GetMainContext());
    pool->AddMemberProperty(new VectorProperty("Position"));
    pool->AddMemberProperty(new VectorProperty("Velocity"));
    pool->AddMemberProperty(new ValueProperty("Count"));
    pool->SetMemberCount(COUNT);
    use(*pool);
    return static_cast<double>(Bench::BytesHeld() - before) / COUNT;
}

void Report() {
    Bench::ReportFigure("bytes per member of 28: only appended and read",
                        BytesPerMember([](MemberPool& pool) { pool.GetAllMembers(); }), 47);
    Bench::ReportFigure("bytes per member of 28: appended to after reading", BytesPerMember([](MemberPool& pool) {
                            pool.GetAllMembers();
                            pool.AddNewMember();
                            pool.GetAllMembers();
                        }),
                        47);
    Bench::ReportFigure("bytes per member of 28: inserted in the middle", BytesPerMember([](MemberPool& pool) {
                            pool.ActivateMember(COUNT / 2);
                            pool.InsertNewMemberBeforeActiveMember();
                        }),
                        56);
    Bench::ReportFigure("bytes per member of 28: inserted and removed by value", BytesPerMember([](MemberPool& pool) {
                            pool.ActivateMember(COUNT / 2);
                            pool.InsertNewMemberBeforeActiveMember();
                            std::mt19937 random(1);
                            std::vector<Member> const members = pool.GetAllMembers();
                            pool.ActivateMember(COUNT / 2);
                            pool.InsertNewMemberBeforeActiveMember();
                            for (int i = 0; i < 100; ++i) {
                                pool.RemoveMember(members[random() % COUNT]);
                            }
                            pool.RemoveMemberByIndex(7);
                        }),
                        56);
}

[[maybe_unused]] int const reported = (Report(), 0);

} // namespace
