// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_PROPERTYFACTORY_H
#define GENTRA_PROPERTIES_PROPERTYFACTORY_H

#include "gentra/properties/Property.h"

namespace Gentra {

/// Turns parameters into properties.
class GENTRA_EXPORT PropertyFactory {
public:
    /// A new property of the parameter's type that takes over all its fields. Size and functor of
    /// FIXEDSIZEDATA are the parameter's `fixedSize` and `creationFunctor`. Property::NIL for UNDEFINED,
    /// BEHAVIOUR and any other value.
    [[nodiscard]] static Util::RefCountPtr<Property> CreateProperty(Parameter const& parameter);
};

} // namespace Gentra

#endif
