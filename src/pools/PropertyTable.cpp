// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "PropertyTable.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace Gentra {

PropertyTable::PropertyTable() {
    static_cast<void>(None()); // made now, where running out of memory may throw
}

PropertyTable::PropertyTable(PropertyTable const& other)
    : properties(other.properties != nullptr ? std::make_unique<Properties>(*other.properties) : nullptr),
      positions(other.positions) {}

PropertyTable& PropertyTable::operator=(PropertyTable const& other) {
    PropertyTable copy(other);
    properties.swap(copy.properties);
    positions.swap(copy.positions);
    return *this;
}

PropertyTable::Properties const& PropertyTable::None() {
    static Properties const& none = *new Properties; // never destroyed: pools may go after it
    return none;
}

bool PropertyTable::Insert(PropertyPtr const& property) {
    if (properties == nullptr) {
        properties = std::make_unique<Properties>();
    }
    assert(positions.size() == properties->size());
    auto const [entry, inserted] = positions.emplace(property->GetPropertyID(), properties->size());
    if (!inserted) {
        if (PositionOf(*property) == properties->size()) {
            withoutEntry.push_back(property);
        }
        return false;
    }
    try {
        properties->push_back(property);
    } catch (...) {
        positions.erase(entry);
        throw;
    }
    return true;
}

void PropertyTable::Clear(MemberPool const& pool) {
    // The last reference may run a host's destructor, which must find the table empty.
    std::unique_ptr<Properties const> const leaving = std::move(properties);
    std::vector<PropertyPtr> const leavingToo = std::exchange(withoutEntry, {});
    std::unordered_map<int, std::size_t>().swap(positions); // emptied it would stay as large, and as slow to empty
    for (PropertyPtr const& property : leavingToo) {
        property->LeavePool(pool);
    }
    if (leaving != nullptr) {
        for (PropertyPtr const& property : *leaving) {
            property->LeavePool(pool);
        }
    }
}

std::size_t PropertyTable::PositionOf(Property const& property) const {
    auto const found = positions.find(property.GetPropertyID());
    bool const isEntry = found != positions.end() && (*properties)[found->second].Get() == &property;
    if (isEntry) {
        return found->second;
    }
    // Under a former ID, perhaps.
    auto const isSame = [&](PropertyPtr const& other) { return other.Get() == &property; };
    return static_cast<std::size_t>(std::find_if(All().begin(), All().end(), isSame) - All().begin());
}

PropertyTable::PropertyPtr const& PropertyTable::FindByID(Util::ShortID id) const {
    auto const found = positions.find(id);
    return found != positions.end() ? (*properties)[found->second] : Property::NIL;
}

PropertyTable::PropertyPtr const& PropertyTable::FindByName(Util::String const& name) const {
    for (PropertyPtr const& property : All()) {
        if (property->GetName() == name) {
            return property;
        }
    }
    return Property::NIL;
}

PropertyTable::PropertyPtr const& PropertyTable::FindIntrinsicByName(Util::String const& name) const {
    for (PropertyPtr const& property : All()) {
        if (property->IsIntrinsic() && property->GetName() == name) {
            return property;
        }
    }
    return Property::NIL;
}

} // namespace Gentra
