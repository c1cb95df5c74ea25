#include "JournalRecovery.h"

#include "DirectoryListing.h"
#include "FileMover.h"
#include "FileNames.h"
#include "FileStat.h"
#include "OverwriteMover.h"
#include "ShadowDesktopPaths.h"
#include "Trash.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Identity = MoveJournal::Identity;
using ItemStatus = MoveJournal::ItemStatus;

QString nameOf(const QString &path)
{
    return FileNames::display(ShadowDesktopPaths::lastPathComponent(path));
}

// The entry of folder that is the item identity names, found from the folder's
// listing alone (its inode numbers); empty when there is none.
QString findByIdentity(const QString &folder, const Identity &identity)
{
    const int fd = ::open(FileNames::encode(folder).constData(),
                          O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return {};
    struct stat info;
    DIR *listing = ::fstat(fd, &info) == 0 && quint64(info.st_dev) == identity.device
                       ? ::fdopendir(fd) // owns fd from here on
                       : nullptr;
    if (!listing) {
        ::close(fd);
        return {};
    }
    const QString prefix = folder + u'/';
    QString found;
    while (const dirent *entry = ::readdir(listing)) {
        if (quint64(entry->d_ino) != identity.inode)
            continue;
        // A mount point lists the inode beneath it: the item itself decides.
        const QString path = DirectoryListing::joinedPath(prefix, entry->d_name);
        if (Identity::of(path) == identity) {
            found = path;
            break;
        }
    }
    ::closedir(listing);
    return found;
}

// Where the item named by identity is: target itself, or another name in
// target's folder (keep-both picks numbered names); empty when neither.
QString whereIs(const QString &target, const Identity &identity)
{
    if (identity.isNull())
        return {};
    if (Identity::of(target) == identity)
        return target;
    return findByIdentity(ShadowDesktopPaths::deletingLastPathComponent(target), identity);
}

// The name a set-aside item nobody knows the name of is given back under:
// "Recovered item", with the extension its contents call for.
QString recoveredName(const QString &path)
{
    QString name = QStringLiteral("Recovered item");
    const QFileInfo info(path);
    QFile file;
    if (info.isFile() && !info.isSymLink() && FileNames::openForReading(file, path)) {
        const QString suffix = QMimeDatabase().mimeTypeForData(&file).preferredSuffix();
        if (!suffix.isEmpty())
            name += u'.' + suffix;
    }
    return name;
}

struct Outcome
{
    ItemStatus status;
    QString target;
    Identity identity;
    QString message;
};

// What became of an item whose outcome was not recorded, looked for where it
// was and where it was going. A move whose copy is in place is finished.
Outcome whatBecameOf(const MoveJournal::Item &item, JournalRecovery::Report &report)
{
    const Identity source = Identity::of(item.source);
    if (const QString copy = whereIs(item.target, item.copiedIdentity); !copy.isEmpty()) {
        // Something else at the source now is not ours to remove.
        if (source.isNull() || (!item.sourceIdentity.isNull() && source != item.sourceIdentity))
            return {ItemStatus::Moved, copy, item.copiedIdentity, {}};
        // The removal of the source was cut short.
        const FileMover::Result result = FileMover::finishInterruptedMove(item.source, copy);
        ++report.finished;
        if (result.moved())
            return {ItemStatus::Moved, copy, item.copiedIdentity, {}};
        report.problems.append(nameOf(item.source) + QStringLiteral(": ") + result.message);
        return {ItemStatus::Incomplete, copy, item.copiedIdentity, result.message};
    }
    if (!source.isNull())
        return {ItemStatus::Failed, item.target, {}, QStringLiteral("cut short before it moved")};
    if (const QString moved = whereIs(item.target, item.sourceIdentity); !moved.isEmpty())
        return {ItemStatus::Moved, moved, item.sourceIdentity, {}};
    return {
        ItemStatus::Failed, item.target, {}, QStringLiteral("not found where it was meant to go")};
}

QString counted(int count, const char *one, const char *many)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many));
}

} // namespace

