// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Saving: what a tool writes down so that it finds the same pool, property and members again in another session.
#include "Builder.h"

#include <iostream>
#include <optional>
#include <sstream>

using namespace Gentra;

namespace {

/// The same pool in each session: fixed IDs make properties and pools known again.
struct Session {
    Session() : builder(Fill) {
        pool.SetName("Stars");
        pool.SetNewMemberPoolID(4711);
        ContextManager::GetMainContext().ForceConstructAllMemberPools();
    }
    static void Fill(MemberPool& stars) {
        Parameter parameter;
        parameter.MakePropertyCreationParameter(VALUE, "Brightness", false);
        stars.CreateMemberPropertyFromParameter(parameter, 0); // an ID that follows from its name and the pool's ID
        parameter.MakePropertyCreationParameter(VECTOR, "Position", false);
        stars.CreateMemberPropertyFromParameter(parameter, 0);
    }

    Builder builder;
    MemberPool pool{ContextManager::GetMainContext()};
};

/// All members, property by property: ID, then the numbers.
void Save(MemberPool& pool, std::ostream& text) {
    text << pool.GetNumMembers() << "\n";
    for (auto const& property : pool.GetAllMemberProperties()) {
        text << static_cast<int>(property->GetPropertyID());
        for (Member const member : pool.GetAllMembers()) {
            for (int at = 0; at < property->GetDataSize(); at += static_cast<int>(sizeof(float))) {
                text << ' ' << Datum::Read<float>(member.record + property->GetDataOffset() + at);
            }
        }
        text << "\n";
    }
}

void Load(MemberPool& pool, std::istream& text) {
    int count = 0;
    text >> count;
    pool.SetMemberCount(count);
    for (int id = 0; text >> id;) {
        Util::RefCountPtr<Property> const property = pool.GetPropertyByID(id);
        for (Member const member : pool.GetAllMembers()) {
            for (int at = 0; at < property->GetDataSize(); at += static_cast<int>(sizeof(float))) {
                float number = 0;
                text >> number;
                Datum::Write(member.record + property->GetDataOffset() + at, number);
            }
        }
    }
}

} // namespace

int main() {
    std::optional<Session> session(std::in_place);
    session->pool.SetMemberCount(3);
    float bright = 2.5f;
    session->pool.GetPropertyFromName("Brightness")->SetDataToMemberSelection(&bright, session->pool, 1);
    std::stringstream text;
    Save(session->pool, text);
    Path path; // an animation curve of a tool, say, keeps whose datum it moves
    path.SetRootMemberPool(session->pool);
    path.SetDestinationProperty(session->pool.GetPropertyFromName("Brightness"));
    std::stringstream pathText;
    path.SaveToStream(pathText);

    session.reset();
    session.emplace();
    Load(session->pool, text);
    Path loaded;
    loaded.LoadFromStream(pathText);
    loaded.ResolvePathIfNeccessary();
    Util::String name;
    loaded.GetPathName(name);
    for (int star = 0; star < session->pool.GetNumMembers(); ++star) {
        loaded.GetIndicesForManipulation() = {star};
        std::cout << name << " of star " << star << " is "
                  << Datum::Read<float>(loaded.GetDestinationPropertyDataUsingIndices()) << "\n";
    }
}
