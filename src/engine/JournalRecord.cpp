#include "JournalRecord.h"

#include "JournalLine.h"

#include <array>

// The journal is text, one record a line (JournalLine says how lines, texts,
// numbers, identities and times are written):
//
//   brevano-journal  2        <next run>                    (the first line)
//   begin     <run>  <kind>   <detail>  <time>
//   folder    <run>  <number> <folder>
//   intent    <run>  <seq>    <source>  <target>  <source identity>
//   partial   <run>  <seq>    <path>
//   copied    <run>  <seq>    <path>    <identity of the copy>
//   aside     <run>  <seq>    <path>
//   outcome   <run>  <seq>    <status>  <target>  <target identity>  <message>
//   deferred  <run>  <source>
//   end       <run>  <time>   <recovered: 0 or 1>
//
// <kind> is tidy, undo, restore, drop or trash; <status> is pending, moved,
// failed, deferred, incomplete or skipped; an identity of none is "0:0".
//
// A run names each folder its paths lie in once, by a folder line before the
// first path in it; such a path is then "<number>/<name>": its name in the
// folder of that number. A number named again stands for the new folder from
// there on (a run finished by a later start names its folders anew). A path
// that is no name in a folder (one ending in "/", say) is written whole: an
// absolute one as it is, any other after "0/". An intent's target "<number>/"
// has the source's name. An outcome leaves out what its intent said: an empty
// target is the one planned, an empty identity the source's.

namespace {

using Fields = JournalLine::Fields;
using Type = JournalRecord::Type;
using FolderNames = QHash<quint32, QString>;

constexpr QByteArrayView kMagic = "brevano-journal";
constexpr QByteArrayView kVersion = "3";

constexpr std::array<QByteArrayView, 9> kTypes = {
    "begin", "folder", "intent", "partial", "copied", "aside", "outcome", "deferred", "end"};
// How many fields each type of line has, its type included.
constexpr std::array<int, 9> kFieldCounts = {5, 4, 6, 4, 5, 4, 7, 3, 4};
constexpr std::array<QByteArrayView, 5> kKinds = {"tidy", "undo", "restore", "drop", "trash"};
constexpr std::array<QByteArrayView, 6> kStatuses = {"pending",  "moved",      "failed",
                                                     "deferred", "incomplete", "skipped"};

// Where the last "/" of path is, -1 for none. (A name is short: looked for
// from the end one unit at a time, it is found sooner than by a search.)
qsizetype lastSlash(QStringView path)
{
    qsizetype at = path.size() - 1;
    while (at >= 0 && path[at] != u'/')
        --at;
    return at;
}

QStringView nameOf(QStringView path)
{
    return path.sliced(lastSlash(path) + 1);
}

// Writes a path field: in the folder numbered folder, its name (left out
// where it is sourceName, the name of an intent's source); else whole.
void writePath(JournalLine::Writer &line, const QString &path, quint32 folder,
               QStringView sourceName = {})
{
    if (folder == 0) {
        line.text(path, path.startsWith(u'/') ? QByteArrayView() : QByteArrayView("0/"));
        return;
    }
    char prefix[16];
    char *end = std::to_chars(prefix, prefix + sizeof prefix - 1, folder).ptr;
    *end++ = '/';
    const QStringView name = nameOf(path);
    line.text(name == sourceName ? QStringView() : name, QByteArrayView(prefix, end - prefix));
}

// Reads a path field into path and folder; sourceName, for a target, is the
// name "<number>/" stands for.
bool readPath(QByteArrayView field, const FolderNames &folders, QString &path, quint32 &folder,
              std::optional<QStringView> sourceName = std::nullopt)
{
    folder = 0;
    if (field.startsWith('/')) {
        path = Fields::decoded(field);
        return true;
    }
    const qsizetype slash = field.indexOf('/');
    if (slash < 0 || !JournalLine::readNumber(field.first(slash), folder))
        return false;
    const QByteArrayView name = field.sliced(slash + 1);
    if (folder == 0) {
        path = Fields::decoded(name);
        return true;
    }
    const auto named = folders.constFind(folder);
    if (named == folders.cend() || (name.isEmpty() && !sourceName))
        return false;
    const QString decoded = name.isEmpty() ? QString() : Fields::decoded(name);
    const QStringView inFolder = name.isEmpty() ? *sourceName : QStringView(decoded);
    path.clear();
    path.reserve(named->size() + 1 + inFolder.size());
    path.append(*named).append(u'/').append(inFolder);
    return true;
}

// The fields of a line of a known type with the right number of fields.
bool readRecordFields(QByteArrayView line, Fields &f, Type &type, quint64 &run)
{
    return f.read(line) && f.word(0, kTypes, type) && f.count() == kFieldCounts[int(type)] &&
           f.number(1, run);
}

} // namespace

