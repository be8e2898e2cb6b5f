// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_BEHAVIOURS_PLUGIN_H
#define GENTRA_BEHAVIOURS_PLUGIN_H

#include "gentra/gentra_export.h"
#include "gentra/gentra_version.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Gentra {

/// Behaviours in a shared object of their own, which a host opens at run time.
///
/// A plug-in says in one source file how its factories are registered:
///
///     static void RegisterFactories() { static GrowFactory grow; ... }
///     GENTRA_PLUG_IN(RegisterFactories)
///
/// This leaves a stamp in the file: a text with the version of Gentra that the plug-in was built with, the size of a
/// pointer, and whether accesses are checked (GENTRA_CHECKED). A host reads the file, asks WhyRefused(), and only then
/// lets the system open it and calls the function named ENTRY_POINT. Opening comes last because it already runs the
/// constructors of the plug-in's static objects, and may load the other version of Gentra beside this one.
///
/// Host and plug-in share one Gentra, so both are linked to the shared library. A plug-in stays open for good: the
/// library keeps its factories, and behaviours are code.
///
/// Read and open the same file, by its full path: what a system finds by a name alone may be another one.
class GENTRA_EXPORT PlugIn {
public:
    /// The name of the function that registers a plug-in's factories. It takes nothing, returns nothing and has C
    /// linkage.
    static constexpr char const* ENTRY_POINT = "gentraRegisterPlugIn";

    /// Why this library cannot run the plug-in, in one sentence, or an empty text when it can. `file` is all that is
    /// in the plug-in's file, for any system and processor. A plug-in fits when it was built with this major version
    /// and no later minor version, with pointers of this size, and with or without checks like this library. Of several
    /// stamps the first counts.
    [[nodiscard]] static std::string WhyRefused(std::string_view file);
};

} // namespace Gentra

/// The size of a pointer in bytes, 4 or 8, as a number that the preprocessor can put into a text.
#if UINTPTR_MAX > 0xFFFFFFFFu
#define GENTRA_POINTER_SIZE 8
#else
#define GENTRA_POINTER_SIZE 4
#endif

/// The stamp of a plug-in, for those that do not use GENTRA_PLUG_IN. The parameters are plain numbers or macros of
/// such.
#define GENTRA_PLUG_IN_STAMP(major, minor, pointerSize)                                                                \
    "Gentra plug-in: version " GENTRA_PLUG_IN_TEXT(major) "." GENTRA_PLUG_IN_TEXT(                                     \
        minor) ", pointers of " GENTRA_PLUG_IN_TEXT(pointerSize) " bytes" GENTRA_PLUG_IN_CHECKED
#define GENTRA_PLUG_IN_TEXT(number) #number
/// Whether accessors are checked, as the stamp tells it.
#if GENTRA_CHECKED
#define GENTRA_PLUG_IN_CHECKED ", checked"
#else
#define GENTRA_PLUG_IN_CHECKED ", unchecked"
#endif

/// Whether plug-ins and hosts can share one Gentra.
#if defined(GENTRA_STATIC_DEFINE)
#define GENTRA_IS_SHARED false
#else
#define GENTRA_IS_SHARED true
#endif

/// Makes the shared object that it stands in a plug-in, whose factories are registered by `registerFactories`, a
/// function without parameters. Stands once, outside namespaces.
#define GENTRA_PLUG_IN(registerFactories)                                                                              \
    static_assert(GENTRA_IS_SHARED, "a plug-in is linked to the shared library, as its host is");                      \
    extern "C" GENTRA_PLUG_IN_EXPORT char const gentraPlugInStamp[];                                                   \
    char const gentraPlugInStamp[] =                                                                                   \
        GENTRA_PLUG_IN_STAMP(GENTRA_VERSION_MAJOR, GENTRA_VERSION_MINOR, GENTRA_POINTER_SIZE);                         \
    extern "C" GENTRA_PLUG_IN_EXPORT void gentraRegisterPlugIn();                                                      \
    void gentraRegisterPlugIn() {                                                                                      \
        registerFactories();                                                                                           \
    }

#endif
