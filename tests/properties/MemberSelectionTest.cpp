// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "support/Allocations.h"
#include "support/Host.h"
#include "support/SelectionModel.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <list>
#include <random>

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
    Selections() {
        for (std::size_t i = 0; i < 3; ++i) {
            abc.AddMember(pool, M(i));
        }
    }

    Support::Pool pool;
    Support::Pool otherPool{"Other"};
    MemberSelection abc{&pool};
    Member a = M(0);
    Member b = M(1);
    Member c = M(2);
};

TEST_F(Selections, ReportAForeignPoolOnce) {
    Support::MessageLog const log;
    abc.AddMember(otherPool, M(9));
    abc.AddMember(otherPool, M(9));
    abc.AddMembers(otherPool, {M(9)});
    MemberSelection unbound(nullptr);
    unbound.AddMember(pool, M(9));
    EXPECT_EQ(log.Take(), (Messages{"Error : Can't add Member to MemberSelection. The Members BasePool is \"Other\" "
                                    "while the MemberSelections BasePool is \"Pool\"",
                                    "Error : Can't add Member to MemberSelection. The Members BasePool is \"Pool\" "
                                    "while the MemberSelections BasePool is \"NULL\""}));
    EXPECT_EQ(abc.GetNumMembers(), 3);
    abc.ActivateLastMember();
    EXPECT_TRUE(abc.InsertMemberAfterActiveMember(M(9)));
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(Selections, CreateMembersInTheirPool) {
    pool.AddMemberProperty(Support::Value("v"));
    MemberSelection some(&pool);
    some.AddNewMember();
    EXPECT_EQ(pool.GetNumMembers(), 1);
    EXPECT_FALSE(some.InsertNewMemberAfterActiveMember()) << "without a cursor";
    some.ActivateFirstMember();
    EXPECT_TRUE(some.InsertNewMemberBeforeActiveMember());
    EXPECT_TRUE(some.InsertNewMemberAfterActiveMember());
    EXPECT_EQ(some.GetNumMembers(), 3);
    EXPECT_EQ(pool.GetNumMembers(), 1) << "inserted members are not listed in the pool";
    some.SetMemberCount(5);
    EXPECT_EQ(pool.GetNumMembers(), 3);
    some.SetMemberCount(-5);
    EXPECT_EQ(some.GetNumMembers(), 0);
    EXPECT_EQ(pool.GetNumMembers(), 3);
    pool.SetMemberCount(7);
    EXPECT_EQ(pool.GetNumMembers(), 7);
    MemberSelection unbound(nullptr);
    unbound.SetMemberCount(5);
    EXPECT_FALSE(unbound.InsertNewMemberBeforeActiveMember());
    EXPECT_EQ(unbound.GetNumMembers(), 0);
}

TEST_F(Selections, LoseTheirPoolWhenItIsDestroyed) {
    auto passing = std::make_unique<Support::Pool>("Passing");
    MemberSelection selection(passing.get());
    selection.AddMember(*passing, a);
    selection.AddMember(*passing, b);
    passing.reset();
    EXPECT_EQ(selection.GetBasePool(), nullptr);
    selection.ActivateFirstMember();
    EXPECT_TRUE(selection.ActivateNextMember());
    selection.AddNewMember();
    selection.AddMember(pool, c);
    EXPECT_EQ(selection.GetNumMembers(), 2);
}

TEST_F(Selections, KeepTheVectorAsItWasReadUntilTheNextRead) {
    std::vector<Member>& seen = abc.GetAllMembers();
    std::vector<Member> const before = seen;
    abc.AddMember(pool, M(3));
    abc.RemoveMember(a);
    abc.RemoveAnyMember();
    abc.RemoveAnyMember();
    EXPECT_EQ(seen, before);
    EXPECT_EQ(abc.GetNumMembers(), 1);
    EXPECT_EQ(abc.GetAllMembers(), std::vector<Member>{b});
    EXPECT_EQ(&seen, &abc.GetAllMembers());
}

TEST_F(Selections, FindMembersInAVectorThatAHostReordered) {
    MemberSelection selection(&pool);
    for (std::size_t i = 0; i < 100; ++i) {
        selection.AddMember(pool, M(i));
    }
    for (int i = 0; i < 20; ++i) { // in vain, and enough for the index of members
        selection.RemoveMember(M(999));
    }
    std::reverse(selection.GetAllMembers().begin(), selection.GetAllMembers().end());
    selection.GetAllMembers().pop_back();
    EXPECT_EQ(selection.GetNumMembers(), 99);
    for (std::size_t i = 0; i < 100; ++i) {
        selection.RemoveMember(M(i));
    }
    EXPECT_EQ(selection.GetNumMembers(), 0);
}

TEST_F(Selections, SurviveAHostThatShrinksTheirVectorWhileTheyAreEdited) {
    MemberSelection selection(&pool);
    for (std::size_t i = 0; i < 200; ++i) {
        selection.AddMember(pool, M(i));
    }
    selection.ActivateMember(150);
    for (std::size_t i = 0; i < 60; ++i) { // enough for the index of members
        selection.RemoveMember(M(100 + i));
    }
    std::vector<Member>& seen = selection.GetAllMembers();
    selection.RemoveMember(M(0));
    seen.resize(50);
    seen.shrink_to_fit();
    selection.AddMember(pool, M(300));
    EXPECT_EQ(seen.size(), 50u) << "what somebody may be walking stays";
    EXPECT_EQ(selection.GetNumMembers(), 50);
    EXPECT_EQ(selection.RemoveAnyMember(), M(300));
    EXPECT_EQ(Contents(selection).front(), M(1));
}

TEST_F(Selections, RefillWithoutAllocating) {
    MemberSelection selection(&pool);
    auto const fill = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            selection.AddMember(pool, M(i));
        }
        return selection.GetAllMembers().size();
    };
    fill(100);
    selection.AddMember(pool, a);
    selection.GetAllMembers();
    selection.Clear();
    std::size_t const before = Support::AllocationsSoFar();
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(fill(100), 100u);
        selection.Clear();
    }
    EXPECT_EQ(Support::AllocationsSoFar(), before);
}

