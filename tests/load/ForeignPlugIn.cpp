// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A plug-in that must not be opened: STAMP tells what it was built with, and its code ends the process.
#include <gentra/behaviours/PlugIn.h>

#include <cstdio>
#include <cstdlib>

namespace {

struct Opened {
    Opened() {
        std::puts("code of a foreign plug-in runs");
        std::_Exit(2);
    }
} opened;

} // namespace

extern "C" GENTRA_PLUG_IN_EXPORT char const stamp[] = STAMP;
extern "C" GENTRA_PLUG_IN_EXPORT void gentraRegisterPlugIn() {
    std::_Exit(2);
}
