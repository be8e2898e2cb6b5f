// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_WEAKPTR_H
#define GENTRA_UTIL_WEAKPTR_H

#include "gentra/util/NoInline.h"

#include <cstdint>

namespace Util {

template<class T>
class WeakPtr;

/// The link between an object and the WeakPtr that watch it; a field of the watched object.
///
/// Its destruction tells every WeakPtr that the object has gone. A copy of the object is another object, so
/// a source is never copied.
template<class T>
class WeakSource {
public:
    /// `object` is the one that holds the source. Allocates.
    explicit WeakSource(T* object) : block(new Block{object, 1}) {}
    WeakSource(WeakSource const&) = delete;
    WeakSource& operator=(WeakSource const&) = delete;
    ~WeakSource() {
        block->object = nullptr;
        block->Release();
    }

private:
    friend class WeakPtr<T>;

    struct Block {
        T* object;
        std::int32_t references;

        void Release() noexcept {
            if (--references == 0) {
                Free(this);
            }
        }

        GENTRA_NOINLINE static void Free(Block* block) noexcept { delete block; }
    };

    Block* block;
};

/// A plain pointer that becomes null when its object is destroyed. Owns nothing; single-threaded.
///
/// Pools are destroyed by the host whenever it likes, while properties, selections and behaviours still point
/// at them. All such pointers are of this kind. T may be incomplete except where a WeakSource is named.
template<class T>
class WeakPtr {
public:
    constexpr WeakPtr() noexcept = default;
    /// Watches the source's object.
    explicit WeakPtr(WeakSource<T> const& source) noexcept : block(source.block) { ++block->references; }
    /// Watches the same object, if it is still there.
    WeakPtr(WeakPtr const& other) noexcept : block(other.block) {
        if (block != nullptr) {
            ++block->references;
        }
    }
    ~WeakPtr() {
        if (block != nullptr) {
            block->Release();
        }
    }

    /// Watches the other's object from now on, and its former one no more.
    WeakPtr& operator=(WeakPtr other) noexcept {
        Block* const previous = block;
        block = other.block;
        other.block = previous;
        return *this;
    }

    /// The object, or null when there is none or it has gone.
    [[nodiscard]] T* Get() const noexcept { return block != nullptr ? block->object : nullptr; }
    /// @{
    /// As Get(): nothing checks that it is not null.
    [[nodiscard]] T* operator->() const noexcept { return Get(); }
    operator T*() const noexcept { return Get(); }
    /// @}

private:
    using Block = typename WeakSource<T>::Block;

    Block* block = nullptr;
};

} // namespace Util

#endif
