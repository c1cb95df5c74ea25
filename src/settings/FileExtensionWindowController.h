#pragma once

#include "OpenWindowMarker.h"

#include <QDialog>

#include <memory>

class NotificationCenter;
namespace Ui {
class Extension;
}

// Asks for one file extension and announces it ("addFileExtension") to the
// quick filter editor that opened it. One at a time; run it with exec(): it
// answers 1 when saved, 0 when cancelled (Escape and the close button cancel).
class FileExtensionWindowController : public QDialog
{
    Q_OBJECT
public:
    explicit FileExtensionWindowController(NotificationCenter &notifications,
                                           const QString &extension = QString(),
                                           QWidget *parent = nullptr);
    ~FileExtensionWindowController() override;

    static bool isOpen() { return s_open.isOpen(); }
    static void bringToFront() { s_open.bringToFront(); }
    static FileExtensionWindowController *openInstance() { return s_open.window(); }

    // The text as typed.
    QString extension() const;

    void pressedSave();
    void pressedCancel();
    void reject() override;

private:
    static OpenWindowMarker<FileExtensionWindowController> s_open;
    std::unique_ptr<Ui::Extension> m_ui;
    NotificationCenter &m_notifications;
};
