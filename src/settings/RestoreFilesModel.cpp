#include "RestoreFilesModel.h"

#include "Brevano.h"
#include "DirectoryListing.h"
#include "OverwriteMover.h"

void RestoreFilesModel::rebuildData(const QString &shadowDesktop)
{
    m_shadowDesktop = shadowDesktop;
    m_checkStatus.clear();
    m_sortedFilenames.clear();
    for (const QString &path : DirectoryListing::entries(shadowDesktop)) {
        const QString name = path.mid(path.lastIndexOf(u'/') + 1);
        if (OverwriteMover::isWorkingName(name))
            continue;
        m_sortedFilenames.append(name);
        m_checkStatus.insert(name, false);
    }
    std::sort(m_sortedFilenames.begin(), m_sortedFilenames.end()); // by character code
}

void RestoreFilesModel::setRestoreFile(const QString &name, bool restore)
{
    if (m_checkStatus.contains(name))
        m_checkStatus.insert(name, restore);
}

void RestoreFilesModel::setAll(bool restore)
{
    for (auto it = m_checkStatus.begin(); it != m_checkStatus.end(); ++it)
        it.value() = restore;
}

int RestoreFilesModel::applyRestoreSettings(bool addToIgnore)
{
    int failed = 0;
    for (auto it = m_checkStatus.cbegin(); it != m_checkStatus.cend(); ++it) {
        if (it.value() && !m_engine.restoreItemAtPath(pathOf(it.key()), addToIgnore))
            ++failed;
    }
    return failed;
}
