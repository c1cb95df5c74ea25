#pragma once

#include <QString>

#include <functional>

// Moves items without ever replacing or losing one.
//
// Within a file system a move is one atomic rename that fails when the target
// name is taken. Across file systems the item (a folder with everything in it)
// is copied to a hidden temporary name beside the target with its times and
// permissions, flushed to disk, renamed into place without replacing, and only
// then is the source removed: entry by entry, and only what was copied and is
// unchanged since (same inode, size, modification and change time). Whatever
// appeared or changed during the copy stays at the source, in its folders, and
// the move answers Incomplete. Any failure before the rename removes the
// partial copy and leaves the source as it was. Symbolic links are moved as
// links, never followed.
class FileMover
{
public:
    enum class Status
    {
        Moved,
        TargetExists, // nothing happened: the target name is taken
        Failed,       // nothing happened; see message
        Incomplete,   // the copy is at the target, and what changed during it
                      // stayed at the source (see message)
    };

    struct Result
    {
        Status status = Status::Failed;
        QString message; // empty when Moved
        bool moved() const { return status == Status::Moved; }
    };

    // Test hook for moves across file systems, called at the stage "entry
    // copied" after each entry of the source (path) was copied, a folder after
    // everything in it, and at "copied" when the whole copy is there, before
    // it is renamed into place. Returning false fails the move at that point.
    using FaultHook = std::function<bool(const QString &stage, const QString &path)>;

    static Result move(const QString &source, const QString &target);
    // The same within one file system only: one rename that never replaces
    // and never copies.
    static Result rename(const QString &source, const QString &target);
    static void setFaultHookForTesting(FaultHook hook);
    // Test hook: behave as on a file system without a no-replace rename (NFS,
    // 9p, some FUSE), which takes the link-or-mkdir path instead.
    static void setNoReplaceRenameUnavailableForTesting(bool unavailable);
};
