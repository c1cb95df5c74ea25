#pragma once

#include "MoveJournal.h"

#include <QByteArray>
#include <QByteArrayView>

#include <functional>
#include <optional>

// One line of the journal: what it says, and how it is written and read back
// (the format is described in JournalRecord.cpp).
struct JournalRecord
{
    enum class Type
    {
        Begin,
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
    // An item's number in its run (Intent, Partial, Copied, Aside, Outcome).
    quint32 seq = 0;
    MoveJournal::RunKind kind = MoveJournal::RunKind::Tidy;            // Begin
    MoveJournal::ItemStatus status = MoveJournal::ItemStatus::Pending; // Outcome
    // Intent, Deferred: the source; Partial, Copied, Aside: the name noted.
    QString path = {};
    QString target = {}; // Intent, Outcome
    // Begin: the detail; Outcome: the message.
    QString text = {};
    // Intent: the source's; Copied: the copy's; Outcome: the target's.
    MoveJournal::Identity identity = {};
    QDateTime time = {};    // Begin, End
    bool recovered = false; // End

    // Appends the whole line: fields, checksum and newline.
    void appendTo(QByteArray &out) const;
    // The record a line (without its newline) holds; none when its checksum
    // or its form is wrong. Where withTexts says a run's paths and messages
    // are not needed, they are left empty (a run's detail is always read).
    static std::optional<JournalRecord>
    parse(QByteArrayView line, const std::function<bool(quint64 run)> &withTexts = {});
    // The run a line belongs to, checksum checked, without reading the rest.
    static std::optional<quint64> runOf(QByteArrayView line);
    // The run a line ends, if it is an end record; quick for other lines.
    static std::optional<quint64> runEndedBy(QByteArrayView line);

    // The first line of a journal: the format's version, and the number the
    // next run takes at least (so that numbers never come back once the runs
    // that had them are dropped).
    static QByteArray header(quint64 nextRun);
    // The next run's number a header line gives; none when the line is not
    // the header of this version.
    static std::optional<quint64> parseHeader(QByteArrayView line);
};
