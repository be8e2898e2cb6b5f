// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_SELECTIONEDITS_H
#define GENTRA_SRC_PROPERTIES_SELECTIONEDITS_H

#include "SlotIndex.h"
#include "SlotOrder.h"

#include <cstddef>

namespace Gentra {

/// What a MemberSelection needs beyond its two vectors once members are removed or inserted.
struct SelectionEdits {
    SlotOrder order;          ///< In force while the selection is `edited`.
    SlotIndex index;          ///< Built only while `edited`.
    std::size_t searched = 0; ///< Entries looked at by searches since the vector was last built.
};

} // namespace Gentra

#endif
