// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_PROPERTIES_INSTANCESTORE_H
#define GENTRA_SRC_PROPERTIES_INSTANCESTORE_H

#include <cassert>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Gentra {

/// Owns the objects that a property creates for the members of its pool.
///
/// Objects that are given back wait for a later member, which takes no memory. None is destroyed before the store, so
/// that whoever still points at one never reads freed memory. `reset` is a function that makes an object as good as
/// new.
template<class T>
class InstanceStore {
public:
    /// An object for the datum at that address.
    template<class Make>
    [[nodiscard]] T* Take(void const* datum, Make const& make) {
        if (used == instances.size()) {
            instances.push_back(make());
        }
        T* const instance = instances[used].get();
        assert(!uses.contains(instance));
        uses.emplace(instance, Use{used, datum});
        ++used;
        return instance;
    }

    /// Whether the object was made for the datum at that address. The object may be anything.
    [[nodiscard]] bool WasMadeFor(T const* instance, void const* datum) const {
        auto const found = uses.find(instance);
        return found != uses.end() && found->second.datum == datum;
    }

    /// Takes back an object that was made for some datum.
    template<class Reset>
    void GiveBack(T* instance, Reset const& reset) {
        auto const found = uses.find(instance);
        assert(found != uses.end() && used > 0);
        std::size_t const position = found->second.position;
        assert(position < used && instances[position].get() == instance);
        uses.erase(found);
        --used;
        if (position < used) {
            instances[position].swap(instances[used]);
            uses.find(instances[position].get())->second.position = position;
        }
        reset(*instance);
    }

    /// Takes back all objects but those that `isKept` names: these stay as they are, for no datum.
    template<class Reset, class IsKept>
    void GiveBackAll(Reset const& reset, IsKept const& isKept) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < used; ++i) {
            if (isKept(*instances[i])) {
                instances[i].swap(instances[kept]);
                ++kept;
            } else {
                reset(*instances[i]);
            }
        }
        used = kept;
        std::unordered_map<T const*, Use>().swap(uses); // emptied it would stay as large, and as slow to empty
    }

private:
    struct Use {
        std::size_t position; ///< In `instances`.
        void const* datum;    ///< What the object was made for.
    };

    std::vector<std::unique_ptr<T>> instances; ///< Those in use come first.
    std::size_t used = 0;
    std::unordered_map<T const*, Use> uses;
};

} // namespace Gentra

#endif
