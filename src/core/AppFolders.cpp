#include "AppFolders.h"

#include "FileStat.h"

#include <QDir>
#include <QStandardPaths>

static QString withoutTrailingSeparator(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

static QString createdFolder(const QString &path)
{
    if (!FileStat::exists(path))
        QDir().mkpath(path);
    return path;
}

QString AppFolders::desktopFolder()
{
    return withoutTrailingSeparator(
        QStandardPaths::writableLocation(QStandardPaths::DesktopLocation));
}

QString AppFolders::applicationSupportFolder()
{
    return withoutTrailingSeparator(
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

QString AppFolders::brevanoSupportFolder()
{
    return createdFolder(applicationSupportFolder() + QStringLiteral("/Brevano"));
}

QString AppFolders::defaultShadowDesktopFolder()
{
    return createdFolder(applicationSupportFolder() + QStringLiteral("/Brevano/Shadow Desktop"));
}
