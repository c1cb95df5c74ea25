#include "CandidateSelector.h"

#include "BrevanoData.h"
#include "DirectoryListing.h"
#include "FileStat.h"
#include "ItemInfo.h"

bool CandidateSelector::changedRecently(const QDateTime &modified, const QDateTime &now)
{
    return modified.addMSecs(kChangingWindow.count()) > now;
}

CandidateSelector::Assessment
CandidateSelector::assess(const QString &path, bool ignoreChangingFiles, const QDateTime &now) const
{
    return assess(path, m_itemInfo.facts(path), ignoreChangingFiles, now);
}

CandidateSelector::Assessment CandidateSelector::assess(const QString &path,
                                                        const ItemInfo::Facts &facts,
                                                        bool ignoreChangingFiles,
                                                        const QDateTime &now) const
{
    const quint32 flags = facts.flags;
    const bool isFolder = flags & ItemInfo::Container;
    if (m_data.getIgnoreFolders() && isFolder)
        return {CandidateIgnored, Change::None};
    if (m_data.getIgnoreAliases() && (flags & ItemInfo::AliasFile))
        return {CandidateIgnored, Change::None};
    if (m_data.getIgnoreHidden() && (flags & ItemInfo::Invisible))
        return {CandidateIgnored, Change::None};
    if (!ignoreChangingFiles) {
        if (isFolder && getRecentChangesInFolder(path, now))
            return {CandidateDeferred, Change::FolderChanging};
        if (!facts.modified)
            return {CandidateDeferred, Change::NoDate};
        if (changedRecently(*facts.modified, now))
            return {CandidateDeferred, Change::FileChanging};
    }
    // The ignore list comes last: an ignored item that is changing is deferred.
    if (m_data.shouldIgnoreFile(path))
        return {CandidateIgnored, Change::None};
    return {CandidateMove, Change::None};
}

bool CandidateSelector::getRecentChangesInFolder(const QString &folder, const QDateTime &now) const
{
    for (const QString &entry : DirectoryListing::entries(folder)) {
        const auto modified = FileStat::modificationDate(entry);
        if (modified && changedRecently(*modified, now))
            return true;
        // Deeper changes do not count; the walk still visits them, as it always has.
        if (m_itemInfo.flags(entry, ItemInfo::Container) & ItemInfo::Container)
            getRecentChangesInFolder(entry, now);
    }
    return false;
}
