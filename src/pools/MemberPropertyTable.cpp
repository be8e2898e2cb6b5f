// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "MemberPropertyTable.h"

#include "gentra/properties/ValueProperty.h"
#include "gentra/properties/VectorProperty.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <typeinfo>
#include <utility>

namespace Gentra {

namespace {

/// See MemberPropertyTable::Place.
void const* PlainDefault(Property& property) {
    std::type_info const& kind = typeid(property);
    return kind == typeid(ValueProperty) || kind == typeid(VectorProperty) ? property.GetPoolData() : nullptr;
}

} // namespace

bool MemberPropertyTable::HasRoomFor(int size) const noexcept {
    return size >= 0 && size <= std::numeric_limits<int>::max() - recordSize;
}

void MemberPropertyTable::Add(Util::RefCountPtr<Property> const& property) {
    Place const place{recordSize, property->GetDataSize(), property->GetPropertyType(), PlainDefault(*property),
                      property.Get()};
    places.reserve(places.size() + 1);
    placesOnly.reserve(placesOnly.size() + 1);
    withoutEntry.reserve(withoutEntry.size() + 1);
    if (table.Insert(property)) {
        places.push_back(place);
    } else if (auto const found = std::find(table.All().begin(), table.All().end(), property);
               found != table.All().end()) {
        placesOnly.push_back(std::exchange(places[static_cast<std::size_t>(found - table.All().begin())], place));
    } else {
        placesOnly.push_back(place);
        withoutEntry.push_back(property);
    }
    property->SetDataOffset(place.offset);
    recordSize += place.size;
}

void MemberPropertyTable::CopyLayout(MemberPropertyTable const& other) {
    table = other.table;
    places = other.places;
    placesOnly = other.placesOnly;
    withoutEntry = other.withoutEntry;
    recordSize = other.recordSize;
}

void MemberPropertyTable::Clear(MemberPool const& pool) {
    places.clear();
    placesOnly.clear();
    recordSize = 0;
    storage.reset();
    // As in the table: the last reference may run a host's destructor.
    std::vector<Util::RefCountPtr<Property>> const leaving = std::exchange(withoutEntry, {});
    for (Util::RefCountPtr<Property> const& property : leaving) {
        property->LeavePool(pool);
    }
    table.Clear(pool);
}

bool MemberPropertyTable::HasDatum(Place const& place) const noexcept {
    auto const isSame = [&](Place const& other) {
        return other.offset == place.offset && other.size == place.size && other.type == place.type;
    };
    return std::any_of(places.begin(), places.end(), isSame) ||
           std::any_of(placesOnly.begin(), placesOnly.end(), isSame);
}

bool MemberPropertyTable::HasDatumOf(Property const& property, Place const& place) const noexcept {
    return std::any_of(places.begin(), places.end(), [&](Place const& other) {
        return other.property == &property && other.offset == place.offset && other.type == place.type &&
               other.size >= place.size;
    });
}

/// The first record, or one with bytes that no table entry covers.
unsigned char* MemberPropertyTable::TakeSpecialRecord() {
    if (recordSize < 1) {
        return nullptr;
    }
    if (storage == nullptr) {
        storage = std::make_unique<MemberRecordStorage>(static_cast<std::size_t>(recordSize));
    }
    unsigned char* const record = storage->Take();
    for (Place const& place : placesOnly) {
        std::memset(record + place.offset, 0, static_cast<std::size_t>(place.size));
    }
    return record;
}

} // namespace Gentra
