// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "PropertyTable.h"

#include <utility>

namespace Gentra {

bool PropertyTable::Insert(PropertyPtr const& property) {
    auto const [entry, inserted] = positions.emplace(property->GetPropertyID(), properties.size());
    if (inserted) {
        try {
            properties.push_back(property);
        } catch (...) {
            positions.erase(entry);
            throw;
        }
    }
    return inserted;
}

void PropertyTable::Clear(MemberPool const& pool) {
    // The last reference may run a host's destructor, which must find the table empty.
    std::deque<PropertyPtr> const leaving = std::exchange(properties, {});
    positions.clear();
    for (PropertyPtr const& property : leaving) {
        property->LeavePool(pool);
    }
}

PropertyTable::PropertyPtr const& PropertyTable::FindByID(Util::ShortID id) const {
    auto const found = positions.find(id);
    return found != positions.end() ? properties[found->second] : Property::NIL;
}

PropertyTable::PropertyPtr const& PropertyTable::FindByName(Util::String const& name) const {
    for (PropertyPtr const& property : properties) {
        if (property->GetName() == name) {
            return property;
        }
    }
    return Property::NIL;
}

PropertyTable::PropertyPtr const& PropertyTable::FindIntrinsicByName(Util::String const& name) const {
    for (PropertyPtr const& property : properties) {
        if (property->IsIntrinsic() && property->GetName() == name) {
            return property;
        }
    }
    return Property::NIL;
}

} // namespace Gentra
