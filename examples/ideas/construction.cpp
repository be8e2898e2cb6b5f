// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Construction behaviours: one sets up each new member, one the pool when it has been built.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

/// Numbers the members.
class Number : public Behaviour {
public:
    Number() {
        MemberValue(0, "Number", SHARED_INTRINSIC, 0);
        PoolValue(1, "Count", SHARED_INTRINSIC);
    }
    void ProcessMembers(std::vector<Member>& members, Member&) override {
        for (Member const& each : members) {
            member = each;
            UseMemberValue(0) = UsePoolValue(1) += 1;
        }
    }
};

/// Fills the pool.
class Settle : public Behaviour {
public:
    explicit Settle(MemberPool& newPool) : pool(newPool) {}
    void ProcessMembers(std::vector<Member>&, Member&) override { pool.SetMemberCount(4); }

private:
    MemberPool& pool;
};

} // namespace

int main() {
    Builder const builder([](MemberPool& pool) {
        pool.LinkMemberConstructionBehaviour(new Number);
        pool.LinkPoolConstructionBehaviour(new Settle(pool));
    });
    MemberPool houses(ContextManager::GetMainContext());
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    Util::RefCountPtr<Property> const number = houses.GetPropertyFromName("Number");
    for (int i = 0; i < houses.GetNumMembers(); ++i) {
        std::cout << "house " << Datum::Read<float>(number->GetDataFromMemberSelection(houses, i)) << "\n";
    }
}
