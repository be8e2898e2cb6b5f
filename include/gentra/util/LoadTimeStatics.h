// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_LOADTIMESTATICS_H
#define GENTRA_UTIL_LOADTIMESTATICS_H

#include "gentra/gentra_export.h"

namespace Gentra {

/// Keeps the library's static objects (event types, NIL objects, factory registry) alive.
///
/// Each source file that includes a header with such a static owns one keeper (below), built before the
/// file's own static objects and destroyed after them. The first keeper of the process builds the library's
/// statics, the last one destroys them. So a host's static objects may use the library, also when it is
/// linked statically, where no rule of the language would order the two.
class GENTRA_EXPORT LoadTimeStatics {
public:
    LoadTimeStatics();
    LoadTimeStatics(LoadTimeStatics const&) = delete;
    LoadTimeStatics& operator=(LoadTimeStatics const&) = delete;
    ~LoadTimeStatics();
};

namespace {
[[maybe_unused]] LoadTimeStatics const loadTimeStatics;
}

} // namespace Gentra

#endif
