// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_EVENTMANAGER_H
#define GENTRA_UTIL_EVENTMANAGER_H

#include "gentra/gentra_export.h"
#include "gentra/util/EventType.h"
#include "gentra/util/String.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

namespace Util {

class EventListener;
class FirstException;
struct Event;

/// An event bus: delivers each triggered event at once, inside Trigger(), to the listeners of its type.
///
/// The listeners of the exact type come first, then those of the family's root type, each group in the order
/// of registration. Owns no listener; a manager that is destroyed takes its records off its listeners. It is
/// not to be destroyed by a handler that it calls.
class GENTRA_EXPORT EventManager {
public:
    /// A bus without listeners. The name is for people.
    explicit EventManager(String const& newName);
    EventManager(EventManager const&) = delete;
    EventManager& operator=(EventManager const&) = delete;
    ~EventManager();

    /// Appends the listener to the list of `type`; a listener registered twice is called twice per event.
    ///
    /// Returns the manager's own copy of the type, valid as long as the manager: the same address for equal
    /// types, under the names of the first registration. Null for a null listener, which is ignored.
    EventType* RegisterListener(EventListener* listener, EventType const& type);

    /// Removes every entry of the listener from the list of `type`, and one of its records of that type.
    /// Does nothing when nobody listens to the type.
    ///
    /// During a delivery whose next listener is this one, whatever type is named here, that delivery goes on
    /// behind it.
    void RemoveListener(EventListener* listener, EventType const& type);

    /// Delivers the event. An event of a root type reaches its listeners twice, as exact type and as root.
    ///
    /// A handler may add and remove listeners: one appended to the list in delivery is still reached, unless
    /// the handler that appended it was the last of the list. The manager has one delivery cursor, so a
    /// handler that triggers an event with listeners ends the delivery it was called from; that outer
    /// Trigger() goes on with its root phase. A handler that throws keeps the event from nobody: the first exception is
    /// thrown on when all have heard it.
    void Trigger(Event const& event);

private:
    /// In order of registration. Removals leave null pointers, until these are the greater part.
    struct ListenerList {
        std::vector<EventListener*> listeners;
        std::vector<std::uint64_t> numbers; ///< Of the registrations, ascending; same positions.
        std::size_t removed = 0;
    };

    /// Key of a type in the maps, so that no text is copied to look one up.
    struct TypeKey {
        std::int32_t hash;
        std::int32_t subIndex;
        [[nodiscard]] bool operator==(TypeKey const& other) const noexcept = default;
    };
    struct TypeOrder {
        using is_transparent = void;
        bool operator()(EventType const& a, EventType const& b) const noexcept { return a < b; }
        bool operator()(EventType const& a, TypeKey b) const noexcept {
            return a.hash != b.hash ? a.hash < b.hash : a.subIndex < b.subIndex;
        }
        bool operator()(TypeKey a, EventType const& b) const noexcept {
            return a.hash != b.hash ? a.hash < b.hash : a.subIndex < b.subIndex;
        }
    };
    using ListenerMap = std::map<EventType, ListenerList, TypeOrder>;

    /// A listener and a type that it is registered for.
    struct Place {
        EventListener const* listener;
        TypeKey type;
        [[nodiscard]] bool operator==(Place const& other) const noexcept = default;
    };
    struct PlaceHash {
        [[nodiscard]] std::size_t operator()(Place const& place) const noexcept;
    };

    void AppendTo(EventType const& type, EventListener* listener);
    void Deliver(TypeKey key, Event const& event, FirstException& exception);
    void SetCursor(std::size_t position) noexcept;
    void MoveCursorPast(EventListener const* listener) noexcept;
    void RemoveFrom(ListenerList& list, Place const& place);
    void RemoveNumber(Place const& place, std::uint64_t number);
    static void Tidy(ListenerList& list);
    void DropRecord(EventListener* listener, EventType const& type);

    friend class EventListener;
    void ForgetRecord(EventListener* listener);

    std::set<EventType, std::less<>> knownTypes;                     ///< Every type ever registered for; never shrinks.
    ListenerMap listeners;                                           ///< Types with at least one listener.
    std::unordered_multimap<Place, std::uint64_t, PlaceHash> places; ///< The numbers of their registrations.
    std::uint64_t registrationsSoFar = 0;
    ListenerList* dispatchList = nullptr;   ///< The list in delivery, while `dispatching`.
    EventListener** dispatchNext = nullptr; ///< In it the next listener to call, while `dispatching`.
    EventListener** dispatchEnd = nullptr;  ///< Its end.
    bool dispatching = false;
    bool cursorMoved = false; ///< Whether something else than the delivery itself has moved the cursor.
    String name;

    /// How many records each listener holds of this manager, to take them off when the manager goes.
    std::unordered_map<EventListener*, std::size_t> recordCounts;
};

} // namespace Util

#endif
