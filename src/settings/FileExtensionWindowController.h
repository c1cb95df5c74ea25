#pragma once

#include "SingleInstance.h"

#include <QDialog>

#include <memory>

class NotificationCenter;
namespace Ui {
class Extension;
}

// Asks for one file extension and announces it ("addFileExtension") to the
// quick filter editor that opened it. One at a time; run it with exec(): it
// answers 1 when saved, 0 when cancelled (Escape and the close button cancel).
class FileExtensionWindowController : public QDialog,
                                      public SingleInstance<FileExtensionWindowController>
{
    Q_OBJECT
public:
    explicit FileExtensionWindowController(NotificationCenter &notifications,
                                           const QString &extension = QString(),
                                           QWidget *parent = nullptr);
    ~FileExtensionWindowController() override;

    // The text as typed.
    QString extension() const;

    void pressedSave();
    void pressedCancel();
    void reject() override;

private:
    std::unique_ptr<Ui::Extension> m_ui;
    NotificationCenter &m_notifications;
};
