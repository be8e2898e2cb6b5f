// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Messages: everything that happens and everything that goes wrong is said in one log.
#include <gentra/gentra.h>

#include <iostream>
#include <string>

using namespace Gentra;

namespace {

/// The log, which comes newest first, oldest first and line by line, as a host shows it.
void ShowLog(char const* title) {
    std::string text(64 * 1024, '\0');
    GlobalMessageManager::GetAllMessages(text.data(), static_cast<int>(text.size()));
    text.resize(text.find('\0'));
    std::cout << title << "\n";
    while (!text.empty()) {
        std::size_t const lastLine = text.find_last_of('\n', text.size() - 2);
        std::size_t const start = lastLine != text.npos ? lastLine + 1 : 0;
        std::string const line = text.substr(start, text.size() - start - 1);
        std::cout << (line.starts_with("Error") || line.starts_with("Bug") ? "  ! " : "    ") << line << "\n";
        text.resize(start);
    }
    GlobalMessageManager::ClearAllMessages();
}

} // namespace

int main() {
    MemberPool ships(ContextManager::GetMainContext());
    ships.SetName("Ships");
    ContextManager::GetMainContext().ForceConstructAllMemberPools();
    ShowLog("building a pool");

    MemberPool harbours(ContextManager::GetMainContext());
    harbours.SetName("Harbours");
    MemberSelection fleet(&ships);
    ships.AddMemberProperty(new ValueProperty("Speed"));
    harbours.AddMemberProperty(new ValueProperty("Depth"));
    for (int i = 0; i < 3; ++i) { // said once, however often it happens
        fleet.AddMember(harbours, harbours.CreateNewMember());
    }
    Member const sunk = ships.CreateNewMember();
    ships.DeleteMember(sunk);
    ships.DeleteMember(sunk);
    ShowLog("mistakes of a host");

    GlobalMessageManager::OutputMessage("Host :: %d ships are ready", ships.GetNumMembers());
    ShowLog("a host's own");
}
