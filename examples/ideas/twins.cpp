// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A copy of a pool: the same layout and behaviours, members of its own. Something to try things on without harm.
#include "Builder.h"

#include <algorithm>
#include <iostream>

using namespace Gentra;

namespace {

class Age : public Behaviour {
public:
    Age() {
        SetBehaviourName("Age");
        MemberValue(0, "Age", SHARED_INTRINSIC, 0);
    }
    bool TriggerLiveBehaviour() override {
        member = GetOwnerPool()->ActiveMember();
        UseMemberValue(0) += 1;
        return true;
    }
};

/// Copies all members of one pool into another of the same layout, byte by byte. Only for layouts of values and
/// vectors: other data are pointers.
void CopyMembers(MemberPool& from, MemberPool& to) {
    int size = 0;
    for (auto const& property : from.GetAllMemberProperties()) {
        size += property->GetDataSize();
    }
    to.SetMemberCount(from.GetNumMembers());
    for (int i = 0; i < from.GetNumMembers(); ++i) {
        std::copy_n(from.GetMemberByIndex(i).record, size, to.GetMemberByIndex(i).record);
    }
}

} // namespace

int main() {
    Builder const builder([](MemberPool& pool) { pool.LinkActiveBehaviour(new Age); });
    MemberPool trees(ContextManager::GetMainContext());
    trees.ProcessMemberPool();
    trees.SetMemberCount(3);
    for (int year = 0; year < 10; ++year) {
        trees.ProcessMemberPool();
    }

    MemberPool snapshot(trees);
    CopyMembers(trees, snapshot);
    int const age = trees.GetDataOffsetFromPropertyName("Age");
    auto const tell = [&](char const* what) {
        std::cout << what << ": " << Datum::Read<float>(trees.GetMemberByIndex(0).record + age)
                  << ", the snapshot says " << Datum::Read<float>(snapshot.GetMemberByIndex(0).record + age) << "\n";
    };
    for (int year = 0; year < 90; ++year) {
        trees.ProcessMemberPool();
    }
    tell("ninety years later");
    CopyMembers(snapshot, trees);
    tell("and undone");
    std::cout << (ContextManager::GetMainContext().GetMemberPoolFromID(snapshot.GetMemberPoolID()) == &trees
                      ? "the context knows the original alone\n"
                      : "the context knows the snapshot\n");
}
