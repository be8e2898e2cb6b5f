// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_WHOLE_WORLD_H
#define GENTRA_TESTS_WHOLE_WORLD_H

#include "Choices.h"

#include <cstddef>
#include <memory>
#include <string>

namespace Whole {

/// A host that does at random what hosts do, and a model of what has to come of it.
///
/// Pools, properties, behaviours, selections and references come and go, also inside events and behaviours; passes
/// and frames run. Each step does one operation; Check() compares everything that can be seen from outside with the
/// model, and walks the structures inside. Both throw std::logic_error where the library and the model disagree.
class World {
public:
    /// `logToError` writes the operations to the standard error, where they stay when the process ends early.
    explicit World(Choices& choices, bool logToError = false);
    World(World const&) = delete;
    World& operator=(World const&) = delete;
    ~World();

    void Step();
    void Check();
    /// One line for each operation so far.
    [[nodiscard]] std::string Operations() const;
    /// How often behaviours have run.
    [[nodiscard]] std::size_t CountRuns() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> host;
};

} // namespace Whole

#endif
