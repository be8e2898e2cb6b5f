// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_MESSAGEMANAGER_H
#define GENTRA_UTIL_MESSAGEMANAGER_H

#include "gentra/gentra_export.h"
#include "gentra/util/String.h"

#include <cstddef>
#include <deque>
#include <set>

namespace Util {

/// A log that keeps the 128 most recent messages.
class GENTRA_EXPORT MessageManager {
public:
    /// The number of messages kept; the oldest ones go first.
    static constexpr std::size_t CAPACITY = 128;

    /// Appends a message.
    void OutputMessage(String const& text);

    /// Appends a message unless this operation has seen exactly this text since the last ClearAllMessages().
    void OutputMessageOnce(String const& text);

    /// Copies the log into `buffer` (of `size` bytes) as one zero-terminated text, newest message first, each
    /// followed by a carriage return and a line feed.
    ///
    /// A message that no longer fits is left out whole, never cut; older, shorter ones may still follow. The
    /// log stays as it is. Nothing is written for a `size` below 1 or a null `buffer`.
    void GetAllMessages(char* buffer, int size) const;

    /// Empties the log; every text may be logged once again.
    void ClearAllMessages();

private:
    std::deque<String> messages; ///< Oldest at the front.
    std::set<String> onceSeen;
};

} // namespace Util

#endif
