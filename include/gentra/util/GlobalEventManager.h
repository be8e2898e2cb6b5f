// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_GLOBALEVENTMANAGER_H
#define GENTRA_UTIL_GLOBALEVENTMANAGER_H

#include "gentra/gentra_export.h"
#include "gentra/util/EventType.h"

namespace Util {
class EventListener;
class EventManager;
struct Event;
} // namespace Util

namespace Gentra {

/// The one event bus of the process, on which pools, properties and behaviours announce themselves.
///
/// The bus is created on first use and lives until the process ends. Every operation forwards to
/// Util::EventManager; see there.
class GENTRA_EXPORT GlobalEventManager {
public:
    /// Does nothing: there is no state to copy.
    GlobalEventManager& operator=(GlobalEventManager const&) noexcept { return *this; }

    /// @{
    /// Does what the operation of that name of Util::EventManager does.
    static Util::EventType* RegisterListener(Util::EventListener* listener, Util::EventType const& type);
    /// Registers for the root type of that name.
    static Util::EventType* RegisterListener(Util::EventListener* listener, Util::String const& name);
    static void RemoveListener(Util::EventListener* listener, Util::EventType const& type);
    /// Removes from the root type of that name.
    static void RemoveListener(Util::EventListener* listener, Util::String const& name);
    static void Trigger(Util::Event const& event);
    /// @}

private:
    [[nodiscard]] static Util::EventManager& GlobalManager();

    static Util::EventManager* globalManager; ///< Never destroyed, so that late destructors still find it.
};

} // namespace Gentra

#endif
