// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_EVENTLISTENER_H
#define GENTRA_UTIL_EVENTLISTENER_H

#include "gentra/gentra_export.h"
#include "gentra/util/EventType.h"
#include "gentra/util/String.h"

#include <vector>

namespace Util {

struct Event;
class EventManager;

/// Somebody who wants to hear events: derive, implement HandleEvent() and register with an EventManager.
///
/// A listener leaves every manager when it is destroyed, also from inside a delivery. It has an identity and
/// is not copied. The destructor is not virtual: destroy a listener as what it was created as.
class GENTRA_EXPORT EventListener {
public:
    /// A listener without registrations. The name is for people.
    explicit EventListener(String const& newName);
    EventListener(EventListener const&) = delete;
    EventListener& operator=(EventListener const&) = delete;
    ~EventListener();

    // Virtual operations in slot order; compiled plug-ins depend on it.

    /// Called for each event of a type that the listener is registered for, once per registration. It may
    /// register and remove listeners (itself included) and trigger further events, see EventManager::Trigger.
    virtual void HandleEvent(Event const& event) = 0;

protected:
    /// One call of RegisterListener.
    struct Registration {
        EventManager* manager; ///< Not owned.
        EventType type;        ///< A copy of the type registered for.

        /// With the same manager, for equal types.
        [[nodiscard]] bool operator==(Registration const& other) const noexcept {
            return manager == other.manager && type == other.type;
        }
    };

    std::vector<Registration> registrations; ///< In the order in which they were made.
    String name;                             ///< As given at construction.

private:
    friend class EventManager;

    /// Removes one equal record: the last one if it is equal, else the first from the front.
    /// Returns whether there was one.
    bool ForgetRegistration(EventManager* manager, EventType const& type);
};

} // namespace Util

#endif
