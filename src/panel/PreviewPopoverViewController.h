#pragma once

#include <QFrame>
#include <QImage>

#include <memory>

class Brevano;
class FileViewer;
class QKeyEvent;
namespace Ui {
class PreviewPopoverViewController;
}

// A large picture of one item of the panel with its name and full path, and
// buttons to restore it (and ignore it from then on), trash it, show it in the
// file manager or open it. Opening and showing are done here; restoring and
// trashing are asked of the panel, which runs them as its context menu does.
// A window of its own beside the panel, shown without taking the keyboard.
class PreviewPopoverViewController : public QFrame
{
    Q_OBJECT
public:
    static constexpr int kPreviewSide = 380;

    PreviewPopoverViewController(Brevano &engine, FileViewer &fileViewer, const QString &path,
                                 QWidget *parent = nullptr);
    ~PreviewPopoverViewController() override;

    QString filenameToPreview() const { return m_path; }
    // Names, path and whether the item can be restored from here (only what
    // lies directly in the Shadow Desktop can).
    void applyPreview();
    // The picture, fitted into the square (a type icon at first, the file's
    // thumbnail when it comes).
    void setPicture(const QImage &picture);
    // A smaller square, for a panel too small for the whole one.
    void setPreviewSide(int side);
    int previewSide() const;
    // Takes the keyboard, on the first button that can be pressed (it is
    // shown without it, so the keys stay with the panel's rows).
    void takeKeyboard();

    void pressedRestoreFile();
    void pressedDeleteFile();
    void pressedRevealFile();
    void pressedOpenFile();

signals:
    // Emitted from inside this frame's handlers: close it with deleteLater().
    void restoreFileRequested(const QString &path);
    void deleteFileRequested(const QString &path);
    void closeRequested();
    // The keyboard went to another window.
    void resignedKey();
    // Tab past the last button or Shift+Tab before the first: the keyboard
    // goes back to the panel, and the preview stays.
    void keyboardLeft();

protected:
    // Escape closes it.
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showPath();
    // Its buttons the keyboard can reach, in their order.
    QList<QWidget *> reachableButtons() const;

    std::unique_ptr<Ui::PreviewPopoverViewController> m_ui;
    Brevano &m_engine;
    FileViewer &m_fileViewer;
    QString m_path;
    QImage m_picture;
};
