// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_SELECTIONMODEL_H
#define GENTRA_TESTS_SUPPORT_SELECTIONMODEL_H

#include <gentra/gentra.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

namespace Support {

/// The selection as a linked list and a lazily rebuilt vector, for comparison.
struct SelectionModel {
    using Member = Gentra::Member;

    std::list<Member> list;
    std::vector<Member> vector;
    std::list<Member>::iterator cursor;
    Member active;
    Member poolActive; ///< Of the base pool.
    bool cursorValid = false;
    bool outOfDate = false;
    unsigned int stamp = 0;

    void Rebuild() {
        if (outOfDate) {
            vector.assign(list.begin(), list.end());
            ++stamp;
            outOfDate = false;
        }
    }
    bool Activate(std::list<Member>::iterator position) {
        cursorValid = position != list.end();
        cursor = position;
        active = cursorValid ? *position : Member();
        return cursorValid;
    }
    bool First() { return Activate(list.begin()); }
    bool Last() { return Activate(list.empty() ? list.end() : std::prev(list.end())); }
    bool Next() {
        if (!cursorValid || std::next(cursor) == list.end()) {
            return First();
        }
        Activate(std::next(cursor));
        poolActive = active;
        return true;
    }
    bool Previous() { return cursorValid && cursor != list.begin() ? Activate(std::prev(cursor)) : Last(); }
    Member Erase(std::list<Member>::iterator position) {
        Member const removed = *position;
        bool const atCursor = cursorValid && cursor == position;
        list.erase(position);
        outOfDate = true;
        if (removed == active) {
            First();
        } else if (atCursor) { // the host had overwritten the active member
            cursor = list.begin();
            cursorValid = !list.empty();
        }
        return removed;
    }
    void Remove(Member member) {
        if (auto const found = std::find(list.begin(), list.end(), member); found != list.end()) {
            Erase(found);
        }
    }
    void RemoveAll(std::vector<Member> const& members) {
        auto const goes = [&](Member member) {
            return std::find(members.begin(), members.end(), member) != members.end();
        };
        bool const cursorGoes = cursorValid && goes(*cursor);
        bool const activeGoes = goes(active) && std::find(list.begin(), list.end(), active) != list.end();
        outOfDate = list.remove_if(goes) > 0 || outOfDate;
        if (activeGoes) {
            First();
        } else if (cursorGoes) {
            cursor = list.begin();
            cursorValid = !list.empty();
        }
    }
    Member RemoveActive() {
        if (!cursorValid) {
            return Member();
        }
        auto const position = cursor;
        Member const removed = *position;
        if (list.size() < 2) {
            Activate(list.end());
        } else {
            Next();
        }
        list.erase(position);
        outOfDate = true;
        return removed;
    }
};

/// What can be done to a selection.
enum Edit : unsigned int {
    FIRST,
    LAST,
    NEXT,
    PREVIOUS,
    ACTIVATE,
    INSERT_AFTER,
    INSERT_BEFORE,
    ADD,
    ADD_MANY,
    REMOVE,
    REMOVE_BY_INDEX,
    REMOVE_ACTIVE,
    REMOVE_ANY,
    REMOVE_MANY,
    OVERWRITE_ACTIVE,
    EDITS
};

/// Does one thing to a selection and to its model, with a member, an index that may be out of range, and that many
/// copies. Throws when they answer differently.
inline void EditBoth(Edit edit, Gentra::MemberSelection& selection, SelectionModel& model, Gentra::MemberPool& pool,
                     Gentra::Member member, int index, std::size_t copies) {
    auto const expect = [edit](auto const& answer, auto const& expected) {
        if (answer != expected) {
            throw std::logic_error("the answer to edit " + std::to_string(edit));
        }
    };
    bool const inRange = index >= 0 && index < static_cast<int>(model.list.size());
    auto const at = std::next(model.list.begin(), inRange ? index : 0);
    switch (edit) {
    case FIRST:
        return expect(selection.ActivateFirstMember(), model.First());
    case LAST:
        return expect(selection.ActivateLastMember(), model.Last());
    case NEXT:
        return expect(selection.ActivateNextMember(), model.Next());
    case PREVIOUS:
        return expect(selection.ActivatePreviousMember(), model.Previous());
    case ACTIVATE:
        selection.ActivateMember(index);
        model.Rebuild();
        if (inRange) {
            model.Activate(at);
        }
        return;
    case INSERT_AFTER:
    case INSERT_BEFORE: {
        auto const insert = edit == INSERT_AFTER ? &Gentra::MemberSelection::InsertMemberAfterActiveMember
                                                 : &Gentra::MemberSelection::InsertMemberBeforeActiveMember;
        expect((selection.*insert)(member), model.cursorValid);
        if (model.cursorValid) {
            model.list.insert(edit == INSERT_AFTER ? std::next(model.cursor) : model.cursor, member);
            model.outOfDate = true;
        }
        return;
    }
    case REMOVE:
        selection.RemoveMember(member);
        return model.Remove(member);
    case REMOVE_MANY: { // every other one of some that follow each other, and one that may not be there
        std::vector<Gentra::Member> members(1, member);
        for (auto each = at; inRange && members.size() <= 2 * copies && each != model.list.end(); ++each) {
            members.push_back(*each);
            each = std::next(each) != model.list.end() ? std::next(each) : each;
        }
        selection.RemoveMembers(members);
        return model.RemoveAll(members);
    }
    case REMOVE_BY_INDEX:
        return expect(selection.RemoveMemberByIndex(index), inRange ? model.Erase(at) : Gentra::Member());
    case REMOVE_ACTIVE:
        return expect(selection.RemoveActiveMember(), model.RemoveActive());
    case REMOVE_ANY:
        return expect(selection.RemoveAnyMember(),
                      model.list.empty() ? Gentra::Member() : model.Erase(std::prev(model.list.end())));
    case OVERWRITE_ACTIVE:
        selection.ActiveMember() = member;
        model.active = member;
        return;
    case ADD_MANY:
        selection.AddMembers(pool, std::vector(copies, member));
        model.list.insert(model.list.end(), copies, member);
        model.outOfDate = model.outOfDate || copies > 0;
        return;
    default:
        selection.AddMember(pool, member);
        model.list.push_back(member);
        model.outOfDate = true;
    }
}

} // namespace Support

#endif
