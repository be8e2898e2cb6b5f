// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_PLUGIN_SHAREDOBJECT_H
#define EXAMPLES_PLUGIN_SHAREDOBJECT_H

#include <string>

/// A shared object that was opened at run time, as each system does it. It stays open for good.
namespace SharedObject {

/// Opens the file and finds a function in it. Returns null and says why in `error` when one of them fails.
void (*FindFunction(std::string const& file, char const* name, std::string& error))();

} // namespace SharedObject

#endif
