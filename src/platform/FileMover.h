#pragma once

#include <QString>

#include <functional>

// Moves items without ever replacing or losing one.
//
// Within a file system a move is one atomic rename that fails when the target
// name is taken. Across file systems the item (a folder with everything in it)
// is copied to a hidden temporary name beside the target with its times and
// permissions, flushed to disk, renamed into place without replacing, and only
// then is the source removed. Any failure removes the partial copy and leaves
// the source as it was. Symbolic links are moved as links, never followed.
class FileMover
{
public:
    enum class Status
    {
        Moved,
        TargetExists, // nothing happened: the target name is taken
        Failed,       // nothing happened, or (Moved with leftovers) see message
    };

    struct Result
    {
        Status status = Status::Failed;
        QString message; // empty when Moved
        bool moved() const { return status == Status::Moved; }
    };

    // Test hook: called after the copy is in place and before the source is
    // removed; returning false aborts the move as a failure at that point.
    using FaultHook = std::function<bool(const QString &stage)>;

    static Result move(const QString &source, const QString &target);
    static void setFaultHookForTesting(FaultHook hook);
    // Test hook: behave as on a file system without a no-replace rename (NFS,
    // 9p, some FUSE), which takes the link-or-mkdir path instead.
    static void setNoReplaceRenameUnavailableForTesting(bool unavailable);
};
