#pragma once

#include <QString>

// The desktop's file manager and default applications.
class FileViewer
{
public:
    virtual ~FileViewer() = default;
    virtual bool open(const QString &path) = 0;       // with its default application
    virtual bool reveal(const QString &path) = 0;     // selected in its folder's window
    virtual bool openFolder(const QString &path) = 0; // a window on the folder itself
};
