// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Compiling: each link is checked, and what is wrong is said in the message log. The behaviour is then left out.
#include "Builder.h"

#include <iostream>

using namespace Gentra;

namespace {

class Paint : public Behaviour {
public:
    Paint() {
        SetBehaviourName("Paint");
        MemberValue(0, "Colour", VISIBLE, 0);
        FlexibleVec3(1, "Light");
    }
};

} // namespace

int main() {
    Builder const builder([](MemberPool& pool) {
        Util::RefCountPtr<Property> const colour(new ValueProperty("Colour"));
        pool.AddPoolProperty(colour); // one for the pool, where the behaviour wants one for each member
        Util::RefCountPtr<Behaviour> const paint(new Paint);
        paint->LinkPropertyToVisibleInterface(colour, 0);
        paint->LinkPropertyToVisibleInterface(colour, 1); // no vector
        pool.LinkActiveBehaviour(paint);
    });
    MemberPool walls(ContextManager::GetMainContext());
    walls.SetName("Walls");
    walls.ProcessMemberPool();
    char messages[2000];
    GlobalMessageManager::GetAllMessages(messages, sizeof messages); // the newest first
    std::cout << messages;
}
