// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_INSTANCECREATIONFUNCTOR_H
#define GENTRA_PROPERTIES_INSTANCECREATIONFUNCTOR_H

#include "gentra/gentra_export.h"

namespace Gentra {

/// Written by the host: sets up and tears down the user data of members, for DataReferenceProperty and
/// FixedSizeDataProperty. The host keeps it alive as long as a property uses it.
class GENTRA_EXPORT InstanceCreationFunctor {
public:
    InstanceCreationFunctor() = default;
    /// @{
    /// The base class has no state to copy.
    InstanceCreationFunctor(InstanceCreationFunctor const&) noexcept {}
    InstanceCreationFunctor& operator=(InstanceCreationFunctor const&) noexcept { return *this; }
    /// @}

    // Virtual operations in slot order; compiled plug-ins depend on it.

    /// Called when a member is created, after the property's default was copied to `datum`; for a pool
    /// property when its pool is compiled, on the pool data. `datum` may be unaligned; `size` is its size in
    /// bytes
    /// (`sizeof(void*)` for a data reference).
    virtual void CreateInstance(unsigned char* datum, int size) = 0;
    /// Called when a member is deleted. Not called for members that go when their pool is cleared.
    virtual void DeleteInstance(unsigned char* datum, int size) = 0;

protected:
    ~InstanceCreationFunctor() = default;
};

} // namespace Gentra

#endif
