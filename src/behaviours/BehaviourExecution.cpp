// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/behaviours/Behaviour.h"

#include <cstdint>

namespace Gentra {

namespace {

// A large population does not fit into the caches, and its records lie in no order once members have come and
// gone. Fetching a record some members ahead hides most of the wait; for small populations it only costs.
constexpr std::size_t PREFETCH_POPULATION = 100'000;
constexpr std::size_t PREFETCH_DISTANCE = 16;
constexpr std::uintptr_t CACHE_LINE = 64;

inline void Prefetch(unsigned char const* record) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(record, 1);
    __builtin_prefetch(record + CACHE_LINE, 1);
#else
    static_cast<void>(record);
#endif
}

} // namespace

void Behaviour::ProcessMembers(std::vector<Member>& members, Member& current) {
    if (disabled) {
        return;
    }
    std::size_t const count = members.size();
    std::size_t const prefetchEnd = count >= PREFETCH_POPULATION ? count - PREFETCH_DISTANCE : 0;
    unsigned int const clearedBefore = timesCleared;
    for (std::size_t i = 0; i < count; ++i) {
        // The behaviour may have taken members out of the vector, or had its pool cleared.
        if (i >= members.size() || timesCleared != clearedBefore) {
            return;
        }
        if (i < prefetchEnd && i + PREFETCH_DISTANCE < members.size()) {
            Prefetch(members[i + PREFETCH_DISTANCE].record);
        }
        current = members[i];
        TriggerLiveBehaviour();
    }
}

bool Behaviour::TriggerLiveBehaviour() {
    return false;
}

void Behaviour::ProcessSingleMember(Member processedMember, Member& current) {
    std::vector<Member> members(1, processedMember);
    ProcessMembers(members, current);
}

} // namespace Gentra
