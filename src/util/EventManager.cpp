// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/EventManager.h"

#include "gentra/util/Event.h"
#include "gentra/util/EventListener.h"

#include <algorithm>
#include <iterator>

namespace Util {

EventManager::EventManager(String const& newName) : name(newName) {}

EventManager::~EventManager() {
    for (auto const& entry : recordCounts) {
        std::erase_if(entry.first->registrations,
                      [this](EventListener::Registration const& record) { return record.manager == this; });
    }
}

EventType* EventManager::RegisterListener(EventListener* listener, EventType const& type) {
    if (listener == nullptr) {
        return nullptr;
    }
    EventType const& known = *knownTypes.insert(type).first;
    listener->registrations.push_back({this, type});
    try {
        std::size_t& recordCount = recordCounts[listener];
        try {
            AppendTo(type, listener);
        } catch (...) {
            if (recordCount == 0) {
                recordCounts.erase(listener);
            }
            throw;
        }
        ++recordCount;
    } catch (...) {
        listener->registrations.pop_back();
        throw;
    }
    // The stored type is handed out for reading; its key fields must stay as they are.
    return const_cast<EventType*>(&known);
}

void EventManager::AppendTo(EventType const& type, EventListener* listener) {
    auto const entry = listeners.try_emplace(type).first;
    ListenerList& list = entry->second;
    bool const inDelivery = dispatching && &list == dispatchList;
    std::size_t const delivered = inDelivery ? static_cast<std::size_t>(dispatchNext - list.data()) : 0;
    try {
        list.push_back(listener);
    } catch (...) {
        if (list.empty()) {
            listeners.erase(entry);
        }
        throw;
    }
    if (inDelivery) {
        SetCursor(delivered);
    }
}

void EventManager::RemoveListener(EventListener* listener, EventType const& type) {
    auto const entry = listeners.find(type);
    if (listener == nullptr || entry == listeners.end()) {
        return;
    }
    if (dispatching && *dispatchNext == listener) {
        MoveCursorPast(listener);
    }
    EraseFrom(entry->second, listener);
    if (entry->second.empty()) {
        // Never the list in delivery with its cursor on an entry: the cursor left this listener above.
        listeners.erase(entry);
    }
    DropRecord(listener, type);
}

void EventManager::Trigger(Event const& event) {
    Deliver({event.type.hash, event.type.subIndex}, event);
    Deliver({event.type.hash, -1}, event);
}

void EventManager::Deliver(TypeKey key, Event const& event) {
    auto const entry = listeners.find(key);
    if (entry == listeners.end()) {
        return;
    }
    dispatchList = &entry->second;
    SetCursor(0);
    dispatching = true;
    cursorMoved = false;
    // The cursor is kept here as well, so that no step waits for the last one's way through memory. Whatever
    // a handler does to the list or the cursor sets `cursorMoved`.
    EventListener** next = dispatchNext;
    EventListener** end = dispatchEnd;
    try {
        for (;;) {
            EventListener* const listener = *next++;
            if (next == end) {
                dispatching = false;
                listener->HandleEvent(event);
                break;
            }
            dispatchNext = next;
            listener->HandleEvent(event);
            if (!cursorMoved) {
                continue;
            }
            if (!dispatching) {
                break;
            }
            cursorMoved = false;
            next = dispatchNext;
            end = dispatchEnd;
        }
        cursorMoved = true; // for a delivery around this one
    } catch (...) {
        dispatching = false;
        cursorMoved = true;
        throw;
    }
}

/// Puts the cursor on a position of the list in delivery, whose storage may have moved.
void EventManager::SetCursor(std::size_t position) noexcept {
    dispatchNext = dispatchList->data() + position;
    dispatchEnd = dispatchList->data() + dispatchList->size();
    cursorMoved = true;
}

void EventManager::MoveCursorPast(EventListener const* listener) {
    while (dispatchNext != dispatchEnd && *dispatchNext == listener) {
        ++dispatchNext;
    }
    cursorMoved = true;
    if (dispatchNext == dispatchEnd) {
        dispatching = false;
    }
}

void EventManager::EraseFrom(ListenerList& list, EventListener const* listener) {
    if (!dispatching || &list != dispatchList) {
        std::erase(list, listener);
        return;
    }
    auto const delivered = static_cast<std::size_t>(dispatchNext - list.data());
    auto const erasedBefore = static_cast<std::size_t>(std::count(list.data(), list.data() + delivered, listener));
    std::erase(list, listener);
    SetCursor(delivered - erasedBefore);
}

void EventManager::DropRecord(EventListener* listener, EventType const& type) {
    if (listener->ForgetRegistration(this, type)) {
        ForgetRecord(listener);
    }
}

void EventManager::ForgetRecord(EventListener* listener) {
    auto const count = recordCounts.find(listener);
    if (--count->second == 0) {
        recordCounts.erase(count);
    }
}

} // namespace Util
