// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A host that knows no behaviours. It opens the plug-ins given as arguments, and runs all behaviours they bring.
#include "../support/Building.h"
#include "SharedObject.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace Gentra;

namespace {

/// Opens a plug-in, unless it does not fit.
bool Open(char const* name) {
    // By its full path, so that the system opens the file that was read, and no other of its name.
    std::string const file = std::filesystem::absolute(name).string();
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    std::string error = content ? PlugIn::WhyRefused(content.str()) : "it could not be read";
    auto* const registerFactories =
        error.empty() ? SharedObject::FindFunction(file, PlugIn::ENTRY_POINT, error) : nullptr;
    if (registerFactories == nullptr) {
        std::fprintf(stderr, "The plug-in %s was left out: %s.\n", name, error.c_str());
        return false;
    }
    std::size_t const known = ContextManager::GetBehavioursByName().size();
    registerFactories();
    if (ContextManager::GetBehavioursByName().size() == known) {
        std::fprintf(stderr, "The plug-in %s brings no behaviours that were not there.\n", name);
    }
    return true;
}

/// Fills the pool with all behaviours that there are.
class Builder : public Util::EventListener {
public:
    Builder() : EventListener("Builder") { GlobalEventManager::RegisterListener(this, MemberPool::EVENT_CONSTRUCT); }
    void HandleEvent(Util::Event const& event) override {
        auto& pool = *static_cast<MemberPool*>(event.subject);
        Example::AddValue(pool, "Rate", 1);
        Example::AddValue(pool, "Limit", 10);
        for (Util::String const& kind : ContextManager::GetBehavioursByName()) {
            pool.LinkActiveBehaviour(Example::New(pool, kind.c_str()));
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    bool allFit = true;
    for (int i = 1; i < argc; ++i) {
        allFit = Open(argv[i]) && allFit;
    }
    Builder const builder;
    MemberPool trees(ContextManager::GetMainContext());
    trees.SetName("Trees");
    trees.ProcessMemberPool();
    trees.SetMemberCount(1000);
    for (Util::String const& name : ContextManager::GetBehavioursByName()) {
        std::printf("There is a behaviour %s.\n", name.c_str());
    }
    for (int frame = 0; frame < 20; ++frame) {
        trees.ProcessMemberPool();
    }
    if (trees.ActivateFirstMember()) {
        auto const* const height = static_cast<float const*>(trees.GetPropertyFromName("Height")->GetData());
        std::printf("After 20 frames the first of %d trees is %.2f high.\n", trees.GetNumMembers(),
                    static_cast<double>(*height));
    }
    return allFit ? 0 : 1;
}
