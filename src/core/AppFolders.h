#pragma once

#include <QString>

// Where the user's folders are, following HOME and the XDG variables on Linux.
// Paths carry no trailing separator.
class AppFolders
{
public:
    static QString desktopFolder();
    // The per-user application data folder (~/.local/share, ~/Library/Application Support).
    static QString applicationSupportFolder();
    // applicationSupportFolder()/Brevano, created when missing (failures ignored).
    static QString brevanoSupportFolder();
    // brevanoSupportFolder()/Shadow Desktop, created when missing (failures ignored).
    static QString defaultShadowDesktopFolder();
};
