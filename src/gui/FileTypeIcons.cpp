#include "FileTypeIcons.h"

#include "FileNames.h"
#include "LocalItemInfo.h"

#include <QApplication>
#include <QMimeDatabase>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

#include <climits>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Keys of m_byType: a MIME type's name, or one of these.
const QString kFolder = QStringLiteral(":folder");
const QString kApplication = QStringLiteral(":application");
const QString kLinkPrefix = QStringLiteral(":link:");
const QString kExtensionPrefix = QStringLiteral(":extension:");
// Enough for the largest listings; beyond it the kinds are read again.
constexpr qsizetype kRememberedPaths = 250000;

const QMimeDatabase &mimeDatabase()
{
    static const QMimeDatabase database;
    return database;
}

// The type a name suggests; nothing is read.
QMimeType typeByName(const QString &name)
{
    return mimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
}

QString lastComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

// The first of names the theme has, else the style's icon, so there is always one.
QIcon themeIcon(std::initializer_list<QString> names, QStyle::StandardPixmap standard)
{
    for (const QString &name : names)
        if (!name.isEmpty() && QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    return QApplication::style()->standardIcon(standard);
}

QIcon iconForType(const QMimeType &type)
{
    return themeIcon({type.iconName(), type.genericIconName(), QStringLiteral("text-x-generic"),
                      QStringLiteral("unknown")},
                     QStyle::SP_FileIcon);
}

// base with the theme's link emblem in its lower left quarter, or base alone
// when the theme has no such emblem.
QIcon withLinkEmblem(const QIcon &base)
{
    const QString emblemName = QStringLiteral("emblem-symbolic-link");
    if (!QIcon::hasThemeIcon(emblemName))
        return base;
    const QIcon emblem = QIcon::fromTheme(emblemName);
    QIcon linked;
    for (const int side : {16, 22, 32, 48, 64, 128, 256}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        base.paint(&painter, pixmap.rect());
        emblem.paint(&painter, QRect(0, side - side / 2, side / 2, side / 2));
        painter.end();
        linked.addPixmap(pixmap);
    }
    return linked;
}

// What decides a path's icon, read once: lstat for folders, packages and links.
QString typeKeyOf(const QString &path)
{
    const QString name = lastComponent(path);
    struct stat info;
    if (::lstat(FileNames::encode(path).constData(), &info) != 0)
        return typeByName(name).name();
    if (S_ISDIR(info.st_mode)) {
        if (!LocalItemInfo::isPackageExtension(name))
            return kFolder;
        const QMimeType type = typeByName(name);
        return type.isDefault() ? kApplication : type.name();
    }
    if (S_ISLNK(info.st_mode)) {
        // The target's type as its name tells it; the target itself is not read.
        QByteArray target(PATH_MAX, Qt::Uninitialized);
        const ssize_t length =
            ::readlink(FileNames::encode(path).constData(), target.data(), target.size());
        const QString targetName =
            length > 0 ? lastComponent(FileNames::decode(target.first(length))) : name;
        return kLinkPrefix + typeByName(targetName.isEmpty() ? name : targetName).name();
    }
    return typeByName(name).name();
}

} // namespace

QIcon FileTypeIcons::forExtension(const QString &extension)
{
    // Menus ask once per row: remember the extension's type too.
    const QString key = kExtensionPrefix + extension;
    if (const auto found = m_byType.constFind(key); found != m_byType.constEnd())
        return *found;
    const QIcon icon = iconForKey(typeByName(QStringLiteral("x.") + extension).name());
    m_byType.insert(key, icon);
    return icon;
}

QIcon FileTypeIcons::forPath(const QString &path)
{
    auto known = m_typeOfPath.constFind(path);
    if (known == m_typeOfPath.constEnd()) {
        if (m_typeOfPath.size() >= kRememberedPaths)
            m_typeOfPath.clear();
        known = m_typeOfPath.insert(path, typeKeyOf(path));
    }
    return iconForKey(*known);
}

QIcon FileTypeIcons::iconForKey(const QString &key)
{
    if (const auto found = m_byType.constFind(key); found != m_byType.constEnd())
        return *found;
    QIcon icon;
    if (key == kFolder)
        icon = themeIcon({QStringLiteral("folder")}, QStyle::SP_DirIcon);
    else if (key == kApplication)
        icon = themeIcon({QStringLiteral("application-x-executable")}, QStyle::SP_FileIcon);
    else if (key.startsWith(kLinkPrefix))
        icon = withLinkEmblem(iconForKey(key.mid(kLinkPrefix.size())));
    else
        icon = iconForType(mimeDatabase().mimeTypeForName(key));
    m_byType.insert(key, icon);
    return icon;
}

FileTypeIcons &FileTypeIcons::shared()
{
    static FileTypeIcons icons;
    return icons;
}
