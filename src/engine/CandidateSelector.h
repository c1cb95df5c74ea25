#pragma once

#include "ItemInfo.h"

#include <QDateTime>
#include <QString>

#include <chrono>

class BrevanoData;

// Decides whether a Desktop item is moved, put off because it is still being
// written, or left alone. It only judges; arming the retry and telling the
// user are the tidy's business.
class CandidateSelector
{
public:
    enum Verdict : quint32
    {
        CandidateMove = 0,
        CandidateDeferred = 1,
        CandidateIgnored = 2
    };
    enum class Change
    {
        None,
        FolderChanging,
        FileChanging,
        NoDate
    };

    struct Assessment
    {
        Verdict verdict = CandidateMove;
        Change change = Change::None; // why it was deferred
    };

    static constexpr std::chrono::milliseconds kChangingWindow{10000};

    CandidateSelector(const BrevanoData &data, const ItemInfo &itemInfo)
        : m_data(data), m_itemInfo(itemInfo)
    {
    }

    Assessment assess(const QString &path, bool ignoreChangingFiles, const QDateTime &now) const;
    // The same, with the item's facts already read.
    Assessment assess(const QString &path, const ItemInfo::Facts &facts, bool ignoreChangingFiles,
                      const QDateTime &now) const;
    // True when a direct child of folder changed within the window. The walk goes
    // down the whole tree, but only the direct children decide.
    bool getRecentChangesInFolder(const QString &folder, const QDateTime &now) const;
    static bool changedRecently(const QDateTime &modified, const QDateTime &now);

private:
    const BrevanoData &m_data;
    const ItemInfo &m_itemInfo;
};
