// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_POOLS_PROPERTYTABLE_H
#define GENTRA_SRC_POOLS_PROPERTYTABLE_H

#include "gentra/properties/Property.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/String.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Gentra {

/// Properties by ID, in order of insertion.
class PropertyTable {
public:
    using PropertyPtr = Util::RefCountPtr<Property>;
    using Properties = std::deque<PropertyPtr>; ///< Addresses stay: references to them are handed out.

    PropertyTable();
    /// Copies hold the properties that have an entry.
    PropertyTable(PropertyTable const& other);
    PropertyTable& operator=(PropertyTable const& other);

    /// Inserts the property under its present ID. False when the table has that ID: then it is held without an entry.
    bool Insert(PropertyPtr const& property);
    /// Empties the table; the properties belong to `pool` no longer, those without an entry included.
    void Clear(MemberPool const& pool);
    /// The position of the property's entry; the number of entries when it has none.
    [[nodiscard]] std::size_t PositionOf(Property const& property) const;

    [[nodiscard]] Properties const& All() const { return properties != nullptr ? *properties : None(); }
    // Property::NIL when there is none.
    [[nodiscard]] PropertyPtr const& FindByID(Util::ShortID id) const;
    [[nodiscard]] PropertyPtr const& FindByName(Util::String const& name) const;
    [[nodiscard]] PropertyPtr const& FindIntrinsicByName(Util::String const& name) const;

private:
    friend struct Validator; // of the tests

    [[nodiscard]] static Properties const& None();

    std::unique_ptr<Properties> properties;         ///< Null while empty, so that emptying it takes no memory.
    std::vector<PropertyPtr> withoutEntry;          ///< Their ID was taken.
    std::unordered_map<int, std::size_t> positions; ///< By ID, whose value is its own hash.
};

} // namespace Gentra

#endif
