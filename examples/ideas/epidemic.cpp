// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Lists as states: an epidemic among people who meet by chance. How many it reaches in the end is known: of those who
// each pass it on R times a share r, where r = 1 - exp(-R r) (W. O. Kermack, A. G. McKendrick, Proc. R. Soc. A 115,
// 1927).
#include "Builder.h"

#include <cmath>
#include <iostream>
#include <random>

using namespace Gentra;

namespace {

/// One day: each infected one meets others, and passes the infection on to those who have not had it. Then he may
/// recover.
class Spread : public Behaviour {
public:
    Spread() {
        SetBehaviourName("Spread");
        MemberValue(HAD_IT, "Had it", SHARED_INTRINSIC, 0);
        FlexibleMemberSelection(INFECTED, "Infected");
        FlexibleValue(MEETINGS, "Meetings");
        FlexibleValue(DAYS, "Days");
    }
    void ProcessMembers(std::vector<Member>& everybody, Member&) override {
        MemberSelection& infected = UseFlexibleMemberSelection(INFECTED);
        // Whoever is infected today is appended to the list, and begins to meet people tomorrow.
        for (Member const one : infected.GetAllMembers()) {
            for (int meeting = 0; meeting < static_cast<int>(ReadFlexibleConstValue(MEETINGS)); ++meeting) {
                Infect(everybody[random() % everybody.size()], infected);
            }
            if (random() % static_cast<unsigned int>(ReadFlexibleConstValue(DAYS)) == 0) {
                infected.RemoveMember(one);
            }
        }
    }

private:
    enum Slot { HAD_IT, INFECTED, MEETINGS, DAYS };

    void Infect(Member other, MemberSelection& infected) {
        member = other;
        float& hadIt = UseMemberValue(HAD_IT);
        constexpr unsigned int ONE_IN = 20; // meetings passes it on
        if (hadIt == 0 && random() % ONE_IN == 0) {
            hadIt = 1;
            infected.AddMember(*GetOwnerPool(), other);
        }
    }

    std::mt19937 random{1};
};

/// The share in the end, found by repeating the equation.
double KnownShare(double passedOn) {
    double share = 1;
    for (int i = 0; i < 1000; ++i) {
        share = 1 - std::exp(-passedOn * share);
    }
    return share;
}

} // namespace

int main() {
    Util::RefCountPtr<MemberSelectionProperty> const infected(new MemberSelectionProperty("Infected"));
    Util::RefCountPtr<ValueProperty> const meetings(new ValueProperty("Meetings"));
    Util::RefCountPtr<ValueProperty> const days(new ValueProperty("Days"));
    MemberPool people(ContextManager::GetMainContext());
    infected->SetBasePoolID(people.GetMemberPoolID());
    days->value = 5;
    Builder const builder([&](MemberPool& pool) {
        pool.AddPoolProperty(infected);
        pool.AddPoolProperty(meetings);
        pool.AddPoolProperty(days);
        Util::RefCountPtr<Behaviour> const spread(new Spread);
        for (auto const& [slot, property] :
             {std::pair<int, Util::RefCountPtr<Property>>(0, infected), {1, meetings}, {2, days}}) {
            spread->LinkPropertyToVisibleInterface(property, slot);
        }
        pool.LinkActiveBehaviour(spread);
    });
    for (float const perDay : {3.0f, 6.0f, 8.0f, 12.0f}) {
        meetings->value = perDay;
        ContextManager::GetMainContext().ForceReconstructAllMemberPools();
        people.SetMemberCount(50'000);
        MemberSelection& ill = *Datum::Read<MemberSelection*>(infected->GetPoolData());
        int const hadIt = people.GetDataOffsetFromPropertyName("Had it");
        for (int i = 0; i < 50; ++i) {
            ill.AddMember(people, people.GetMemberByIndex(i));
            Datum::Write(people.GetMemberByIndex(i).record + hadIt, 1.0f);
        }
        int day = 0;
        for (; ill.GetNumMembers() > 0; ++day) {
            people.ProcessMemberPool();
        }
        double reached = 0;
        for (Member const each : people.GetAllMembers()) {
            reached += static_cast<double>(Datum::Read<float>(each.record + hadIt));
        }
        double const passedOn = static_cast<double>(perDay * days->value) / 20;
        double const difference = reached / people.GetNumMembers() - (passedOn > 1 ? KnownShare(passedOn) : 0);
        std::cout << "passed on to " << passedOn << ": it reaches "
                  << std::lround(100 * reached / people.GetNumMembers()) << " %, "
                  << (std::fabs(difference) < 0.02 ? "as is known\n" : "which it should not\n");
    }
}
