// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_POOLS_PROPERTYREFERENCE_H
#define GENTRA_POOLS_PROPERTYREFERENCE_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Property.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/String.h"
#include "gentra/util/WeakPtr.h"

#include <memory>

namespace Util {
struct Event;
}

namespace Gentra {

class MemberPool;

/// Names a property by the ID of its pool and its own name, and holds it while it exists.
///
/// The reference is kept current by events: it finds its pool when that is created and its property when that
/// enters the pool, and falls back to a default property when either goes. It misses an event whose delivery
/// a listener before it has ended by triggering another (see EventManager::Trigger). A null pointer to a
/// property counts as Property::NIL.
class GENTRA_EXPORT PropertyReference {
public:
    /// A reference to the property "None" of no pool (a random ID); target and default are Property::NIL.
    PropertyReference();
    /// @{
    /// The copy is bound like `other` and hears events of its own.
    PropertyReference(PropertyReference const& other);
    PropertyReference& operator=(PropertyReference const& other);
    /// @}
    ~PropertyReference();

    /// The property that is referred to, else the default one. What a caller assigns is the target until the
    /// next event or call changes it.
    [[nodiscard]] Util::RefCountPtr<Property>& GetProperty() noexcept { return property; }
    /// As GetProperty(). Null only where a caller has assigned a null pointer.
    Property* operator->() const noexcept { return property.Get(); }
    /// The ID of that property, of Property::NIL for a null pointer.
    [[nodiscard]] Util::ShortID GetPropertyID() const;

    /// The pool that the reference is bound to, or null.
    [[nodiscard]] MemberPool* GetOwnerPool() const noexcept { return ownerPool.Get(); }
    /// The ID of the pool to bind to.
    [[nodiscard]] Util::ShortID const& GetOwnerPoolID() const noexcept { return ownerPoolID; }
    /// The name of the pool that the reference is bound to; empty for none.
    [[nodiscard]] Util::String GetOwnerPoolName() const;
    /// The name to look for; the default property may have another.
    [[nodiscard]] Util::String const& GetPropertyName() const noexcept { return propertyName; }

    /// Binds to the main context's pool of that ID, if there is one now or as soon as one is created. Nothing
    /// happens for the ID that is set already.
    void SetOwnerPoolID(Util::ShortID const& id);
    /// Refers to the property of that name from now on; the default property, unless it is one of the
    /// shared NIL properties, is renamed to it. Nothing happens for the name that is set already.
    void SetPropertyName(Util::String const& name);
    /// Replaces the default. It becomes the target as well when that is Property::NIL.
    void SetDefaultProperty(Util::RefCountPtr<Property> const& newDefault);
    /// Makes the pool's property of the name the target. Without a pool or such a property nothing changes.
    void GetPropertyFromOwnerPool();
    /// Binds to that pool, or with null to none, and falls back to the default. Nothing happens for the pool
    /// that the reference is bound to. The ID stays.
    void SetNewOwnerPool(MemberPool* pool);

    /// What the reference does on an event; its listener calls it. A property event with other numbers than
    /// an entering or leaving one has is logged: "Bug Report :: ValueProperty Channel :: ValueProperty
    /// could't handle event".
    void HandleEvents(Util::Event const& event);

private:
    class MyListener;

    void HandlePropertyEvent(Util::Event const& event);
    void HandlePoolEvent(Util::Event const& event);
    void ListenToPool(int identity);

    Util::RefCountPtr<Property> property = Property::NIL;        ///< The current target.
    Util::RefCountPtr<Property> defaultProperty = Property::NIL; ///< What the target falls back to.
    Util::String propertyName = Property::NO_NAME;
    std::unique_ptr<MyListener> listener;         ///< Hears of pools.
    std::unique_ptr<MyListener> propertyListener; ///< Hears of the properties of the bound pool.
    Util::WeakPtr<MemberPool> ownerPool;          ///< Null while not bound.
    Util::ShortID ownerPoolID;                    ///< Random at first, which stands for no pool.
    int boundIdentity;                            ///< Identity value of the pool whose property events are heard.
};

} // namespace Gentra

#endif
