// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_POOLS_PATH_H
#define GENTRA_POOLS_PATH_H

#include "gentra/gentra_export.h"
#include "gentra/properties/Member.h"
#include "gentra/properties/MemberSelectionProperty.h"
#include "gentra/properties/Property.h"
#include "gentra/util/LoadTimeStatics.h"
#include "gentra/util/RefCountPtr.h"
#include "gentra/util/ShortID.h"
#include "gentra/util/WeakPtr.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace Gentra {

class Context;
class MemberPool;
class MemberSelection;

/// Addresses data in other pools: from a root pool through member-selection properties (the levels), each of
/// which leads from a member of one selection to the selection that this member holds, to a property.
///
/// A path is defined by IDs only, so it can be saved as text and loaded in another run. The IDs are looked up
/// in the main context ("resolved") on the first use and again after each ForceGlobalPathResolve(). When that
/// fails "Path could not be resolved" is logged, once per resolution, and the path leads nowhere: its
/// operations give null, Member::NIL, Property::NIL or do nothing.
///
/// What the building operations set is looked up when the path is used for the first time after its construction or
/// Clear(). Null pointers to properties count as NIL, which no context finds.
///
/// At each level a path follows one member: the operations NoIndices take the active member of each
/// selection, the operations UsingIndices the member at a stored index. Resolving may build pools that wait
/// for construction, with all the events and behaviours of that; none of them may destroy the path.
class GENTRA_EXPORT Path {
public:
    /// An empty path, which leads nowhere.
    Path();

    // Copies share the properties that are resolved.

    // Building.

    /// Makes the path an empty one.
    void Clear();
    /// Forgets what was looked up, and the indices.
    void ClearResolvedPath();
    /// Begins at that pool, which need not outlive the path.
    void SetRootMemberPool(MemberPool& pool);
    /// Begins at the pool of that ID, which is looked up when the path is resolved; 0 for an empty path.
    void SetRootMemberPoolID(Util::ShortID id) noexcept { rootPoolID = id; }
    /// Appends a level, with the index 0.
    void AddRootingMemberSelectionBack(Util::RefCountPtr<MemberSelectionProperty> property);
    /// Puts a level before the others. The index of the root pool stays the first one.
    void AddRootingMemberSelectionFront(Util::RefCountPtr<MemberSelectionProperty> property);
    /// Ends at that property.
    void SetDestinationProperty(Util::RefCountPtr<Property> property);
    /// A path without levels from the property's pool to the property. Clears the path for Property::NIL and
    /// for a property in no pool.
    void MakeShortestPossiblePathToProperty(Util::RefCountPtr<Property> property);

    // Text.

    /// Writes the IDs and the number of levels as decimal numbers with one space between them (root pool,
    /// number, levels, destination; 0 for none), and a NUL. The stream's formatting flags apply.
    void SaveToStream(std::ostream& stream) const;
    /// Clears the path and reads another one from such a text. Where the text ends early or holds no number that
    /// fits (IDs are signed, the count unsigned, both of 32 bits), reading stops with the stream failed, and the
    /// path keeps what was read. The NUL is left in the stream, but skipped in front of the next path.
    void LoadFromStream(std::istream& stream);

    // Resolving.

    /// Makes every path look its IDs up again on its next use. Called when all pools are rebuilt.
    static void ForceGlobalPathResolve() noexcept;
    /// Looks the IDs up now; all indices become 0. False when one is not found, when a level is no
    /// member-selection property or when it has no base pool. Reports nothing.
    bool ResolvePath();
    /// Resolves, and reports a failure, if the path has to; returns whether it is resolved.
    bool ResolvePathIfNeccessary();

    // Reading and writing; each resolves first if it has to.

    /// @{
    /// The selection that the levels lead to; without levels the root pool. Null when there is none, so also when a
    /// level holds none or its member data does not lie in the records of the selection that was reached.
    [[nodiscard]] MemberSelection* GetDestinationMemberSelectionNoIndices();
    [[nodiscard]] MemberSelection* GetDestinationMemberSelectionUsingIndices();
    /// @}
    /// @{
    /// The active member of that selection, or its member at the last index; Member::NIL when there is none.
    [[nodiscard]] Member GetDestinationMemberNoIndices();
    [[nodiscard]] Member GetDestinationMemberUsingIndices();
    /// @}
    /// @{
    /// The address of the destination property's datum there, which may be unaligned; null when there is none.
    [[nodiscard]] void const* GetDestinationPropertyDataNoIndices();
    [[nodiscard]] void const* GetDestinationPropertyDataUsingIndices();
    /// @}
    /// The destination property, without one the property of the last level, else Property::NIL.
    [[nodiscard]] Util::RefCountPtr<Property> GetDestinationPropertyIncludingMemberSelections();
    /// @{
    /// Stores a selection, which the caller keeps alive, where the last level reads its own. Without levels
    /// logs once "Error : Set MemberSelection not possible, because the Path doesn't point to a
    /// MemberSelection".
    void SetDestinationMemberSelectionNoIndices(MemberSelection* selection);
    void SetDestinationMemberSelectionUsingIndices(MemberSelection* selection);
    /// @}
    /// The indices, the root pool's first, then one per level, counted from 0. A negative one stands for the
    /// active member, but as the last one, where GetDestinationMemberUsingIndices() then has no member. They
    /// last until the path is resolved again. Where a caller has taken entries out there is no member.
    [[nodiscard]] std::vector<int>& GetIndicesForManipulation();
    /// Replaces `name` by the names of root pool, levels and destination with ":" between them. Empty for an empty
    /// path, "Path not resolved" for one that leads nowhere.
    void GetPathName(Util::String& name);

    /// The ID of the last level, without levels that of the root pool. Resolves nothing.
    [[nodiscard]] Util::ShortID GetDestinationMemberSelectionID() const noexcept;

private:
    [[nodiscard]] bool LookUp();
    [[nodiscard]] bool LookUpLevel(Util::ShortID id);
    [[nodiscard]] int IndexAt(std::size_t level, bool usingIndices) const noexcept;
    [[nodiscard]] int LastIndex() const noexcept;
    [[nodiscard]] static bool LeadsOnFrom(MemberSelectionProperty const& level, MemberSelection const& selection);
    [[nodiscard]] MemberSelection* Walk(std::size_t levelCount, bool usingIndices);
    [[nodiscard]] MemberSelection* DestinationMemberSelection(bool usingIndices);
    [[nodiscard]] void const* DestinationPropertyData(bool usingIndices);
    void SetDestinationMemberSelection(MemberSelection* selection, bool usingIndices);

    static std::uint32_t globalResolveTimeStamp;

    // What defines the path; 0 for none.
    Util::ShortID rootPoolID{0};
    std::vector<Util::ShortID> rootingMemberSelectionIDs;
    Util::ShortID destinationPropertyID{0};

    // What was looked up.
    Util::WeakPtr<MemberPool> rootPool;
    std::vector<Util::RefCountPtr<MemberSelectionProperty>> rootingMemberSelections;
    Util::RefCountPtr<Property> destinationProperty = Property::NIL;
    std::vector<int> indices;

    bool resolved = true;               ///< The result of the last resolution.
    Context* context;                   ///< The main context. Not owned.
    std::uint32_t resolveTimeStamp = 0; ///< The global stamp as of the last resolution.
};

} // namespace Gentra

#endif
