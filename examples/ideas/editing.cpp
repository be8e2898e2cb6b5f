// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Editing a list while walking it: insertions and removals at the cursor, and the vector that stays as it was read.
#include <gentra/gentra.h>

#include <iostream>

using namespace Gentra;

int main() {
    MemberPool shop(ContextManager::GetMainContext());
    Util::RefCountPtr<ValueProperty> const ticket(new ValueProperty("Ticket"));
    shop.AddMemberProperty(ticket);
    MemberSelection queue(&shop);
    for (ticket->value = 1; ticket->value <= 6; ticket->value += 1) {
        queue.AddNewMember(); // in the pool's list as well
    }
    auto const print = [&](char const* what, std::vector<Member> const& list) {
        std::cout << what;
        for (Member const customer : list) {
            std::cout << ' ' << Datum::Read<float>(customer.record + ticket->GetDataOffset());
        }
        std::cout << "\n";
    };

    // Whoever has an even ticket is served at once: removed while the cursor walks on by itself.
    queue.ActivateFirstMember();
    for (int count = queue.GetNumMembers(); count > 0; --count) {
        auto const number = static_cast<int>(Datum::Read<float>(queue.ActiveMember().record + ticket->GetDataOffset()));
        if (number % 2 == 0) {
            queue.RemoveActiveMember();
        } else {
            queue.ActivateNextMember();
        }
    }
    print("odd tickets:", queue.GetAllMembers());

    // The new one goes before the active one, who stays active.
    queue.ActivateMember(1);
    ticket->value = 2.5f;
    queue.InsertNewMemberBeforeActiveMember();
    print("with a friend let in:", queue.GetAllMembers());

    // A vector that somebody walks stays as it is until the selection is read again.
    std::vector<Member> const& walked = queue.GetAllMembers();
    unsigned int const stamp = queue.GetLastRecreationTimeStamp();
    std::size_t steps = 0;
    for (Member const customer : walked) {
        queue.RemoveMember(customer);
        ++steps;
    }
    std::cout << steps << " steps, " << queue.GetNumMembers() << " left, "
              << (queue.IsTimeStampUpToDate(stamp) ? "nothing has changed\n" : "the vector was made anew\n");
}
