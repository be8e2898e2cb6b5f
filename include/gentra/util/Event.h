// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_EVENT_H
#define GENTRA_UTIL_EVENT_H

#include "gentra/util/EventType.h"

namespace Util {

/// Something that happened: a type, two numbers and the object it is about.
///
/// Events are built as temporaries and triggered at once; nothing keeps one after Trigger() has returned.
struct Event {
    EventType type;      ///< A copy of the one it was made with.
    std::int32_t param1; ///< Its meaning is fixed by the type.
    std::int32_t param2; ///< 0 in every event that the library triggers.
    void* subject;       ///< The object the event is about, not owned; may be null.

    /// Triggers nothing yet: see EventManager::Trigger.
    Event(EventType const& newType, int newParam1, int newParam2, void* newSubject)
        : type(newType), param1(newParam1), param2(newParam2), subject(newSubject) {}

    /// A copy of the type.
    [[nodiscard]] EventType GetType() const { return type; }
};

} // namespace Util

#endif
