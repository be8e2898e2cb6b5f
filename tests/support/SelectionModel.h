// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_SELECTIONMODEL_H
#define GENTRA_TESTS_SUPPORT_SELECTIONMODEL_H

#include <gentra/properties/Member.h>

#include <iterator>
#include <list>
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

} // namespace Support

#endif
