// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Opens the module given as argument, uses it and closes it, several times.
#include <cstdio>
#include <dlfcn.h>

int main(int argc, char** argv) {
    for (int round = 0; argc == 2 && round < 3; ++round) {
        void* const module = dlopen(argv[1], RTLD_NOW);
        if (module == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            return 1;
        }
        auto* const use = reinterpret_cast<int (*)()>(dlsym(module, "UseLibrary"));
        if (use == nullptr || use() != 100) {
            return 1;
        }
        dlclose(module);
    }
    std::puts("open and close: passed");
}
