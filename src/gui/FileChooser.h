#pragma once

#include <QString>
#include <QStringList>

class QWidget;

// Asks the user for folders or files. Windows ask through this rather than a
// dialog of their own, so that tests can answer in the user's place.
class FileChooser
{
public:
    enum class Mode
    {
        OneFolder,       // a single folder, no files
        FilesAndFolders, // several items, files and folders alike; packages are single items
    };
    struct Options
    {
        QString title;
        QString directory; // where the chooser starts
        Mode mode = Mode::OneFolder;
        bool canCreateFolders = false;
    };

    virtual ~FileChooser() = default;
    // The chosen paths, absolute; empty when the user cancelled.
    virtual QStringList choose(const Options &options, QWidget *parent) = 0;
};
