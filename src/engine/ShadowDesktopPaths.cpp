#include "ShadowDesktopPaths.h"

#include "AppFolders.h"
#include "BrevanoData.h"
#include "FileStat.h"

QString ShadowDesktopPaths::getDesktopFolder() const
{
    return AppFolders::desktopFolder();
}

QString ShadowDesktopPaths::getDefaultShadowDesktopFolder() const
{
    return AppFolders::defaultShadowDesktopFolder();
}

QString ShadowDesktopPaths::getTargetFilename(const QString &name) const
{
    const QString root = m_data.getShadowDesktopPath();
    if (name.isEmpty())
        return root;
    return root == u"/" ? root + name : root + u'/' + name;
}

QString ShadowDesktopPaths::getTargetPathFromSourcePath(const QString &path) const
{
    return getTargetFilename(lastPathComponent(path));
}

QString ShadowDesktopPaths::getOriginalPathFromShadowPath(const QString &path) const
{
    return getDesktopFolder() + u'/' + lastPathComponent(path);
}

bool ShadowDesktopPaths::fileResidesInShadowDesktopRoot(const QString &path) const
{
    return deletingLastPathComponent(path) == getTargetFilename();
}

QString ShadowDesktopPaths::generateUniqueFilename(const QString &path)
{
    if (!FileStat::exists(path))
        return path;
    const QString name = lastPathComponent(path);
    const qsizetype dot = name.lastIndexOf(u'.');
    // A leading dot starts a hidden name, and a trailing one ends a name
    // without an extension.
    const bool hasExtension = dot > 0 && dot < name.size() - 1;
    const QString stem = hasExtension ? path.left(path.size() - (name.size() - dot)) : path;
    const QString extension = hasExtension ? name.mid(dot) : QString();
    for (quint64 n = 2;; ++n) {
        const QString candidate = stem + u' ' + QString::number(n) + extension;
        if (!FileStat::exists(candidate))
            return candidate;
    }
}

// Trailing separators do not make a component: "/a/b/" has the last component "b".
static QString withoutTrailingSeparators(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path.at(end - 1) == u'/')
        --end;
    return path.left(end);
}

QString ShadowDesktopPaths::lastPathComponent(const QString &path)
{
    const QString trimmed = withoutTrailingSeparators(path);
    if (trimmed == u"/")
        return trimmed;
    return trimmed.mid(trimmed.lastIndexOf(u'/') + 1);
}

QString ShadowDesktopPaths::deletingLastPathComponent(const QString &path)
{
    const QString trimmed = withoutTrailingSeparators(path);
    const qsizetype slash = trimmed.lastIndexOf(u'/');
    if (slash < 0)
        return QString();
    return slash == 0 ? QStringLiteral("/") : trimmed.left(slash);
}
