// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_IDEAS_BUILDER_H
#define EXAMPLES_IDEAS_BUILDER_H

#include <gentra/gentra.h>

#include <functional>
#include <utility>

/// Fills each pool that is being constructed. Shared by the small examples that run behaviours.
class Builder : private Util::EventListener {
public:
    explicit Builder(std::function<void(Gentra::MemberPool&)> newFill)
        : EventListener("Builder"), fill(std::move(newFill)) {
        Gentra::GlobalEventManager::RegisterListener(this, Gentra::MemberPool::EVENT_CONSTRUCT);
    }

private:
    void HandleEvent(Util::Event const& event) override { fill(*static_cast<Gentra::MemberPool*>(event.subject)); }

    std::function<void(Gentra::MemberPool&)> fill;
};

#endif
