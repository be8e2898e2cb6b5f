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
    /// Where a datum lies in a record, in bytes.
    struct Place {
        int offset;
        int size;
        PropertyType type;
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
    /// The place of the property at that position of the table.
    [[nodiscard]] Place const& PlaceOf(std::size_t position) const noexcept { return places[position]; }
    [[nodiscard]] int RecordSize() const noexcept { return recordSize; }
    /// Whether a record has a datum of exactly that type and size there.
    [[nodiscard]] bool HasDatum(Place const& place) const noexcept;

    /// A new record, or null while records have no bytes. Bytes without a table entry are 0.
    [[nodiscard]] unsigned char* TakeRecord();
    [[nodiscard]] bool IsRecordInUse(unsigned char const* record);
    /// Ends the use of a record, which is handed out again once it is given back.
    void RetireRecord(unsigned char* record);
    void GiveBackRecord(unsigned char* record);

private:
    PropertyTable table;
    std::vector<Place> places;     ///< Same positions as the table.
    std::vector<Place> placesOnly; ///< Of properties without an entry.
    int recordSize = 0;
    std::unique_ptr<MemberRecordStorage> storage; ///< Null until the first member is created.
};

} // namespace Gentra

#endif
