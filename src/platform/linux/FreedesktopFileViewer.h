#pragma once

#include "FileViewer.h"

// The file manager over org.freedesktop.FileManager1, default applications
// through xdg-open; without a file manager service, the folder is opened.
class FreedesktopFileViewer : public FileViewer
{
public:
    bool open(const QString &path) override;
    bool reveal(const QString &path) override;
    bool openFolder(const QString &path) override;

private:
    static bool showInFileManager(const QString &method, const QString &path);
};
