#pragma once

#include "FileMover.h"
#include "MoveJournal.h"

// Records in the journal, for one announced item, what a move across file
// systems is about to do, while it lives on the moving thread: every
// FileMover call made meanwhile is watched. With no journal it does nothing.
class JournalObserver : public FileMover::Observer
{
public:
    JournalObserver(MoveJournal *journal, quint64 run, quint32 seq)
        : m_journal(journal), m_run(run), m_seq(seq), m_scope(journal ? this : FileMover::observer())
    {
    }

    void willCopy(const QString &partialPath) override
    {
        m_journal->notePartial(m_run, m_seq, partialPath);
    }
    void willPlace(const QString &partialPath, quint64 device, quint64 inode) override
    {
        m_journal->noteCopied(m_run, m_seq, partialPath, {device, inode});
    }
    void willSetAside(const QString &asidePath) override
    {
        m_journal->noteAside(m_run, m_seq, asidePath);
    }

private:
    MoveJournal *m_journal;
    quint64 m_run;
    quint32 m_seq;
    FileMover::ObserverScope m_scope;
};
