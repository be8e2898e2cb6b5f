// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_INSTANCESTORE_H
#define GENTRA_SRC_PROPERTIES_INSTANCESTORE_H

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Gentra {

/// Owns the objects that a property creates for the members of its pool.
///
/// Objects that are given back wait, as good as new, for a later member. None is destroyed before the store,
/// so that whoever still points at one never reads freed memory.
template<class T>
class InstanceStore {
public:
    /// An object equal to `prototype`.
    [[nodiscard]] T* Take(T const& prototype) {
        if (idle.empty()) {
            idle.push_back(std::make_unique<T>(prototype));
        }
        T* const instance = idle.back().get();
        *instance = prototype;
        inUse.emplace(instance, std::move(idle.back()));
        idle.pop_back();
        return instance;
    }

    /// Takes an object back; one that the store did not give out is left alone.
    void GiveBack(T* instance, T const& prototype) {
        auto const found = inUse.find(instance);
        if (found == inUse.end()) {
            return;
        }
        *instance = prototype;
        idle.push_back(std::move(found->second));
        inUse.erase(found);
    }

    void GiveBackAll(T const& prototype) {
        for (auto& entry : inUse) {
            *entry.second = prototype;
            idle.push_back(std::move(entry.second));
        }
        inUse.clear();
    }

private:
    std::unordered_map<T*, std::unique_ptr<T>> inUse;
    std::vector<std::unique_ptr<T>> idle;
};

} // namespace Gentra

#endif
