#pragma once

#include <QtGlobal>

#include <utility>

// Moves the element at from so that it ends up at to, where to counts in the
// list without the element (no correction for its removal): moving the first of
// [A, B, C, D, E] to 3 gives [B, C, D, A, E]. A to at or past the end appends.
// An invalid from, or a negative to, changes nothing.
//
// Works on any list with at, removeAt, insert, append and size: a QList, or a
// PropertyArray (a handle, so a temporary one moves the shared list).
template <typename Array> void moveObjectFromIndex(Array &&array, qsizetype from, qsizetype to)
{
    if (from == to || from < 0 || from >= array.size() || to < 0)
        return;
    auto element = array.at(from);
    array.removeAt(from);
    if (to >= array.size())
        array.append(std::move(element));
    else
        array.insert(to, std::move(element));
}
