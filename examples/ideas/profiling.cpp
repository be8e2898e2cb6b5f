// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Profiling: how often pools and behaviours ran, and how long they took.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

class Think : public Behaviour {
public:
    explicit Think(char const* newName, int newEffort) : effort(newEffort) {
        SetBehaviourName(newName);
        MemberValue(0, "Thought", SHARED_INTRINSIC, 1);
    }
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        for (Member const each : members) {
            member = each;
            for (int i = 0; i < effort; ++i) {
                UseMemberValue(0) = 3.5f * UseMemberValue(0) * (1 - 0.25f * UseMemberValue(0));
            }
        }
    }

private:
    int effort;
};

void Print(char const* what, PerformanceStatistics const& stats) {
    std::cout << what << " ran " << stats.GetSampleCount() << " times, "
              << (stats.GetMinProcessingTime() <= stats.GetAvgProcessingTime() &&
                          stats.GetAvgProcessingTime() <= stats.GetMaxProcessingTime()
                      ? "between the least and the most\n"
                      : "which cannot be\n");
}

} // namespace

int main() {
    Util::RefCountPtr<Behaviour> const hard(new Think("hard", 200));
    Util::RefCountPtr<Behaviour> const easy(new Think("easy", 1));
    Builder const builder([&](MemberPool& pool) {
        pool.LinkActiveBehaviour(hard);
        pool.LinkActiveBehaviour(easy);
    });
    MemberPool thinkers(ContextManager::GetMainContext());
    thinkers.ProcessMemberPool(); // not measured: no session is open
    thinkers.SetMemberCount(10'000);
    PerformanceProfiler& profiler = ContextManager::GetMainContext().GetPerformanceProfiler();
    profiler.StartNewSession();
    for (int frame = 0; frame < 10; ++frame) {
        thinkers.ProcessMemberPool();
    }
    profiler.StopSession();
    thinkers.ProcessMemberPool(); // nor after it
    Print("the pool", thinkers.GetPerformaceStats());
    Print("the hard one", hard->GetPerformaceStats());
    Print("the easy one", easy->GetPerformaceStats());
}
