#include "IgnoreList.h"

PropertyDictionary IgnoreList::getIgnoreFilesDictionary()
{
    return m_root.dictionaryForKey(Key);
}

bool IgnoreList::shouldIgnoreFile(const QString &path) const
{
    return m_root.value(Key).toDictionary().value(path).boolValue(false);
}

// The path without its last component, as text: "/a/b" -> "/a", "/a/b/" -> "/a/b".
static QString parentPath(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0)
        return QString();
    return slash == 0 ? QStringLiteral("/") : path.left(slash);
}

qsizetype IgnoreList::addIgnoreFiles(const QStringList &paths)
{
    PropertyDictionary ignored = getIgnoreFilesDictionary();
    qsizetype skipped = 0;
    for (const QString &path : paths) {
        if (parentPath(path) == m_desktopFolder && !path.endsWith(u'/'))
            ignored.insert(path, true);
        else
            ++skipped;
    }
    return skipped;
}

void IgnoreList::removeIgnoreFile(const QString &path)
{
    getIgnoreFilesDictionary().remove(path);
}

void IgnoreList::removeIgnoreFiles(const QStringList &paths)
{
    for (const QString &path : paths)
        removeIgnoreFile(path);
}

QStringList IgnoreList::paths() const
{
    return m_root.value(Key).toDictionary().keys();
}

QString IgnoreList::skippedAlertTitle(qsizetype skipped)
{
    return QStringLiteral("Items must be contained directly within the Desktop to be added to the "
                          "Brevano ignore list. %1 files skipped")
        .arg(skipped);
}
