// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_MEMBER_H
#define GENTRA_PROPERTIES_MEMBER_H

namespace Gentra {

/// A handle to one agent of a pool: the address of its record. Owns nothing and is as cheap as a pointer.
///
/// The record belongs to the pool and stays where it is until the member is deleted or the pool is cleared.
struct Member {
    unsigned char* record = nullptr; ///< The member's data, laid out by its pool; null for NIL.

    constexpr Member() noexcept = default;
    /// The member of that record; null gives NIL.
    explicit constexpr Member(unsigned char* newRecord) noexcept : record(newRecord) {}

    /// False for NIL only: a handle does not know that its member was deleted.
    [[nodiscard]] constexpr bool IsValid() const noexcept { return record != nullptr; }

    /// Two members are equal when their records are the same.
    [[nodiscard]] constexpr bool operator==(Member const& other) const noexcept = default;

    /// The member that is none.
    static Member const NIL;
};

inline constexpr Member Member::NIL{};

} // namespace Gentra

#endif
