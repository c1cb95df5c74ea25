#pragma once

#include <QDialog>
#include <QPointer>

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

    static bool isOpen() { return !s_open.isNull(); }
    static void bringToFront();
    static FileExtensionWindowController *openInstance() { return s_open; }

    // The text as typed.
    QString extension() const;

    void pressedSave();
    void pressedCancel();
    void reject() override;

private:
    static QPointer<FileExtensionWindowController> s_open;
    std::unique_ptr<Ui::Extension> m_ui;
    NotificationCenter &m_notifications;
};
