// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/EventListener.h"

#include "gentra/util/EventManager.h"

#include <algorithm>

namespace Util {

EventListener::EventListener(String const& newName) : name(newName) {}

EventListener::~EventListener() {
    while (!registrations.empty()) {
        Registration const last = registrations.back();
        std::size_t const before = registrations.size();
        last.manager->RemoveListener(this, last.type);
        // A record whose type has no list any more stays behind; it must not hide the records before it.
        if (registrations.size() == before) {
            last.manager->DropRecord(this, last.type);
        }
    }
}

bool EventListener::ForgetRegistration(EventManager* manager, EventType const& type) {
    auto const isEqual = [&](Registration const& record) { return record.manager == manager && record.type == type; };
    if (!registrations.empty() && isEqual(registrations.back())) {
        registrations.pop_back();
        return true;
    }
    auto const found = std::find_if(registrations.begin(), registrations.end(), isEqual);
    if (found == registrations.end()) {
        return false;
    }
    registrations.erase(found);
    return true;
}

} // namespace Util
