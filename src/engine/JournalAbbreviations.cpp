#include "JournalAbbreviations.h"

using Type = JournalRecord::Type;

void JournalAbbreviations::abbreviate(JournalRecord &record, const NameFolder &nameFolder)
{
    Run &r = run(record.run);
    switch (record.type) {
    case Type::Begin:
    case Type::Folder:
    case Type::End:
        break;
    case Type::Intent: {
        record.pathFolder = folderOf(r, record.path, r.lastSourceFolder, nameFolder);
        record.targetFolder = folderOf(r, record.target, r.lastTargetFolder, nameFolder);
        if (record.seq == r.planned.size() + 1)
            r.planned.push_back({record.target, record.identity});
        break;
    }
    case Type::Partial:
    case Type::Copied:
    case Type::Aside:
        record.pathFolder = folderOf(r, record.path, r.lastTargetFolder, nameFolder);
        break;
    case Type::Outcome:
        if (record.seq > 0 && record.seq <= r.planned.size()) {
            const Planned &planned = r.planned[record.seq - 1];
            record.plannedTarget = record.target == planned.target;
            record.sourceIdentity = record.identity == planned.identity;
        }
        if (!record.plannedTarget)
            record.targetFolder = folderOf(r, record.target, r.lastTargetFolder, nameFolder);
        break;
    case Type::Deferred:
        record.pathFolder = folderOf(r, record.path, r.lastSourceFolder, nameFolder);
        break;
    }
}

void JournalAbbreviations::forget(quint64 run)
{
    std::erase_if(m_runs, [run](const Run &r) { return r.id == run; });
}

JournalAbbreviations::Run &JournalAbbreviations::run(quint64 id)
{
    for (auto r = m_runs.rbegin(); r != m_runs.rend(); ++r) {
        if (r->id == id)
            return *r;
    }
    Run &r = m_runs.emplace_back();
    r.id = id;
    return r;
}

quint32 JournalAbbreviations::folderOf(Run &run, const QString &path, quint32 &last,
                                       const NameFolder &nameFolder)
{
    const qsizetype nameAt = JournalRecord::nameAt(path);
    if (nameAt < 0)
        return 0;
    const QStringView folder = QStringView(path).first(nameAt - 1);
    if (last != 0 && run.folders.at(last - 1) == folder)
        return last;
    const QString named = folder.toString();
    quint32 number = run.numbers.value(named);
    if (number == 0) {
        run.folders.append(named);
        number = quint32(run.folders.size());
        run.numbers.insert(named, number);
        nameFolder({.type = Type::Folder, .run = run.id, .seq = number, .path = named});
    }
    return last = number;
}
