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
/// Objects that are given back wait for a later member. None is destroyed before the store, so that whoever
/// still points at one never reads freed memory. `Reset` is a function that makes an object as good as new.
template<class T>
class InstanceStore {
public:
    /// An object for the datum at that address.
    template<class Make>
    [[nodiscard]] T* Take(void const* datum, Make const& make) {
        if (idle.empty()) {
            idle.push_back(make());
        }
        T* const instance = idle.back().get();
        inUse.try_emplace(instance, Use{nullptr, datum}).first->second.instance = std::move(idle.back());
        idle.pop_back();
        return instance;
    }

    /// Takes back the object of the datum at that address. One that was made for another datum, or that the
    /// store did not make at all, is left alone.
    template<class Reset>
    void GiveBack(T* instance, void const* datum, Reset const& reset) {
        auto const found = inUse.find(instance);
        if (found != inUse.end() && found->second.datum == datum) {
            Retire(found->second, reset);
            inUse.erase(found);
        }
    }

    /// Keeps an object in use until GiveBackAll(), because more than its own datum may point at it.
    void Share(T const* instance) noexcept {
        auto const found = inUse.find(const_cast<T*>(instance));
        if (found != inUse.end()) {
            found->second.datum = nullptr;
        }
    }

    template<class Reset>
    void GiveBackAll(Reset const& reset) {
        idle.reserve(idle.size() + inUse.size());
        for (auto& entry : inUse) {
            Retire(entry.second, reset);
        }
        inUse.clear();
    }

private:
    struct Use {
        std::unique_ptr<T> instance;
        void const* datum; ///< What the object was made for; null when others may point at it.
    };

    template<class Reset>
    void Retire(Use& use, Reset const& reset) {
        reset(*use.instance);
        idle.push_back(nullptr);
        idle.back() = std::move(use.instance);
    }

    std::unordered_map<T*, Use> inUse;
    std::vector<std::unique_ptr<T>> idle;
};

} // namespace Gentra

#endif
