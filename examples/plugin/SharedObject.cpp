// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "SharedObject.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace SharedObject {

void (*FindFunction(std::string const& file, char const* name, std::string& error))() {
#if defined(_WIN32)
    HMODULE const object = LoadLibraryA(file.c_str());
    auto* const function = object != nullptr ? GetProcAddress(object, name) : nullptr;
    error = function != nullptr ? "" : "error " + std::to_string(GetLastError());
#else
    void* const object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const function = object != nullptr ? dlsym(object, name) : nullptr;
    char const* const reason = function != nullptr ? nullptr : dlerror();
    error = reason != nullptr ? reason : "";
#endif
    return reinterpret_cast<void (*)()>(function);
}

} // namespace SharedObject
