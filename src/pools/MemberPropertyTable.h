// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_POOLS_MEMBERPROPERTYTABLE_H
#define GENTRA_SRC_POOLS_MEMBERPROPERTYTABLE_H

#include "MemberRecordStorage.h"
#include "PropertyTable.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Gentra {

/// The member properties of a pool, the record layout that they make up and the records.
///
/// The layout is kept here, apart from the properties: a property may be taken over by another pool and then
/// carries that pool's offset.
class MemberPropertyTable {
public:
    /// Where a property's data lie in the records, in bytes.
    struct Place {
        int offset;
        int size;
        PropertyType type;
        /// The pool data of a property that is exactly a ValueProperty or VectorProperty: copying it is all
        /// there is to do for a new member, and nothing for a deleted one. Null for any other property.
        void const* plainDefault = nullptr;
        Property* property = nullptr; ///< The table keeps it alive.
    };

    /// Whether there are records, which fix the layout.
    [[nodiscard]] bool HasRecords() const noexcept { return storage != nullptr; }
    /// Whether the record size stays within an int with a datum of that size.
    [[nodiscard]] bool HasRoomFor(int size) const noexcept;

    /// Gives the property the next place in the layout and its offset, and a table entry unless its ID is
    /// taken: then the bytes are its own all the same, but they are not initialised from it. A property that
    /// is added again moves to the new place.
    void Add(Util::RefCountPtr<Property> const& property);
    /// Takes over the properties and the layout of another table, but no records.
    void CopyLayout(MemberPropertyTable const& other);
    void Clear(MemberPool const& pool);

    [[nodiscard]] PropertyTable const& Properties() const noexcept { return table; }
    /// The places of the properties, in the order of the table.
    [[nodiscard]] std::vector<Place> const& Places() const noexcept { return places; }
    [[nodiscard]] int RecordSize() const noexcept { return recordSize; }
    /// Whether there is a datum of that type and size at that offset of a record. For numbers it is enough that the
    /// record reaches so far; what would be taken for a pointer must be one.
    [[nodiscard]] bool HasDatum(int offset, int size, PropertyType type) const noexcept;

    /// A new record, not in use yet, or none while records have no bytes. Bytes without a table entry are 0.
    [[nodiscard]] MemberRecordStorage::Place TakeRecord() {
        return storage != nullptr && bare.empty() ? storage->Take() : TakeSpecialRecord();
    }
    /// The records, while there are any.
    [[nodiscard]] MemberRecordStorage* Records() const noexcept { return storage.get(); }

private:
    friend struct Validator; // of the tests

    [[nodiscard]] MemberRecordStorage::Place TakeSpecialRecord();

    /// All bytes of the record, end to end.
    struct Datum {
        int offset;
        int size;
        PropertyType type;
    };

    PropertyTable table;
    std::vector<Place> places; ///< Same positions as the table.
    std::vector<Datum> layout; ///< Ascending by offset.
    std::vector<Datum> bare;   ///< Those without an entry: of properties that have none, and former places.
    int recordSize = 0;
    std::unique_ptr<MemberRecordStorage> storage; ///< Null until the first member is created.
};

} // namespace Gentra

#endif
