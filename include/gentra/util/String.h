// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_STRING_H
#define GENTRA_UTIL_STRING_H

#include "gentra/gentra_export.h"

#include <string>
#include <utility>

namespace Util {

/// The library's text: a `std::string` (8-bit characters) made a distinct class.
///
/// It adds no data, so it can be passed wherever a `std::string const&` is expected. Comparison is that of
/// `std::string`: byte by byte and case-sensitive. Zero bytes are ordinary text.
class String : public std::string {
public:
    String() = default;
    /// Copies the zero-terminated characters; a null pointer gives the empty text.
    String(char const* text) : std::string(text != nullptr ? text : "") {}
    /// @{
    /// Takes the text whole, zero bytes included.
    String(std::string const& text) : std::string(text) {}
    String(std::string&& text) noexcept : std::string(std::move(text)) {}
    /// @}

    /// The 32-bit hash behind event-type keys and default property IDs; 0 for the empty text.
    ///
    /// An Adler-32 checksum (M. Adler, RFC 1950) started at (0, 0) over signed bytes, which folds the letters
    /// A to Z to small ones in complete groups of 16 bytes only. So names below 16 characters hash
    /// case-sensitively. Hash values reach stored data (saved IDs) and never change. Allocates nothing.
    [[nodiscard]] GENTRA_EXPORT unsigned int Hash() const noexcept;
};

} // namespace Util

#endif
