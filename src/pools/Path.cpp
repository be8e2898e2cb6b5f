// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/pools/Path.h"

#include "gentra/pools/Context.h"
#include "gentra/pools/ContextManager.h"
#include "gentra/pools/MemberPool.h"
#include "gentra/properties/MemberSelection.h"
#include "gentra/util/GlobalMessageManager.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>
#include <utility>

namespace Gentra {

namespace {

constexpr int ACTIVE_MEMBER = -1;
/// No selection has a member at that index.
constexpr int NO_MEMBER = std::numeric_limits<int>::max();

} // namespace

constinit std::uint32_t Path::globalResolveTimeStamp = 1;

Path::Path() {
    Clear();
}

// Building.

void Path::Clear() {
    context = &ContextManager::GetMainContext();
    ClearResolvedPath();
    rootPoolID = 0;
    rootingMemberSelectionIDs.clear();
    destinationPropertyID = 0;
    resolveTimeStamp = 0;
    resolved = true;
}

void Path::ClearResolvedPath() {
    rootPool = Util::WeakPtr<MemberPool>();
    // Released last: the last reference may run a host's destructor.
    auto const formerLevels = std::exchange(rootingMemberSelections, {});
    auto const formerDestination = std::exchange(destinationProperty, Property::NIL);
    indices.assign(1, 0);
}

void Path::SetRootMemberPool(MemberPool& pool) {
    rootPool = pool.GetWeakPtr();
    rootPoolID = pool.GetMemberPoolID();
}

void Path::AddRootingMemberSelectionBack(Util::RefCountPtr<MemberSelectionProperty> property) {
    if (property.Get() == nullptr) {
        property = MemberSelectionProperty::NIL;
    }
    rootingMemberSelections.push_back(property);
    rootingMemberSelectionIDs.push_back(property->GetPropertyID());
    indices.push_back(0);
}

void Path::AddRootingMemberSelectionFront(Util::RefCountPtr<MemberSelectionProperty> property) {
    if (property.Get() == nullptr) {
        property = MemberSelectionProperty::NIL;
    }
    rootingMemberSelections.insert(rootingMemberSelections.begin(), property);
    rootingMemberSelectionIDs.insert(rootingMemberSelectionIDs.begin(), property->GetPropertyID());
    indices.insert(indices.empty() ? indices.end() : indices.begin() + 1, 0);
}

void Path::SetDestinationProperty(Util::RefCountPtr<Property> property) {
    destinationProperty = property.Get() != nullptr ? property : Property::NIL;
    destinationPropertyID = destinationProperty->GetPropertyID();
}

void Path::MakeShortestPossiblePathToProperty(Util::RefCountPtr<Property> property) {
    MemberPool const* const pool =
        property.Get() != nullptr && property != Property::NIL ? property->GetOwnerPool() : nullptr;
    if (pool == nullptr) {
        Clear();
        return;
    }
    ClearResolvedPath();
    rootPoolID = pool->GetMemberPoolID();
    rootingMemberSelectionIDs.clear();
    destinationPropertyID = property->GetPropertyID();
    resolved = false;
    resolveTimeStamp = 0;
}

// Text.

void Path::SaveToStream(std::ostream& stream) const {
    stream << static_cast<int>(rootPoolID) << ' ';
    stream << static_cast<unsigned int>(rootingMemberSelectionIDs.size()) << ' ';
    for (Util::ShortID const& id : rootingMemberSelectionIDs) {
        stream << static_cast<int>(id) << ' ';
    }
    stream << static_cast<int>(destinationPropertyID) << std::ends;
}

void Path::LoadFromStream(std::istream& stream) {
    Clear();
    resolved = false;
    if (stream.peek() == '\0') {
        stream.ignore();
    }
    // Each item into a variable of its own: reading stores something also where it fails.
    int id = 0;
    unsigned int count = 0;
    if (!(stream >> id)) {
        return;
    }
    rootPoolID = id;
    if (!(stream >> count)) {
        return;
    }
    // No memory in advance: the count may be anything.
    for (; count > 0 && stream >> id; --count) {
        rootingMemberSelectionIDs.emplace_back(id);
    }
    if (stream >> id) {
        destinationPropertyID = id;
    }
}

// Resolving.

void Path::ForceGlobalPathResolve() noexcept {
    ++globalResolveTimeStamp;
}

bool Path::ResolvePath() {
    context->ForceConstructAllMemberPools();
    ClearResolvedPath();
    resolved = LookUp();
    return resolved;
}

bool Path::LookUp() {
    if (rootPoolID == 0) {
        return true;
    }
    MemberPool* const pool = context->GetMemberPoolFromID(rootPoolID);
    if (pool == nullptr) {
        return false;
    }
    rootPool = pool->GetWeakPtr();
    for (Util::ShortID const& id : rootingMemberSelectionIDs) {
        if (!LookUpLevel(id)) {
            return false;
        }
    }
    if (destinationPropertyID == 0) {
        return true;
    }
    destinationProperty = context->GetPropertyByID(destinationPropertyID);
    return destinationProperty != Property::NIL;
}

bool Path::LookUpLevel(Util::ShortID id) {
    Util::RefCountPtr<Property> const found = context->GetPropertyByID(id);
    if (found == Property::NIL || found->GetPropertyType() != MEMBERSELECTION) {
        return false;
    }
    auto const level = found.DynamicCast<MemberSelectionProperty>();
    if (level.Get() == nullptr) {
        return false;
    }
    rootingMemberSelections.push_back(level);
    indices.push_back(0);
    return level->GetBasePool() != nullptr;
}

bool Path::ResolvePathIfNeccessary() {
    if (resolveTimeStamp < globalResolveTimeStamp) {
        ResolvePath();
        resolveTimeStamp = globalResolveTimeStamp;
        if (!resolved) {
            GlobalMessageManager::OutputMessage("Path could not be resolved");
        }
    }
    return resolved;
}

// Walking.

int Path::IndexAt(std::size_t level, bool usingIndices) const noexcept {
    if (!usingIndices) {
        return ACTIVE_MEMBER;
    }
    return level < indices.size() ? indices[level] : NO_MEMBER;
}

int Path::LastIndex() const noexcept {
    return indices.empty() ? NO_MEMBER : indices.back();
}

/// Whether the level's datum is one of the members of that selection: a path from a file may name any property.
bool Path::LeadsOnFrom(MemberSelectionProperty const& level, MemberSelection const& selection) {
    if (level.GetPropertyOwner() != MEMBER) {
        return &level != MemberSelectionProperty::NIL.Get(); // everybody's
    }
    MemberPool const* const pool = selection.GetBasePool();
    return pool != nullptr && level.GetDataOffset() >= 0 && pool->OffsetOf(level) == level.GetDataOffset();
}

/// The selection that the first levels lead to, or null.
MemberSelection* Path::Walk(std::size_t levelCount, bool usingIndices) {
    MemberSelection* selection = rootPool.Get();
    for (std::size_t level = 0; level < levelCount && selection != nullptr; ++level) {
        MemberSelectionProperty& property = *rootingMemberSelections[level];
        selection = LeadsOnFrom(property, *selection)
                        ? property.GetMemberSelection(*selection, IndexAt(level, usingIndices))
                        : nullptr;
    }
    return selection;
}

MemberSelection* Path::DestinationMemberSelection(bool usingIndices) {
    return ResolvePathIfNeccessary() ? Walk(rootingMemberSelections.size(), usingIndices) : nullptr;
}

MemberSelection* Path::GetDestinationMemberSelectionNoIndices() {
    return DestinationMemberSelection(false);
}

MemberSelection* Path::GetDestinationMemberSelectionUsingIndices() {
    return DestinationMemberSelection(true);
}

Member Path::GetDestinationMemberNoIndices() {
    MemberSelection* const selection = DestinationMemberSelection(false);
    return selection != nullptr ? selection->ActiveMember() : Member();
}

Member Path::GetDestinationMemberUsingIndices() {
    MemberSelection* const selection = DestinationMemberSelection(true);
    return selection != nullptr ? selection->GetMemberByIndex(LastIndex()) : Member();
}

void const* Path::DestinationPropertyData(bool usingIndices) {
    MemberSelection* const selection = DestinationMemberSelection(usingIndices);
    if (selection == nullptr || destinationProperty == Property::NIL) {
        return nullptr;
    }
    // The members of a selection whose pool has gone went with it.
    if (destinationProperty->GetPropertyOwner() == MEMBER && selection->GetBasePool() == nullptr) {
        return nullptr;
    }
    return destinationProperty->GetDataFromMemberSelection(*selection, usingIndices ? LastIndex() : ACTIVE_MEMBER);
}

void const* Path::GetDestinationPropertyDataNoIndices() {
    return DestinationPropertyData(false);
}

void const* Path::GetDestinationPropertyDataUsingIndices() {
    return DestinationPropertyData(true);
}

Util::RefCountPtr<Property> Path::GetDestinationPropertyIncludingMemberSelections() {
    if (!ResolvePathIfNeccessary()) {
        return Property::NIL;
    }
    if (destinationProperty == Property::NIL && !rootingMemberSelections.empty()) {
        return rootingMemberSelections.back();
    }
    return destinationProperty;
}

void Path::SetDestinationMemberSelection(MemberSelection* selection, bool usingIndices) {
    if (!ResolvePathIfNeccessary() || rootPool.Get() == nullptr) {
        return;
    }
    if (rootingMemberSelections.empty()) {
        GlobalMessageManager::OutputMessageOnce(
            "Error : Set MemberSelection not possible, because the Path doesn't point to a MemberSelection");
        return;
    }
    std::size_t const last = rootingMemberSelections.size() - 1;
    MemberSelectionProperty& property = *rootingMemberSelections[last];
    MemberSelection* const holders = Walk(last, usingIndices);
    if (holders != nullptr && LeadsOnFrom(property, *holders)) {
        property.SetMemberSelection(selection, *holders, IndexAt(last, usingIndices));
    }
}

void Path::SetDestinationMemberSelectionNoIndices(MemberSelection* selection) {
    SetDestinationMemberSelection(selection, false);
}

void Path::SetDestinationMemberSelectionUsingIndices(MemberSelection* selection) {
    SetDestinationMemberSelection(selection, true);
}

std::vector<int>& Path::GetIndicesForManipulation() {
    ResolvePathIfNeccessary();
    return indices;
}

void Path::GetPathName(Util::String& name) {
    if (!ResolvePathIfNeccessary()) {
        name = "Path not resolved";
        return;
    }
    MemberPool const* const pool = rootPool;
    if (pool == nullptr) {
        name.clear();
        return;
    }
    name = pool->GetName();
    for (Util::RefCountPtr<MemberSelectionProperty> const& level : rootingMemberSelections) {
        name += ":" + level->GetName();
    }
    if (destinationProperty != Property::NIL) {
        name += ":" + destinationProperty->GetName();
    }
}

Util::ShortID Path::GetDestinationMemberSelectionID() const noexcept {
    return rootingMemberSelectionIDs.empty() ? rootPoolID : rootingMemberSelectionIDs.back();
}

} // namespace Gentra
