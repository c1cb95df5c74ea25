#include "AppFolders.h"

#include "FileStat.h"

#include <QDir>
#include <QFileInfo>
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

QString AppFolders::shadowDesktopRequirement(const QString &folder)
{
    const auto real = [](const QString &path) {
        const QString canonical = QFileInfo(path).canonicalFilePath();
        return canonical.isEmpty() ? QDir::cleanPath(path) : canonical;
    };
    const auto within = [](const QString &inner, const QString &outer) {
        return inner == outer || outer == u"/" || inner.startsWith(outer + u'/');
    };
    const QString chosen = real(folder);
    if (within(chosen, real(desktopFolder())))
        return QStringLiteral("a folder outside the Desktop (%1)").arg(desktopFolder());
    for (const QString &kept : {QDir::homePath(), desktopFolder(),
                                applicationSupportFolder() + QStringLiteral("/Brevano")}) {
        if (within(real(kept), chosen))
            return QStringLiteral("a folder that holds neither your home folder, the Desktop nor "
                                  "Brevano's own data (%1)")
                .arg(kept);
    }
    return {};
}
