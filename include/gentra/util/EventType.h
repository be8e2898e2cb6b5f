// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_EVENTTYPE_H
#define GENTRA_UTIL_EVENTTYPE_H

#include "gentra/util/String.h"

#include <compare>
#include <cstdint>

namespace Util {

/// The type of an event: a root name and the number of a sub-type below it.
///
/// Types are compared by `hash` and `subIndex` only; the two names are carried along for people. Two root
/// types whose names hash alike are the same type.
struct EventType {
    std::int32_t hash;     ///< String::Hash() of `name`, the same 32 bits read as a signed number.
    std::int32_t subIndex; ///< The sub-type's number; -1 stands for every sub-type.
    String name;           ///< The name of the root type.
    String subName;        ///< The name of the sub-type; "Joker" for a root type.

    /// A root type: the wildcard (`subIndex` -1, `subName` "Joker") of the family `newName`.
    explicit EventType(String const& newName)
        : hash(static_cast<std::int32_t>(newName.Hash())), subIndex(-1), name(newName), subName("Joker") {}

    /// A sub-type of the parent's family. A `newSubIndex` of -1 gives the wildcard under another sub-name.
    EventType(EventType const& parent, String const& newSubName, int newSubIndex)
        : hash(parent.hash), subIndex(newSubIndex), name(parent.name), subName(newSubName) {}

    /// Whether the types are of one family and have the same sub-type, or either is the wildcard.
    [[nodiscard]] bool Matches(EventType const& other) const noexcept {
        return hash == other.hash && (subIndex == other.subIndex || subIndex == -1 || other.subIndex == -1);
    }

    /// By `hash` and `subIndex`; here the wildcard equals no other sub-type.
    [[nodiscard]] bool operator==(EventType const& other) const noexcept {
        return hash == other.hash && subIndex == other.subIndex;
    }

    /// Ascending by `hash`, then by `subIndex`, both as signed numbers.
    [[nodiscard]] std::strong_ordering operator<=>(EventType const& other) const noexcept {
        if (auto const order = hash <=> other.hash; order != 0) {
            return order;
        }
        return subIndex <=> other.subIndex;
    }
};

} // namespace Util

#endif
