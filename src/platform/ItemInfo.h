#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

// What kind of item a path is, as the tidy engine tests it. The bits never
// describe what a symbolic link points to, only the link itself. Workers share
// the engine's instance, so implementations answer from any thread.
class ItemInfo
{
public:
    enum Flag : quint32
    {
        Package = 2,    // a folder shown as one item (an application bundle, say)
        Container = 8,  // a folder
        AliasFile = 16, // a symbolic link
        Invisible = 64, // hidden from the user
    };

    static constexpr quint32 AllFlags = Package | Container | AliasFile | Invisible;

    virtual ~ItemInfo() = default;
    // Zero when nothing can be read at the path. Only the bits in wanted are
    // looked for (the invisible bit costs a read of the folder's ".hidden").
    virtual quint32 flags(const QString &path, quint32 wanted = AllFlags) const = 0;

    struct Facts
    {
        quint32 flags = 0;
        std::optional<QDateTime> modified; // none when nothing can be read
        quint64 device = 0;                // what the item itself is (a link is not followed)
        quint64 inode = 0;
    };
    // The flags and the modification date, read together.
    virtual Facts facts(const QString &path) const = 0;
    // For an item known to be a real folder: whether it is a package.
    virtual bool isPackageFolder(const QString &path) const
    {
        return flags(path, Package) & Package;
    }
    // The localised kind of the item ("PNG image"), or an empty string.
    virtual QString kindText(const QString &path) const = 0;
};
