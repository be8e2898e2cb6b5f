// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "World.h"

#include "WorldModel.h"

namespace Whole {

class World::Implementation : public Host {
    using Host::Host;
};

World::World(Choices& choices, bool logToError) : host(std::make_unique<Implementation>(choices, logToError)) {}
World::~World() = default;

void World::Step() {
    host->Step();
}
void World::Check() {
    host->Check();
}
std::string World::Operations() const {
    return host->Operations();
}
std::size_t World::CountRuns() const {
    return host->CountRuns();
}

} // namespace Whole
