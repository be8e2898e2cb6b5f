// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "MemberPropertyTable.h"

#include "gentra/properties/ValueProperty.h"
#include "gentra/properties/VectorProperty.h"

#include <algorithm>
#include <cassert>
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
    Datum const datum{place.offset, place.size, place.type};
    std::size_t const barePlaces = bare.size();
    layout.push_back(datum);
    try {
        bare.push_back(datum);
        places.push_back(place);
        if (table.Insert(property)) {
            bare.pop_back();
        } else {
            places.pop_back();
            std::size_t const entry = table.PositionOf(*property);
            if (entry < places.size()) {
                Place const former = std::exchange(places[entry], place);
                bare.back() = {former.offset, former.size, former.type};
            }
        }
    } catch (...) {
        layout.pop_back();
        bare.resize(barePlaces);
        places.resize(table.All().size());
        throw;
    }
    assert(places.size() == table.All().size() && layout.size() == places.size() + bare.size());
    property->SetDataOffset(place.offset);
    recordSize += place.size;
}

void MemberPropertyTable::CopyLayout(MemberPropertyTable const& other) {
    assert(!HasRecords());
    table = other.table;
    places = other.places;
    layout = other.layout;
    bare = other.bare;
    recordSize = other.recordSize;
}

void MemberPropertyTable::Clear(MemberPool const& pool) {
    places.clear();
    layout.clear();
    bare.clear();
    recordSize = 0;
    storage.reset();
    table.Clear(pool);
}

bool MemberPropertyTable::HasDatum(int offset, int size, PropertyType type) const noexcept {
    if (type == VALUE || type == VECTOR) {
        return offset >= 0 && size <= recordSize && offset <= recordSize - size;
    }
    auto const found = std::lower_bound(layout.begin(), layout.end(), offset,
                                        [](Datum const& datum, int wanted) { return datum.offset < wanted; });
    return std::any_of(found, layout.end(), [&](Datum const& datum) { // some may have no bytes
        return datum.offset == offset && datum.size == size && datum.type == type;
    });
}

/// The first record, or one with bytes that no table entry covers.
MemberRecordStorage::Place MemberPropertyTable::TakeSpecialRecord() {
    if (recordSize < 1) {
        return MemberRecordStorage::NOWHERE;
    }
    if (storage == nullptr) {
        storage = std::make_unique<MemberRecordStorage>(static_cast<std::size_t>(recordSize));
    }
    MemberRecordStorage::Place const record = storage->Take();
    for (Datum const& datum : bare) {
        std::memset(storage->At(record) + datum.offset, 0, static_cast<std::size_t>(datum.size));
    }
    return record;
}

} // namespace Gentra
