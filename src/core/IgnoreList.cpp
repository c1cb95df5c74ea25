#include "IgnoreList.h"

#include "FileNames.h"

#include <algorithm>

static const QString kFileUri = QStringLiteral("file://");

QString IgnoreList::keyOf(const QString &path)
{
    const bool hasUndecodableBytes = std::any_of(path.begin(), path.end(), [](QChar c) {
        return c.unicode() >= 0xDC80 && c.unicode() <= 0xDCFF;
    });
    if (!hasUndecodableBytes)
        return path;
    return kFileUri + QString::fromLatin1(FileNames::encode(path).toPercentEncoding("/"));
}

QString IgnoreList::pathOfKey(const QString &key)
{
    if (!key.startsWith(kFileUri))
        return key;
    return FileNames::decode(QByteArray::fromPercentEncoding(key.mid(kFileUri.size()).toLatin1()));
}

PropertyDictionary IgnoreList::getIgnoreFilesDictionary()
{
    return m_root.dictionaryForKey(Key);
}

bool IgnoreList::shouldIgnoreFile(const QString &path) const
{
    return m_root.value(Key).toDictionary().value(keyOf(path)).boolValue(false);
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
            ignored.insert(keyOf(path), true);
        else
            ++skipped;
    }
    return skipped;
}

void IgnoreList::removeIgnoreFile(const QString &path)
{
    getIgnoreFilesDictionary().remove(keyOf(path));
}

void IgnoreList::removeIgnoreFiles(const QStringList &paths)
{
    for (const QString &path : paths)
        removeIgnoreFile(path);
}

QStringList IgnoreList::paths() const
{
    QStringList paths = m_root.value(Key).toDictionary().keys();
    for (QString &path : paths)
        path = pathOfKey(path);
    return paths;
}

bool IgnoreList::contains(const QString &path) const
{
    return m_root.value(Key).toDictionary().contains(keyOf(path));
}

QString IgnoreList::skippedAlertTitle(qsizetype skipped)
{
    return QStringLiteral("Items must be contained directly within the Desktop to be added to the "
                          "Brevano ignore list. %1 files skipped")
        .arg(skipped);
}
