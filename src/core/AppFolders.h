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
    // What a folder must be to serve as the Shadow Desktop, when folder is not:
    // "a folder outside the Desktop (...)", say; empty when it may. Emptying the
    // Shadow Desktop trashes all it holds, so it must hold none of the user's
    // home, the Desktop or Brevano's own data. Links are followed.
    static QString shadowDesktopRequirement(const QString &folder);
};