class SelectionModelTest : public testing::TestWithParam<unsigned int> {};

/// `variety` is the number of different members: few give duplicates, many give none.
void CompareRandomOperations(unsigned int seed, std::size_t variety, int steps, unsigned int growth) {
    std::mt19937 random(seed);
    Support::Pool pool;
    MemberSelection selection(&pool);
    Support::SelectionModel model;
    auto const below = [&](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };

    for (int step = 0; step < steps; ++step) {
        Member const member = M(below(variety));
        auto const index = static_cast<int>(below(model.list.size() + 2)) - 1;
        bool const inRange = index >= 0 && index < static_cast<int>(model.list.size());
        auto const at = [&] { return std::next(model.list.begin(), index); };
        std::size_t operation = below(22 + growth);
        SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step << " operation " << operation);

        switch (operation) {
        case 0: {
            auto const found = std::find(model.list.begin(), model.list.end(), member);
            selection.RemoveMember(member);
            if (found != model.list.end()) {
                model.Erase(found);
            }
            break;
        }
        case 1:
        case 2: {
            // A member that is there, so that long runs of removals happen.
            if (model.list.empty()) {
                break;
            }
            Member const present =
                *std::next(model.list.begin(), static_cast<std::ptrdiff_t>(below(model.list.size())));
            selection.RemoveMember(present);
            model.Erase(std::find(model.list.begin(), model.list.end(), present));
            break;
        }
        case 3:
            ASSERT_EQ(selection.RemoveMemberByIndex(index), inRange ? model.Erase(at()) : Member());
            break;
        case 4:
            ASSERT_EQ(selection.RemoveActiveMember(), model.RemoveActive());
            break;
        case 5:
            ASSERT_EQ(selection.RemoveAnyMember(),
                      model.list.empty() ? Member() : model.Erase(std::prev(model.list.end())));
            break;
        case 6:
        case 7: {
            bool const behind = operation == 6;
            ASSERT_EQ(behind ? selection.InsertMemberAfterActiveMember(member)
                             : selection.InsertMemberBeforeActiveMember(member),
                      model.cursorValid);
            if (model.cursorValid) {
                model.list.insert(behind ? std::next(model.cursor) : model.cursor, member);
                model.outOfDate = true;
            }
            break;
        }
        case 8:
            ASSERT_EQ(selection.ActivateFirstMember(), model.First());
            break;
        case 9:
            ASSERT_EQ(selection.ActivateLastMember(), model.Last());
            break;
        case 10:
        case 11:
            ASSERT_EQ(selection.ActivateNextMember(), model.Next());
            break;
        case 12:
            ASSERT_EQ(selection.ActivatePreviousMember(), model.Previous());
            break;
        case 13:
            selection.ActivateMember(index);
            model.Rebuild();
            if (inRange) {
                model.Activate(at());
            }
            break;
        case 14:
            selection.ActiveMember() = member;
            model.active = member;
            break;
        case 15: {
            std::vector<Member> const more(below(40), member);
            selection.AddMembers(pool, more);
            model.list.insert(model.list.end(), more.begin(), more.end());
            model.outOfDate = model.outOfDate || !more.empty();
            break;
        }
        case 16:
            model.Rebuild();
            ASSERT_EQ(selection.GetAllMembers(), model.vector);
            break;
        case 17: {
            model.Rebuild();
            ASSERT_EQ(selection.GetMemberByIndex(index), inRange ? *at() : Member());
            ASSERT_TRUE(selection.IsTimeStampUpToDate(model.stamp));
            break;
        }
        case 18: {
            MemberSelection const copy(selection);
            selection = copy;
            break;
        }
        case 19:
            if (below(20) == 0) {
                selection.Clear();
                model = {{}, {}, {}, {}, model.poolActive, false, false, model.stamp};
            }
            break;
        default:
            selection.AddMember(pool, member);
            model.list.push_back(member);
            model.outOfDate = true;
        }
        ASSERT_EQ(selection.GetNumMembers(), static_cast<int>(model.list.size()));
        ASSERT_EQ(selection.ActiveMember(), model.active);
        ASSERT_EQ(selection.FirstMemberActive(), model.cursorValid && model.cursor == model.list.begin());
        ASSERT_EQ(selection.GetLastRecreationTimeStamp(), model.stamp);
        ASSERT_EQ(pool.ActiveMember(), model.poolActive);
        if (step % 16 == 0) {
            ASSERT_EQ(Contents(selection), std::vector<Member>(model.list.begin(), model.list.end()));
        }
    }
}

