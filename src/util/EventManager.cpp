// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/EventManager.h"

#include "FirstException.h"

#include "gentra/util/Event.h"
#include "gentra/util/EventListener.h"

#include <algorithm>
#include <cassert>
#include <functional>

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
    auto const delivered = inDelivery ? static_cast<std::size_t>(dispatchNext - list.listeners.data()) : 0;
    std::uint64_t const number = ++registrationsSoFar;
    try {
        list.numbers.push_back(number);
        places.emplace(Place{listener, {type.hash, type.subIndex}}, number);
        list.listeners.push_back(listener);
    } catch (...) {
        if (list.numbers.size() > list.listeners.size()) {
            RemoveNumber({listener, {type.hash, type.subIndex}}, number);
            list.numbers.pop_back();
        }
        if (list.listeners.empty()) {
            listeners.erase(entry);
        }
        throw;
    }
    if (inDelivery) {
        SetCursor(delivered);
    }
}

/// If it is there: memory may have run out before it was noted.
void EventManager::RemoveNumber(Place const& place, std::uint64_t number) {
    auto const [first, end] = places.equal_range(place);
    auto const found = std::find_if(first, end, [&](auto const& each) { return each.second == number; });
    if (found != end) {
        places.erase(found);
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
    ListenerList& list = entry->second;
    RemoveFrom(list, {listener, {type.hash, type.subIndex}});
    if (list.removed == list.listeners.size()) {
        // Never the list in delivery with its cursor on an entry: the cursor left this listener above.
        listeners.erase(entry);
    } else if (list.removed > list.listeners.size() / 2 && !(dispatching && &list == dispatchList)) {
        Tidy(list);
    }
    DropRecord(listener, type);
}

void EventManager::Trigger(Event const& event) {
    FirstException exception;
    Deliver({event.type.hash, event.type.subIndex}, event, exception);
    Deliver({event.type.hash, -1}, event, exception);
    exception.ThrowOn();
}

void EventManager::Deliver(TypeKey key, Event const& event, FirstException& exception) {
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
    for (;;) {
        EventListener* const listener = *next++;
        while (next != end && *next == nullptr) {
            ++next;
        }
        if (next == end) {
            dispatching = false;
            exception.During([&] { listener->HandleEvent(event); });
            break;
        }
        dispatchNext = next;
        exception.During([&] { listener->HandleEvent(event); });
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
}

/// Puts the cursor on a position of the list in delivery, whose storage may have moved.
void EventManager::SetCursor(std::size_t position) noexcept {
    assert(position <= dispatchList->listeners.size());
    dispatchNext = dispatchList->listeners.data() + position;
    dispatchEnd = dispatchList->listeners.data() + dispatchList->listeners.size();
    MoveCursorPast(nullptr);
}

void EventManager::MoveCursorPast(EventListener const* listener) noexcept {
    while (dispatchNext != dispatchEnd && (*dispatchNext == listener || *dispatchNext == nullptr)) {
        ++dispatchNext;
    }
    cursorMoved = true;
    if (dispatchNext == dispatchEnd) {
        dispatching = false;
    }
}

void EventManager::RemoveFrom(ListenerList& list, Place const& place) {
    auto const [first, end] = places.equal_range(place);
    for (auto each = first; each != end; ++each) {
        auto const number = std::lower_bound(list.numbers.begin(), list.numbers.end(), each->second);
        assert(number != list.numbers.end() && *number == each->second);
        list.listeners[static_cast<std::size_t>(number - list.numbers.begin())] = nullptr;
        ++list.removed;
    }
    places.erase(first, end);
}

void EventManager::Tidy(ListenerList& list) {
    assert(list.numbers.size() == list.listeners.size());
    std::size_t kept = 0;
    for (std::size_t i = 0; i < list.listeners.size(); ++i) {
        list.listeners[kept] = list.listeners[i];
        list.numbers[kept] = list.numbers[i];
        kept += list.listeners[i] != nullptr ? 1 : 0;
    }
    assert(kept + list.removed == list.listeners.size());
    list.listeners.resize(kept);
    list.numbers.resize(kept);
    list.removed = 0;
}

std::size_t EventManager::PlaceHash::operator()(Place const& place) const noexcept {
    auto const type = static_cast<std::uint32_t>(place.type.hash) * 0x9E3779B1u ^
                      static_cast<std::uint32_t>(place.type.subIndex) * 0x85EBCA77u;
    return std::hash<EventListener const*>()(place.listener) ^ type;
}

void EventManager::DropRecord(EventListener* listener, EventType const& type) {
    if (listener->ForgetRegistration(this, type)) {
        ForgetRecord(listener);
    }
}

void EventManager::ForgetRecord(EventListener* listener) {
    auto const count = recordCounts.find(listener);
    if (count != recordCounts.end() && --count->second == 0) {
        recordCounts.erase(count);
    }
}

} // namespace Util