void JournalRecord::appendTo(QByteArray &out) const
{
    JournalLine::Writer line(out, kTypes[int(type)]);
    line.number(run);
    switch (type) {
    case Type::Begin:
        line.word(kKinds[int(kind)]).text(text).time(time);
        break;
    case Type::Folder:
        line.number(seq).text(path);
        break;
    case Type::Intent:
        line.number(seq);
        writePath(line, path, pathFolder);
        writePath(line, target, targetFolder, nameOf(path));
        line.identity(identity);
        break;
    case Type::Partial:
    case Type::Aside:
    case Type::Copied:
        line.number(seq);
        writePath(line, path, pathFolder);
        if (type == Type::Copied)
            line.identity(identity);
        break;
    case Type::Outcome:
        line.number(seq).word(kStatuses[int(status)]);
        if (plannedTarget)
            line.word({});
        else
            writePath(line, target, targetFolder);
        if (sourceIdentity)
            line.word({});
        else
            line.identity(identity);
        line.text(text);
        break;
    case Type::Deferred:
        writePath(line, path, pathFolder);
        break;
    case Type::End:
        line.time(time).word(recovered ? "1" : "0");
        break;
    }
    line.finish();
}

std::optional<JournalRecord> JournalRecord::parse(QByteArrayView line, const Folders &folders)
{
    Fields f;
    JournalRecord r;
    if (!readRecordFields(line, f, r.type, r.run))
        return std::nullopt;
    const FolderNames *named = folders ? folders(r.run) : nullptr;
    // Paths and messages are the costly part to read: where no one needs
    // them, they are left empty.
    const auto path = [&](int i, QString &into, quint32 &folder,
                          std::optional<QStringView> sourceName = std::nullopt) {
        return !named || readPath(f[i], *named, into, folder, sourceName);
    };
    bool ok = false;
    switch (r.type) {
    case Type::Begin:
        ok = f.word(2, kKinds, r.kind) && f.time(4, r.time);
        r.text = f.text(3);
        break;
    case Type::Folder:
        ok = f.number(2, r.seq) && r.seq != 0;
        if (named)
            r.path = f.text(3);
        break;
    case Type::Intent:
        ok = f.number(2, r.seq) && f.identity(5, r.identity) && path(3, r.path, r.pathFolder) &&
             path(4, r.target, r.targetFolder, nameOf(r.path));
        break;
    case Type::Partial:
    case Type::Aside:
        ok = f.number(2, r.seq) && path(3, r.path, r.pathFolder);
        break;
    case Type::Copied:
        ok = f.number(2, r.seq) && path(3, r.path, r.pathFolder) && f.identity(4, r.identity);
        break;
    case Type::Outcome:
        r.plannedTarget = f[4].isEmpty();
        r.sourceIdentity = f[5].isEmpty();
        ok = f.number(2, r.seq) && f.word(3, kStatuses, r.status) &&
             (r.plannedTarget || path(4, r.target, r.targetFolder)) &&
             (r.sourceIdentity || f.identity(5, r.identity));
        if (named)
            r.text = f.text(6);
        break;
    case Type::Deferred:
        ok = path(2, r.path, r.pathFolder);
        break;
    case Type::End:
        ok = f.time(2, r.time) && (f[3] == "0" || f[3] == "1");
        r.recovered = f[3] == "1";
        break;
    }
    return ok ? std::optional(r) : std::nullopt;
}

std::optional<quint64> JournalRecord::runOf(QByteArrayView line)
{
    Fields f;
    Type type;
    quint64 run = 0;
    return readRecordFields(line, f, type, run) ? std::optional(run) : std::nullopt;
}

std::optional<quint64> JournalRecord::runEndedBy(QByteArrayView line)
{
    if (!line.startsWith(kTypes[int(Type::End)]))
        return std::nullopt;
    const std::optional<JournalRecord> record = parse(line);
    return record && record->type == Type::End ? std::optional(record->run) : std::nullopt;
}

qsizetype JournalRecord::nameAt(QStringView path)
{
    const qsizetype slash = lastSlash(path);
    return path.startsWith(u'/') && slash + 1 < path.size() ? slash + 1 : -1;
}

QByteArray JournalRecord::header(quint64 nextRun)
{
    QByteArray out;
    JournalLine::Writer(out, kMagic).word(kVersion).number(nextRun).finish();
    return out;
}

std::optional<quint64> JournalRecord::parseHeader(QByteArrayView line, bool *otherVersion)
{
    Fields f;
    quint64 next = 0;
    const bool header = f.read(line) && f.count() == 3 && f[0] == kMagic;
    if (otherVersion)
        *otherVersion = header && f[1] != kVersion;
    if (header && f[1] == kVersion && f.number(2, next))
        return next;
    return std::nullopt;
}
