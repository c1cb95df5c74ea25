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
    // Last, at "placed" once the copy is in place, before the source goes
    // (its answer is not asked for there: nothing can be taken back).
    using FaultHook = std::function<bool(const QString &stage, const QString &path)>;

    // Told what a move across file systems is about to do, on the thread that
    // moves, so that a journal can record it first: each call returns before
    // the step it announces starts. Installed per thread by ObserverScope.
    class Observer
    {
    public:
        virtual ~Observer() = default;
        // Before a partial copy is made under this (hidden) name.
        virtual void willCopy(const QString &partialPath) = 0;
        // The whole copy is at partialPath with this device and inode, and is
        // about to be renamed into place; after the rename the source goes.
        virtual void willPlace(const QString &partialPath, quint64 device, quint64 inode) = 0;
        // Replacing: the item in the way is about to be renamed to asidePath.
        virtual void willSetAside(const QString &asidePath) = 0;
    };
    class ObserverScope
    {
    public:
        explicit ObserverScope(Observer *observer);
        ~ObserverScope();
        ObserverScope(const ObserverScope &) = delete;
        ObserverScope &operator=(const ObserverScope &) = delete;

    private:
        Observer *m_previous;
    };
    // This thread's observer, or null.
    static Observer *observer();

    // The prefix of the hidden names partial copies are made under. Such a
    // name only ever holds a copy whose source is still whole.
    static constexpr const char *kPartialPrefix = ".brevano-partial-";

    static Result move(const QString &source, const QString &target);
    // The same within one file system only: one rename that never replaces
    // and never copies.
    static Result rename(const QString &source, const QString &target);
    // Removes a partial copy left by a move that was cut short: only an item
    // whose name begins with kPartialPrefix (its source is still whole), and
    // only what we could have made (files, links, folders). False, with
    // message, when anything stayed.
    static bool removePartialCopy(const QString &path, QString *message = nullptr);
    // Finishes a move across file systems that was cut short after its copy
    // was renamed into place at copy: removes from source, entry by entry,
    // what has an identical counterpart in copy (same kind, size and
    // modification time, and for a file the same bytes; a link the same
    // text); a folder goes when it is empty then. Whatever differs or has no
    // counterpart stays, and the answer is Incomplete with what stayed.
    // Moved when the source is gone (or was gone already).
    static Result finishInterruptedMove(const QString &source, const QString &copy);
    static void setFaultHookForTesting(FaultHook hook);
    // Test hook: behave as on a file system without a no-replace rename (NFS,
    // 9p, some FUSE), which takes the link-or-mkdir path instead.
    static void setNoReplaceRenameUnavailableForTesting(bool unavailable);
};
