// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// References: a property of another pool by the pool's ID and the property's name, kept current by events.
#include <gentra/gentra.h>

#include <iostream>
#include <optional>

using namespace Gentra;

int main() {
    Util::RefCountPtr<ValueProperty> const standIn(new ValueProperty("Stand-in"));
    standIn->value = -1;
    PropertyReference wind;
    wind.SetDefaultProperty(standIn);
    wind.SetPropertyName("Wind");
    auto const tell = [&](char const* when) {
        std::cout << when << ": " << wind->value << " from \"" << wind.GetOwnerPoolName() << "\"\n";
    };
    tell("without a pool");

    std::optional<MemberPool> weather(std::in_place, ContextManager::GetMainContext());
    weather->SetName("Weather");
    wind.SetOwnerPoolID(weather->GetMemberPoolID());
    tell("without the property");

    Util::RefCountPtr<ValueProperty> const breeze(new ValueProperty("Wind"));
    breeze->value = 3;
    weather->AddPoolProperty(breeze);
    tell("with both");

    weather.reset();
    tell("when the pool has gone");
}
