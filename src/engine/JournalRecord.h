#pragma once

#include "MoveJournal.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>

#include <functional>
#include <optional>

// One line of the journal: what it says, and how it is written and read back
// (the format is described in JournalRecord.cpp).
struct JournalRecord
{
    enum class Type
    {
        Begin,
        Folder,
        Intent,
        Partial,
        Copied,
        Aside,
        Outcome,
        Deferred,
        End
    };

    Type type = Type::Begin;
    quint64 run = 0;
    // An item's number in its run (Intent, Partial, Copied, Aside, Outcome);
    // Folder: the folder's number.
    quint32 seq = 0;
    MoveJournal::RunKind kind = MoveJournal::RunKind::Tidy;            // Begin
    MoveJournal::ItemStatus status = MoveJournal::ItemStatus::Pending; // Outcome
    // Intent, Deferred: the source; Partial, Copied, Aside: the name noted;
    // Folder: the folder.
    QString path = {};
    QString target = {}; // Intent, Outcome
    // Begin: the detail; Outcome: the message.
    QString text = {};
    // Intent: the source's; Copied: the copy's; Outcome: the target's.
    MoveJournal::Identity identity = {};
    QDateTime time = {};    // Begin, End
    bool recovered = false; // End

    // How the line holds its paths (JournalAbbreviations chooses when
    // writing): each as its name in the folder of that number, which a Folder
    // record of the run named before; 0: whole.
    quint32 pathFolder = 0;
    quint32 targetFolder = 0;
    // Outcome: the target is the one its intent planned, or the identity its
    // source's, and the line leaves it out (read back, it is empty).
    bool plannedTarget = false;
    bool sourceIdentity = false;

    // Appends the whole line: fields, checksum and newline.
    void appendTo(QByteArray &out) const;

    // The folders a run named in the lines before, when its paths and
    // messages are wanted; null when they are not: they are left empty then
    // (a run's detail is always read).
    using Folders = std::function<const QHash<quint32, QString> *(quint64 run)>;
    // The record a line (without its newline) holds; none when its checksum
    // or its form is wrong, or it names a folder its run did not.
    static std::optional<JournalRecord> parse(QByteArrayView line, const Folders &folders = {});
    // The run a line belongs to, checksum checked, without reading the rest.
    static std::optional<quint64> runOf(QByteArrayView line);
    // The run a line ends, if it is an end record; quick for other lines.
    static std::optional<quint64> runEndedBy(QByteArrayView line);
    // Where the name of a path that can be written in its folder starts (the
    // folder is all before the "/" in front of it): an absolute path whose
    // name is not empty. -1 for any other path.
    static qsizetype nameAt(QStringView path);

    // The first line of a journal: the format's version, and the number the
    // next run takes at least (so that numbers never come back once the runs
    // that had them are dropped).
    static QByteArray header(quint64 nextRun);
    // The next run's number a header line gives; none when the line is not
    // the header of this version (*otherVersion: it is another version's).
    static std::optional<quint64> parseHeader(QByteArrayView line, bool *otherVersion = nullptr);
};
