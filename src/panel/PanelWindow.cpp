#include "PanelWindow.h"

#include "ui_Panel.h"

#include <QKeyEvent>
#include <QLayout>
#include <QSizeGrip>

PanelWindow::PanelWindow(QWidget *parent)
    : PanelBackgroundView(parent), m_ui(std::make_unique<Ui::Panel>())
{
    // A tool window, not a popup: a popup grabs the pointer and could neither
    // stay open while pinned nor let a drag leave it.
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                   Qt::NoDropShadowWindowHint);
    if (compositorRunning())
        setAttribute(Qt::WA_TranslucentBackground);
    m_ui->setupUi(this);
    // The band's buttons keep their white icons readable in every state.
    setStyleSheet(QStringLiteral(
        "#activeViewText, #pathControl QToolButton, #pathControl QLabel { color: #f2f2f2; }"
        "QToolButton { border: 1px solid transparent; border-radius: 4px; padding: 2px; "
        "background: transparent; }"
        "QToolButton:hover { background: rgba(255, 255, 255, 40); }"
        "QToolButton:pressed, QToolButton:checked { background: rgba(255, 255, 255, 70); }"
        "QToolButton:focus { border-color: rgba(255, 255, 255, 160); }"
        "QToolButton::menu-indicator { image: none; }"));
    m_sizeGrip = new QSizeGrip(this);
    m_sizeGrip->setAccessibleName(QStringLiteral("Resize"));
    m_ui->footerLayout->addWidget(m_sizeGrip, 0, Qt::AlignBottom | Qt::AlignRight);
}

PanelWindow::~PanelWindow() = default;

bool PanelWindow::event(QEvent *event)
{
    if (event->type() == QEvent::WindowDeactivate)
        emit resignedKey();
    return PanelBackgroundView::event(event);
}

void PanelWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        emit cancelOperation();
        return;
    }
    PanelBackgroundView::keyPressEvent(event);
}

void PanelWindow::resizeEvent(QResizeEvent *event)
{
    PanelBackgroundView::resizeEvent(event);
    updateBand();
    emit resized();
}

void PanelWindow::showEvent(QShowEvent *event)
{
    PanelBackgroundView::showEvent(event);
    updateBand();
}

// The toolbar, the search field and the path sit on the dark band; the rows
// below it on the light sheet.
void PanelWindow::updateBand()
{
    if (QLayout *root = layout())
        root->activate();
    setBandHeight(m_ui->tableView->geometry().top() - contentsRect().top() - 4);
}

void PanelWindow::closeEvent(QCloseEvent *event)
{
    emit closing();
    PanelBackgroundView::closeEvent(event);
}
