#pragma once

#include "ItemInfo.h"

// Item facts from the file system: lstat for folders and links, a leading dot
// or the parent folder's ".hidden" file for invisible items, a bundle
// extension for packages, and the MIME database for kind texts.
class LocalItemInfo : public ItemInfo
{
public:
    quint32 flags(const QString &path, quint32 wanted = AllFlags) const override;
    Facts facts(const QString &path) const override;
    // The name decides; nothing is read.
    bool isPackageFolder(const QString &path) const override;
    QString kindText(const QString &path) const override;

    // Folder extensions that make a folder one item.
    static bool isPackageExtension(const QString &name);
};
