#pragma once

#include "Trash.h"

#include <QDateTime>

// The freedesktop.org Trash: the home trash ($XDG_DATA_HOME/Trash) for items on
// its file system, else the file system's own "$topdir/.Trash/$uid" (a sticky,
// non-link folder the administrator made) or "$topdir/.Trash-$uid". The info
// file is written first and claims the name; the item then moves in with one
// rename that never replaces.
class FreedesktopTrash : public Trash
{
public:
    Result trashAs(const QString &path, const QString &originalPath) override;

    static QString homeTrash();
    // The folder of the mount that holds path (its "topdir"), found from the
    // real place of path's folder.
    static QString mountTopdir(const QString &path);
    static constexpr int kMaxNameAttempts = 1000;
};
