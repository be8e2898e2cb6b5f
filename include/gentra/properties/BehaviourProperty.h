// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_PROPERTIES_BEHAVIOURPROPERTY_H
#define GENTRA_PROPERTIES_BEHAVIOURPROPERTY_H

#include "gentra/properties/Property.h"

#include <string>

namespace Gentra {

class Behaviour;

/// A property whose datum is a pointer to a Behaviour, which the host keeps alive.
class GENTRA_EXPORT BehaviourProperty : public Property {
public:
    /// Named "Behaviour Property".
    BehaviourProperty();
    /// @{
    /// As Init() makes it. A null `newName` gives the empty name.
    explicit BehaviourProperty(std::string const& newName);
    explicit BehaviourProperty(char const* newName);
    /// @}

    /// Sets the name and the type and no behaviour.
    void Init(std::string const& newName);

    void* GetPoolData() override;
    void SetPoolData(void* data) override;
    int GetDataSize() const override;
    PropertyType GetPropertyType() override;

    // Slot 9.

    /// Runs the behaviour of the pool data: by its own TriggerLiveBehaviour() if that handles it, else
    /// passively on its owner pool, on the active member or, without one, on all members. Does nothing
    /// without a behaviour.
    virtual void TriggerBehaviour();

    /// Sets the pool data. The behaviour is not owned; null for none.
    void SetBehaviour(Behaviour* newBehaviour) noexcept { behaviour = newBehaviour; }

private:
    Behaviour* behaviour = nullptr; ///< Not owned.
};

} // namespace Gentra

#endif
