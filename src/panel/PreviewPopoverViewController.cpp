#include "PreviewPopoverViewController.h"

#include "Brevano.h"
#include "FileNames.h"
#include "FileViewer.h"
#include "ui_PreviewPopoverViewController.h"

#include <QKeyEvent>
#include <QPixmap>

#include <utility>

PreviewPopoverViewController::PreviewPopoverViewController(Brevano &engine, FileViewer &fileViewer,
                                                           const QString &path, QWidget *parent)
    : QFrame(parent), m_ui(std::make_unique<Ui::PreviewPopoverViewController>()), m_engine(engine),
      m_fileViewer(fileViewer), m_path(path)
{
    m_ui->setupUi(this);
    // A window of the panel's, always above it, that leaves the keyboard where it is.
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    connect(m_ui->buttonRestore, &QPushButton::clicked, this,
            &PreviewPopoverViewController::pressedRestoreFile);
    connect(m_ui->buttonTrash, &QPushButton::clicked, this,
            &PreviewPopoverViewController::pressedDeleteFile);
    connect(m_ui->buttonReveal, &QPushButton::clicked, this,
            &PreviewPopoverViewController::pressedRevealFile);
    connect(m_ui->buttonOpen, &QPushButton::clicked, this,
            &PreviewPopoverViewController::pressedOpenFile);
}

PreviewPopoverViewController::~PreviewPopoverViewController() = default;

void PreviewPopoverViewController::applyPreview()
{
    const bool restorable = m_engine.fileResidesInShadowDesktopRoot(m_path);
    m_ui->buttonRestore->setEnabled(restorable);
    m_ui->buttonRestore->setToolTip(
        restorable ? QStringLiteral("Put it back on the Desktop and leave it there at every tidy")
                   : QStringLiteral("Items in folders cannot be restored"));
    showPath();
}

void PreviewPopoverViewController::setPicture(const QImage &picture)
{
    m_picture = picture;
    if (picture.isNull()) {
        m_ui->preview->clear();
        return;
    }
    const qreal ratio = devicePixelRatioF();
    const int side = qRound(previewSide() * ratio);
    QPixmap shown = QPixmap::fromImage(
        picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    shown.setDevicePixelRatio(ratio);
    m_ui->preview->setPixmap(shown);
}

void PreviewPopoverViewController::setPreviewSide(int side)
{
    m_ui->preview->setFixedSize(side, side);
    setPicture(m_picture);
    adjustSize();
}

int PreviewPopoverViewController::previewSide() const
{
    return m_ui->preview->maximumWidth();
}

void PreviewPopoverViewController::takeKeyboard()
{
    activateWindow();
    raise();
    if (const QList<QWidget *> buttons = reachableButtons(); !buttons.isEmpty())
        buttons.first()->setFocus(Qt::TabFocusReason);
}

QList<QWidget *> PreviewPopoverViewController::reachableButtons() const
{
    QList<QWidget *> reachable;
    for (QWidget *button :
         {m_ui->buttonRestore, m_ui->buttonTrash, m_ui->buttonReveal, m_ui->buttonOpen}) {
        if (button->isEnabled())
            reachable.append(button);
    }
    return reachable;
}

// Long names and paths lose their middle; the whole path is the tool tip.
void PreviewPopoverViewController::showPath()
{
    const QString name = FileNames::display(m_path.mid(m_path.lastIndexOf(u'/') + 1));
    const QString path = FileNames::display(m_path);
    m_ui->filename->setText(
        m_ui->filename->fontMetrics().elidedText(name, Qt::ElideMiddle, m_ui->filename->width()));
    m_ui->filename->setToolTip(name);
    m_ui->filename->setAccessibleName(name); // whole, for a screen reader
    m_ui->filepath->setText(
        m_ui->filepath->fontMetrics().elidedText(path, Qt::ElideMiddle, m_ui->filepath->width()));
    m_ui->filepath->setToolTip(path);
    m_ui->filepath->setAccessibleName(path);
}

void PreviewPopoverViewController::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    showPath();
}

void PreviewPopoverViewController::pressedRestoreFile()
{
    emit restoreFileRequested(m_path);
}

void PreviewPopoverViewController::pressedDeleteFile()
{
    emit deleteFileRequested(m_path);
}

void PreviewPopoverViewController::pressedRevealFile()
{
    m_fileViewer.reveal(m_path);
}

void PreviewPopoverViewController::pressedOpenFile()
{
    m_fileViewer.open(m_path);
}

bool PreviewPopoverViewController::event(QEvent *event)
{
    if (event->type() == QEvent::WindowDeactivate)
        emit resignedKey();
    // Escape belongs to this window, before any shortcut of the application's.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Escape &&
            (key->modifiers() == Qt::NoModifier || key->modifiers() == Qt::KeypadModifier)) {
            event->accept();
            return true;
        }
    }
    return QFrame::event(event);
}

bool PreviewPopoverViewController::focusNextPrevChild(bool next)
{
    const QList<QWidget *> reachable = reachableButtons();
    if (!reachable.isEmpty() && focusWidget() == (next ? reachable.last() : reachable.first())) {
        emit keyboardLeft();
        return true;
    }
    return QFrame::focusNextPrevChild(next);
}

void PreviewPopoverViewController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        emit closeRequested();
        event->accept();
    } else {
        QFrame::keyPressEvent(event);
    }
}
