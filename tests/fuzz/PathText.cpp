// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Paths from any text: what was read is written and read again alike, and is followed without harm.

#include "Fuzzing.h"

#include <sstream>

namespace {

using namespace Gentra;
using Util::RefCountPtr;

/// A pool of ID 1 whose properties 2 and 3 are selections of its own members, and 4 and 5 are values.
class Target {
public:
    Target() {
        pool.SetNewMemberPoolID(1);
        RefCountPtr<MemberSelectionProperty> const selections[2];
        RefCountPtr<Property> const properties[] = {selections[0], selections[1], new ValueProperty, new ValueProperty};
        for (int i = 0; i < 4; ++i) {
            properties[i]->SetPropertyID(i + 2);
            i % 2 == 0 ? pool.AddMemberProperty(properties[i]) : pool.AddPoolProperty(properties[i]);
        }
        selections[0]->SetBasePoolID(1);
        selections[1]->SetBasePoolID(1);
        pool.SetBasePoolsForMemberSelections();
        pool.SetMemberCount(3);
        pool.ActivateFirstMember();
    }

private:
    MemberPool pool{ContextManager::GetMainContext()};
};

std::string Saved(Path const& path) {
    std::ostringstream stream;
    path.SaveToStream(stream);
    return stream.str();
}

} // namespace

void Fuzz(std::span<unsigned char const> bytes) {
    static Target const target;
    if (bytes.empty()) {
        return;
    }
    std::istringstream text(std::string(bytes.begin() + 1, bytes.end()));
    std::ios::fmtflags const flags[] = {std::ios::dec, std::ios::hex, std::ios::oct, {}};
    text.setf(flags[bytes[0] % 4], std::ios::basefield);
    (bytes[0] & 4) != 0 ? text >> std::noskipws : text >> std::skipws;
    while (text.good()) {
        Path path;
        path.LoadFromStream(text);
        std::string const saved = Saved(path);
        std::istringstream copy(saved);
        Path again;
        again.LoadFromStream(copy);
        Require(!copy.fail() && Saved(again) == saved, "what was written is read alike");
        Require(path.ResolvePath() == again.ResolvePath(), "both lead somewhere or nowhere");
        Require(path.GetDestinationMemberNoIndices() == again.GetDestinationMemberNoIndices(), "both lead there");
        for (int& index : path.GetIndicesForManipulation()) {
            index = bytes[0] % 8 - 2;
        }
        void const* const data = path.GetDestinationPropertyDataUsingIndices();
        if (data != nullptr && path.GetDestinationPropertyIncludingMemberSelections()->GetPropertyType() == VALUE) {
            Require(Datum::Read<float>(data) == 0, "the datum is one of the pool's");
        }
        Util::String name;
        path.GetPathName(name);
    }
}
