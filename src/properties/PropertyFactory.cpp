// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/properties/PropertyFactory.h"

#include "gentra/properties/DataReferenceProperty.h"
#include "gentra/properties/FixedSizeDataProperty.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/properties/TextProperty.h"
#include "gentra/properties/ValueProperty.h"
#include "gentra/properties/VectorProperty.h"

namespace Gentra {

namespace {

Util::RefCountPtr<Property> MakeOfType(Parameter const& parameter) {
    switch (parameter.type) {
    case VALUE:
        return new ValueProperty;
    case VECTOR:
        return new VectorProperty;
    case MEMBERSELECTION:
        return new MemberSelectionProperty;
    case DATAREFERENCE:
        return new DataReferenceProperty;
    case FIXEDSIZEDATA:
        return new FixedSizeDataProperty(parameter.fixedSize, parameter.creationFunctor);
    case TEXT:
        return new TextProperty;
    case UNDEFINED:
    case BEHAVIOUR:
        break;
    }
    return Property::NIL;
}

} // namespace

Util::RefCountPtr<Property> PropertyFactory::CreateProperty(Parameter const& parameter) {
    Util::RefCountPtr<Property> created = MakeOfType(parameter);
    if (created != Property::NIL) {
        static_cast<Parameter&>(*created) = parameter;
        created->property = created.Get();
    }
    return created;
}

} // namespace Gentra
