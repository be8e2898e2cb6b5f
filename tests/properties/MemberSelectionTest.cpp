// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Allocations.h"
#include "support/Host.h"
#include "support/SelectionModel.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <utility>

namespace {

using Gentra::Member;
using Gentra::MemberSelection;
using Support::Messages;

/// Members to list; a selection never looks into a record.
std::array<unsigned char, 4096> records;
Member M(std::size_t number) {
    return Member(&records[number]);
}

std::vector<Member> Contents(MemberSelection selection) {
    return selection.GetAllMembers();
}

class Selections : public testing::Test {
protected:
    void Add(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            selection.AddMember(pool, M(i));
        }
    }

    Support::Pool pool;
    MemberSelection selection{&pool};
};

TEST_F(Selections, ReportAForeignPoolOnce) {
    Support::MessageLog const log;
    Support::Pool other("Other");
    selection.AddMember(other, M(9));
    selection.AddMember(other, M(9));
    selection.AddMembers(other, {M(9)});
    MemberSelection unbound(nullptr);
    unbound.AddMember(pool, M(9));
    EXPECT_EQ(log.Take(), (Messages{"Error : Can't add Member to MemberSelection. The Members BasePool is \"Other\" "
                                    "while the MemberSelections BasePool is \"Pool\"",
                                    "Error : Can't add Member to MemberSelection. The Members BasePool is \"Pool\" "
                                    "while the MemberSelections BasePool is \"NULL\""}));
    EXPECT_EQ(selection.GetNumMembers(), 0);
    selection.AddMember(pool, M(0));
    selection.ActivateLastMember();
    EXPECT_TRUE(selection.InsertMemberAfterActiveMember(M(9)));
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(Selections, CreateMembersInTheirPool) {
    pool.AddMemberProperty(Support::Value("v"));
    selection.AddNewMember();
    EXPECT_FALSE(selection.InsertNewMemberAfterActiveMember()) << "without a cursor";
    selection.ActivateFirstMember();
    EXPECT_TRUE(selection.InsertNewMemberBeforeActiveMember());
    EXPECT_EQ(selection.GetMemberByIndex(1), selection.ActiveMember());
    EXPECT_TRUE(selection.InsertNewMemberAfterActiveMember());
    EXPECT_EQ(selection.GetMemberByIndex(1), selection.ActiveMember());
    EXPECT_EQ(pool.GetNumMembers(), 1) << "inserted members are not listed in the pool";
    selection.SetMemberCount(5);
    EXPECT_EQ(pool.GetNumMembers(), 3);
    selection.SetMemberCount(-5);
    EXPECT_EQ(selection.GetNumMembers(), 0);
    pool.SetMemberCount(7);
    EXPECT_EQ(pool.GetNumMembers(), 7) << "listed once";
}

TEST_F(Selections, KeepTheirMembersWithoutAPool) {
    {
        Support::Pool passing;
        selection = MemberSelection(&passing);
        selection.AddMembers(passing, {M(0), M(1)});
    }
    EXPECT_EQ(selection.GetBasePool(), nullptr);
    selection.ActivateFirstMember();
    EXPECT_TRUE(selection.ActivateNextMember());
    selection.SetMemberCount(5);
    selection.AddMember(pool, M(2));
    EXPECT_EQ(selection.GetAllMembers(), (std::vector{M(0), M(1)}));
}

TEST_F(Selections, AreNotWhatAHostDoesToTheirVector) {
    Add(200);
    std::vector<Member>& seen = selection.GetAllMembers();
    std::reverse(seen.begin(), seen.end());
    seen.resize(150);
    EXPECT_EQ(selection.GetMemberByIndex(0), M(199)) << "read from the vector, as long as it lasts";
    EXPECT_EQ(selection.GetMemberByIndex(150), Member::NIL);
    EXPECT_EQ(selection.GetNumMembers(), 200);
    selection.ActivateMember(199);
    EXPECT_EQ(selection.ActiveMember(), M(199));
    EXPECT_EQ(selection.RemoveMemberByIndex(0), M(0));
    for (std::size_t i = 1; i < 50; ++i) {
        selection.RemoveMember(M(i));
    }
    EXPECT_EQ(selection.RemoveAnyMember(), M(199));
    EXPECT_EQ(seen.size(), 150u) << "what somebody may be walking stays";
    EXPECT_EQ(selection.GetAllMembers().front(), M(50));
    EXPECT_EQ(seen.size(), 149u);
}

TEST_F(Selections, RefillWithoutAllocating) {
    Add(101);
    selection.GetAllMembers();
    selection.Clear();
    std::size_t const before = Support::AllocationsSoFar();
    Add(100);
    EXPECT_EQ(selection.GetAllMembers().size(), 100u);
    EXPECT_EQ(Support::AllocationsSoFar(), before);
}

class SelectionModelTest : public testing::TestWithParam<unsigned int> {};

/// `variety` is the number of different members: few give duplicates, many give none. Between steps of all kinds come
/// long runs of one, which bring the indexes of members and positions into play.
void CompareRandomOperations(unsigned int seed, std::size_t variety, unsigned int growth) {
    constexpr int RUN = 600;
    using namespace Support;
    std::mt19937 random(seed);
    Pool pool;
    MemberSelection selection(&pool);
    std::vector<Member> const& seen = selection.GetAllMembers();
    SelectionModel model;
    auto const below = [&](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };

    for (int step = 0; step < 8 * RUN; ++step) {
        auto const index = static_cast<int>(below(model.list.size() + 2)) - 1;
        bool const inRange = index >= 0 && index < static_cast<int>(model.list.size());
        Member member = M(below(variety));
        std::size_t operation = below(EDITS + 4 + growth);
        if (step / RUN % 2 != 0) {
            Edit const runs[] = {ADD, REMOVE, ADD, REMOVE_BY_INDEX};
            int const ofRun = step % RUN - 200;
            operation = below(5) == 0 ? INSERT_AFTER : ofRun > 0 && ofRun < 150 ? ADD : runs[step / RUN / 2];
            operation = ofRun == 0 ? EDITS + 3 : operation;
        } else if (operation == EDITS + 3 && below(20) > 0) {
            operation = NEXT;
        }
        if (operation == REMOVE && inRange && below(3) > 0) { // one that is there, so that long runs of removals happen
            member = *std::next(model.list.begin(), index);
        }
        SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step << " operation " << operation);
        switch (operation) {
        case EDITS:
            model.Rebuild();
            ASSERT_EQ(&selection.GetAllMembers(), &seen);
            ASSERT_EQ(seen, model.vector);
            break;
        case EDITS + 1:
            model.Rebuild();
            ASSERT_EQ(selection.GetMemberByIndex(index), inRange ? *std::next(model.list.begin(), index) : Member());
            ASSERT_TRUE(selection.IsTimeStampUpToDate(model.stamp));
            if (selection.InsertMemberAfterActiveMember(selection.ActiveMember())) {
                ASSERT_FALSE(selection.IsTimeStampUpToDate(model.stamp)) << "nobody has read the change yet";
                model.list.insert(std::next(model.cursor), model.active);
                ++model.stamp;
                model.vector.assign(model.list.begin(), model.list.end());
            }
            break;
        case EDITS + 2:
            selection = MemberSelection(std::as_const(selection));
            break;
        case EDITS + 3:
            selection.Clear();
            model = {{}, {}, {}, {}, model.poolActive, false, false, model.stamp};
            break;
        default:
            ASSERT_NO_THROW(EditBoth(static_cast<Edit>(operation), selection, model, pool, member, index, below(40)));
        }
        ASSERT_EQ(selection.GetNumMembers(), static_cast<int>(model.list.size()));
        ASSERT_EQ(selection.ActiveMember(), model.active);
        ASSERT_EQ(selection.FirstMemberActive(), model.cursorValid && model.cursor == model.list.begin());
        ASSERT_EQ(selection.GetLastRecreationTimeStamp(), model.stamp);
        ASSERT_EQ(pool.ActiveMember(), model.poolActive);
        if (step % 16 == 0) {
            ASSERT_EQ(seen, model.vector) << "as it was read last";
            ASSERT_EQ(Contents(selection), std::vector<Member>(model.list.begin(), model.list.end()));
        }
    }
}

TEST_P(SelectionModelTest, AgreesWithAListAndAVector) {
    for (std::size_t const variety : {2u, 30u, 4000u}) {
        for (unsigned int growth : {2u, 14u}) {
            CompareRandomOperations(GetParam(), variety, growth);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SelectionModelTest, testing::Range(0u, 12u));

} // namespace