QString JournalRecovery::Report::summary() const
{
    QStringList done;
    if (finished > 0)
        done.append(QStringLiteral("finished ") + counted(finished, "move", "moves"));
    if (partialsRemoved > 0)
        done.append(QStringLiteral("removed ") +
                    counted(partialsRemoved, "partial copy", "partial copies"));
    if (putBack > 0)
        done.append(QStringLiteral("put back ") +
                    counted(putBack, "item set aside", "items set aside"));
    if (trashed > 0)
        done.append(QStringLiteral("moved ") + counted(trashed, "replaced item", "replaced items") +
                    QStringLiteral(" to the Trash"));
    QString text = done.isEmpty() ? QStringLiteral("nothing was left half done")
                                  : done.join(QStringLiteral(", "));
    for (const QString &problem : problems)
        text += QStringLiteral("; ") + problem;
    return text;
}

QString JournalRecovery::Report::line() const
{
    return kTitle + QStringLiteral(": ") + summary();
}

JournalRecovery::JournalRecovery(MoveJournal &journal, Trash &trash)
    : m_journal(journal), m_trash(trash)
{
}

JournalRecovery::Report JournalRecovery::recover(const QStringList &sweepFolders,
                                                 const QDateTime &now)
{
    Report report;
    // Without the journal another process may be moving: its hidden names are
    // not ours to touch.
    if (!m_journal.isOpen())
        return report;
    for (const MoveJournal::Run &run : m_journal.interruptedRuns()) {
        ++report.runs;
        for (const MoveJournal::Item &item : run.items)
            recoverItem(run.id, item, report);
        m_journal.endRun(run.id, now, true);
    }
    for (const QString &folder : sweepFolders)
        sweep(folder, report);
    return report;
}

void JournalRecovery::recoverItem(quint64 run, const MoveJournal::Item &item, Report &report)
{
    // A partial copy's source is still whole.
    for (const QString &partial : item.partials)
        if (FileStat::exists(partial))
            removePartial(partial, report);

    const bool pending = item.status == ItemStatus::Pending;
    const Outcome outcome =
        pending ? whatBecameOf(item, report)
                : Outcome{item.status, item.target, item.targetIdentity, item.message};

    // The item that was in the way goes to the Trash only when its successor
    // is wholly in, as the replace would have done; else it stays, visibly.
    if (!item.aside.isEmpty() && FileStat::exists(item.aside)) {
        const Identity atTarget = Identity::of(item.target);
        const bool successorIn = !atTarget.isNull() && (atTarget == item.copiedIdentity ||
                                                        atTarget == item.sourceIdentity ||
                                                        !FileStat::exists(item.source));
        if (successorIn && outcome.status != ItemStatus::Incomplete)
            trashAside(item.aside, item.target, report);
        else
            putBack(item.aside, item.target, report);
    }

    if (pending)
        m_journal.noteOutcome(run, item.seq, outcome.status, outcome.target, outcome.identity,
                              outcome.message);
}

void JournalRecovery::trashAside(const QString &aside, const QString &target, Report &report)
{
    const Trash::Result trashed = m_trash.trashAs(aside, target);
    if (trashed.ok) {
        ++report.trashed;
        return;
    }
    report.problems.append(
        QStringLiteral("the item %1 replaced could not be moved to the Trash (%2)")
            .arg(nameOf(target), trashed.message));
    putBack(aside, target, report);
}

void JournalRecovery::putBack(const QString &path, const QString &wanted, Report &report)
{
    // Never deleted, and never left under our hidden name.
    QString chosen;
    const FileMover::Result result = OverwriteMover::moveToFreeName(path, wanted, chosen);
    if (result.moved())
        ++report.putBack;
    else
        report.problems.append(QStringLiteral("%1 could not be given a visible name: %2")
                                   .arg(FileNames::display(path), result.message));
}

void JournalRecovery::removePartial(const QString &path, Report &report)
{
    QString message;
    if (FileMover::removePartialCopy(path, &message))
        ++report.partialsRemoved;
    else
        report.problems.append(message);
}

void JournalRecovery::sweep(const QString &folder, Report &report)
{
    const QLatin1String partial(FileMover::kPartialPrefix);
    const QLatin1String aside(OverwriteMover::kAsidePrefix);
    for (const QString &path : DirectoryListing::entries(folder)) {
        const QString name = ShadowDesktopPaths::lastPathComponent(path);
        if (name.startsWith(partial))
            removePartial(path, report);
        else if (name.startsWith(aside))
            putBack(path, folder + u'/' + recoveredName(path), report);
    }
}
