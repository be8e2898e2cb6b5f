// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A module that a program opens at run time, and with it the library.
#include <gentra/gentra.h>

extern "C" __attribute__((visibility("default"))) int UseLibrary() {
    Gentra::MemberPool pool(Gentra::ContextManager::GetMainContext());
    pool.AddMemberProperty(new Gentra::MemberSelectionProperty("Neighbours"));
    pool.AddMemberProperty(new Gentra::TextProperty("Name"));
    pool.SetMemberCount(100);
    return pool.GetNumMembers();
}
