// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_REFCOUNTPTR_H
#define GENTRA_UTIL_REFCOUNTPTR_H

#include "gentra/util/NoInline.h"

#include <cassert>
#include <concepts>
#include <cstdint>

namespace Util {

/// The count shared by all RefCountPtr objects of one object, and the way to destroy that object.
///
/// It remembers the static type of the pointer that the first RefCountPtr was made from. So an object is
/// destroyed as what it was created as, also when its last holder knows only a base class without a virtual
/// destructor.
class RefCountBlock {
public:
    /// Takes ownership of `object` (null allowed) with a count of 1. If there is no memory for the block, the
    /// object is destroyed and the exception of `new` passes through.
    template<class U>
    [[nodiscard]] static RefCountBlock* Adopt(U* object) {
        struct Guard {
            U* object;
            ~Guard() { Destroy<U>(object); }
        } guard{object};
        auto* const block = new RefCountBlock(object, &Destroy<U>);
        guard.object = nullptr;
        return block;
    }

    /// Not atomic.
    void AddReference() noexcept { ++count; }

    /// Drops one reference; the last one destroys the object and the block.
    void Release() {
        assert(count > 0);
        if (--count == 0) {
            End(this);
        }
    }

    /// At least 1.
    [[nodiscard]] std::int32_t Count() const noexcept { return count; }

private:
    using Destroyer = void (*)(void const*);

    GENTRA_NOINLINE static void End(RefCountBlock* block) {
        block->destroy(block->object);
        delete block;
    }

    RefCountBlock(void const* newObject, Destroyer newDestroy) noexcept : object(newObject), destroy(newDestroy) {}

// The class is the one that the object was created as: it needs no virtual destructor here.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
#endif
    template<class U>
    static void Destroy(void const* victim) {
        delete static_cast<U const*>(victim);
    }
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

    void const* object;
    Destroyer destroy;
    std::int32_t count = 1;
};

/// Shared ownership of one object through a separately allocated count, for any class whatever.
///
/// All RefCountPtr that share a count block own the object together; the last one to go destroys it. Two
/// RefCountPtr are the same reference when their pointers are equal. Single-threaded.
template<class T>
class RefCountPtr {
public:
    /// Holds a newly created default T; so a default RefCountPtr is never null.
    RefCountPtr() : RefCountPtr(new T) {}

    /// Takes ownership of `object`, null allowed. Even a null pointer has a count of its own.
    RefCountPtr(T* object) : ptr(object), count(RefCountBlock::Adopt(object)) {}

    /// The same for an object of a derived class; it will be destroyed as a U.
    template<class U>
    requires(!std::same_as<U, T> && std::convertible_to<U*, T*>) RefCountPtr(U* object)
        : ptr(object), count(RefCountBlock::Adopt(object)) {}

    /// Shares an object with those who share its count.
    RefCountPtr(T* object, RefCountBlock& sharedCount) noexcept : ptr(object), count(&sharedCount) {
        count->AddReference();
    }

    /// Shares the object.
    RefCountPtr(RefCountPtr const& other) noexcept : ptr(other.ptr), count(other.count) { count->AddReference(); }

    /// Shares the object of a pointer to a derived class.
    template<class U>
    requires std::convertible_to<U*, T*> RefCountPtr(RefCountPtr<U> const& other)
    noexcept : ptr(other.ptr), count(other.count) { count->AddReference(); }

    ~RefCountPtr() { count->Release(); }

    /// @{
    /// Shares the other's object and lets go of the one held so far, which may destroy that. Safe on itself.
    RefCountPtr& operator=(RefCountPtr const& other) {
        Share(other.ptr, other.count);
        return *this;
    }

    template<class U>
    requires std::convertible_to<U*, T*> RefCountPtr& operator=(RefCountPtr<U> const& other) {
        Share(other.ptr, other.count);
        return *this;
    }
    /// @}

    /// @{
    /// Nothing checks that the pointer is not null.
    [[nodiscard]] T* operator->() const noexcept { return ptr; }
    [[nodiscard]] T& operator*() const noexcept { return *ptr; }
    /// @}
    /// May be null. The object stays owned by those who share it.
    [[nodiscard]] T* Get() const noexcept { return ptr; }

    /// Shares the object as the derived class U that it is; a null pointer when it is none.
    template<class U>
    [[nodiscard]] RefCountPtr<U> DynamicCast() const {
        if (U* const object = dynamic_cast<U*>(ptr)) {
            return RefCountPtr<U>(object, *count);
        }
        return RefCountPtr<U>(static_cast<U*>(nullptr));
    }

    /// The number of RefCountPtr objects that share this object, at least 1.
    [[nodiscard]] int GetCount() const noexcept { return count->Count(); }
    /// What they share; lasts as long as one of them.
    [[nodiscard]] RefCountBlock& GetBlock() const noexcept { return *count; }

    /// Whether the pointers are equal; so two null pointers are.
    template<class U>
    [[nodiscard]] bool operator==(RefCountPtr<U> const& other) const noexcept {
        return ptr == other.Get();
    }

private:
    template<class U>
    friend class RefCountPtr;

    /// Takes the new reference before it drops the old one, so that assigning a pointer to itself is safe.
    void Share(T* newPtr, RefCountBlock* newCount) {
        newCount->AddReference();
        RefCountBlock* const oldCount = count;
        ptr = newPtr;
        count = newCount;
        oldCount->Release();
    }

    T* ptr;
    RefCountBlock* count;
};

} // namespace Util

#endif
