// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Texts: a name for each member, in 16-bit characters, and one for all.
#include <gentra/gentra.h>

#include <iostream>
#include <string>

using namespace Gentra;

namespace {

/// The characters of a name, for ASCII only; a host has its own way from and to its kind of text.
std::basic_string<unsigned short> Wide(std::string const& name) {
    return {name.begin(), name.end()};
}
std::string Narrow(unsigned short const* name) {
    std::string narrow;
    for (; *name != 0; ++name) {
        narrow += static_cast<char>(*name);
    }
    return narrow;
}

} // namespace

int main() {
    MemberPool dogs(ContextManager::GetMainContext());
    Util::RefCountPtr<TextProperty> const name(new TextProperty("Name"));
    dogs.AddMemberProperty(name);
    dogs.SetMemberCount(3);
    char const* const names[] = {"Rex", "Bella"};
    for (int i = 0; i < 2; ++i) {
        std::basic_string<unsigned short> const text = Wide(names[i]);
        unsigned short const* characters = text.c_str();
        name->SetDataToMemberSelection(&characters, dogs, i); // copies them: the address of a pointer to characters
    }
    for (int i = 0; i < dogs.GetNumMembers(); ++i) {
        void const* const datum = name->GetDataFromMemberSelection(dogs, i);
        std::cout << "dog " << i << " is called \"" << Narrow(TextProperty::GetCharStringFromPropertyData(datum))
                  << "\"\n";
    }
    dogs.ActivateMember(1);
    std::cout << "the active one has " << TextProperty::GetStringFromPropertyData(name->GetData())->size()
              << " letters\n";
}
