#pragma once

#include "FileMover.h"

#include <QString>

#include <functional>

class Trash;

// Moves one Desktop item into the Shadow Desktop by the overwrite mode, never
// losing a file: 1 fails on a taken name; 2 moves the item in the way aside,
// moves the new one in and then sends the old one to the Trash (a failed move
// puts it back); 3 takes a free numbered name, and another if that one is
// taken before the move lands. Other modes move nothing.
class OverwriteMover
{
public:
    enum Mode : quint32
    {
        FailOnClash = 1,
        Replace = 2,
        KeepBoth = 3
    };

    struct Outcome
    {
        bool moved = false;
        QString target; // where the item went, or was meant to go
        QString reason; // why not, when !moved; what else happened, when moved
        // Not moved, yet copied: what changed during the copy stayed at the source.
        bool incomplete = false;
    };

    explicit OverwriteMover(Trash &trash) : m_trash(trash) {}

    Outcome move(const QString &source, const QString &target, quint32 mode) const;
    // Where move() would put the item now, or an empty string for unknown modes.
    static QString plannedTarget(const QString &target, quint32 mode);

    static constexpr int kMaxNameAttempts = 100;
    // Moves source to the first free numbered name of target (target itself
    // when free), and to the next one when another program takes the name
    // first; chosen is where. beforeMove runs with each name chosen.
    static FileMover::Result
    moveToFreeName(const QString &source, const QString &target, QString &chosen,
                   const std::function<void(const QString &)> &beforeMove = {});
    // The hidden name an item in the way is moved aside under while it is
    // replaced. Unlike a partial copy, such an item is the only one of its kind.
    static constexpr const char *kAsidePrefix = ".brevano-replaced-";
    // Whether name is one an item bears only while Brevano moves it (a
    // partial copy, an item set aside): never an item to restore or trash.
    static bool isWorkingName(const QString &name)
    {
        return name.startsWith(QLatin1String(FileMover::kPartialPrefix)) ||
               name.startsWith(QLatin1String(kAsidePrefix));
    }

    // Test hook: runs after a free name was chosen, or the item in the way was
    // moved aside, and before the move, where another program could take that name.
    void setBeforeMoveHookForTesting(std::function<void(const QString &chosen)> hook)
    {
        m_beforeMove = std::move(hook);
    }

private:
    Outcome replace(const QString &source, const QString &target) const;

    Trash &m_trash;
    std::function<void(const QString &)> m_beforeMove;
};