TEST_P(SelectionModelTest, AgreesWithAListAndAVector) {
    for (std::size_t const variety : {2u, 30u, 4000u}) {
        for (unsigned int growth : {0u, 4u, 12u}) {
            CompareRandomOperations(GetParam(), variety, 1500, growth);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SelectionModelTest, testing::Range(0u, 12u));

/// Long runs of one kind of removal, which bring the indexes of members and positions into play.
TEST(LargeSelections, RemoveTheRightEntriesInLongRuns) {
    std::mt19937 random(7);
    Support::Pool pool;
    for (int kind = 0; kind < 8; ++kind) {
        bool const duplicates = (kind & 1) != 0;
        bool const linked = (kind & 2) != 0;
        bool const byValue = (kind & 4) != 0;
        MemberSelection selection(&pool);
        std::vector<Member> expected;
        for (std::size_t i = 0; i < 3000; ++i) {
            expected.push_back(M(duplicates ? i % 700 : i));
        }
        std::shuffle(expected.begin(), expected.end(), random);
        selection.AddMembers(pool, expected);
        if (linked) {
            selection.ActivateMember(1000);
            selection.InsertMemberBeforeActiveMember(M(4000));
            expected.insert(expected.begin() + 1000, M(4000));
        }
        while (expected.size() > 200) {
            auto const position = static_cast<std::ptrdiff_t>(random() % expected.size());
            if (byValue) {
                Member const victim = expected[static_cast<std::size_t>(position)];
                selection.RemoveMember(victim);
                expected.erase(std::find(expected.begin(), expected.end(), victim));
            } else {
                ASSERT_EQ(selection.RemoveMemberByIndex(static_cast<int>(position)),
                          expected[static_cast<std::size_t>(position)]);
                expected.erase(expected.begin() + position);
            }
            if (random() % 5 == 0) {
                selection.AddMember(pool, M(3500 + expected.size() % 100));
                expected.push_back(M(3500 + expected.size() % 100));
            }
        }
        EXPECT_EQ(selection.GetAllMembers(), expected)
            << "duplicates " << duplicates << " linked " << linked << " by value " << byValue;
    }
}

} // namespace
