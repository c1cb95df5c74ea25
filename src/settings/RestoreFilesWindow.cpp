#include "RestoreFilesWindow.h"

#include "Brevano.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

QPointer<RestoreFilesWindow> RestoreFilesWindow::s_open;

RestoreFilesWindow::RestoreFilesWindow(Brevano &engine, QWidget *parent)
    : QDialog(parent), m_model(engine), m_list(new QListWidget), m_ignoreButton(new QCheckBox)
{
    setWindowTitle(QStringLiteral("Restore Files"));
    m_model.rebuildData(engine.getTargetFilename());
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Tick the items to put back on the Desktop:")));
    m_list->setIconSize(QSize(18, 18));
    m_list->setUniformItemSizes(true);
    layout->addWidget(m_list);
    auto *checks = new QHBoxLayout;
    auto *checkAll = new QPushButton(QStringLiteral("Check All"));
    auto *uncheckAll = new QPushButton(QStringLiteral("Uncheck All"));
    checks->addWidget(checkAll);
    checks->addWidget(uncheckAll);
    checks->addStretch();
    layout->addLayout(checks);
    m_ignoreButton->setText(QStringLiteral("Add restored items to the ignore list"));
    layout->addWidget(m_ignoreButton);
    auto *buttons = new QDialogButtonBox;
    QPushButton *restore =
        buttons->addButton(QStringLiteral("Restore"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    restore->setDefault(true);
    layout->addWidget(buttons);
    connect(checkAll, &QPushButton::clicked, this, &RestoreFilesWindow::pressedCheckAll);
    connect(uncheckAll, &QPushButton::clicked, this, &RestoreFilesWindow::pressedUncheckAll);
    connect(buttons, &QDialogButtonBox::accepted, this, &RestoreFilesWindow::pressedRestore);
    connect(buttons, &QDialogButtonBox::rejected, this, &RestoreFilesWindow::pressedCancel);
    connect(m_list, &QListWidget::itemChanged, this, [this](QListWidgetItem *item) {
        m_model.setRestoreFile(item->text(), item->checkState() == Qt::Checked);
    });
    reload();
    resize(420, 360);
    s_open = this;
}

void RestoreFilesWindow::bringToFront()
{
    if (s_open) {
        s_open->show();
        s_open->raise();
    }
}

void RestoreFilesWindow::reload()
{
    const QSignalBlocker quiet(m_list);
    m_list->clear();
    QFileIconProvider icons;
    for (const QString &name : m_model.sortedFilenames()) {
        auto *item = new QListWidgetItem(icons.icon(QFileInfo(m_model.pathOf(name))), name, m_list);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(m_model.restoreFile(name) ? Qt::Checked : Qt::Unchecked);
        item->setSizeHint(QSize(0, 22));
    }
}

void RestoreFilesWindow::pressedCheckAll()
{
    m_model.setAll(true);
    reload();
}

void RestoreFilesWindow::pressedUncheckAll()
{
    m_model.setAll(false);
    reload();
}

void RestoreFilesWindow::pressedRestore()
{
    hide();
    s_open.clear();
    m_model.applyRestoreSettings(m_ignoreButton->isChecked());
    deleteLater();
}

void RestoreFilesWindow::pressedCancel()
{
    hide();
    s_open.clear();
    deleteLater();
}
