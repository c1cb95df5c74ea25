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
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {
// A row's tick is its selection in the list, which a click, Space and assistive
// technology (a cell's toggle action selects and deselects) all change alike.
// The check box only shows it: the delegate neither toggles it on its own nor
// paints the selection over it.
class TickDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->state &= ~QStyle::State_Selected;
    }
    bool editorEvent(QEvent *, QAbstractItemModel *, const QStyleOptionViewItem &,
                     const QModelIndex &) override
    {
        return false;
    }
};
} // namespace

RestoreFilesWindow::RestoreFilesWindow(Brevano &engine, QWidget *parent)
    : QDialog(parent), m_model(engine), m_list(new QListWidget), m_ignoreButton(new QCheckBox)
{
    setWindowTitle(QStringLiteral("Restore Files"));
    m_model.rebuildData(engine.getTargetFilename());
    auto *layout = new QVBoxLayout(this);
    auto *caption = new QLabel(QStringLiteral("Tick the items to put back on the Desktop:"));
    caption->setBuddy(m_list);
    layout->addWidget(caption);
    m_list->setObjectName(QStringLiteral("itemList"));
    m_list->setAccessibleName(QStringLiteral("Items in the Shadow Desktop"));
    m_list->setIconSize(QSize(18, 18));
    m_list->setUniformItemSizes(true);
    m_list->setSelectionMode(QAbstractItemView::MultiSelection);
    m_list->setItemDelegate(new TickDelegate(m_list));
    layout->addWidget(m_list);
    auto *checks = new QHBoxLayout;
    auto *checkAll = new QPushButton(QStringLiteral("Check All"));
    auto *uncheckAll = new QPushButton(QStringLiteral("Uncheck All"));
    checkAll->setObjectName(QStringLiteral("checkAllButton"));
    uncheckAll->setObjectName(QStringLiteral("uncheckAllButton"));
    checks->addWidget(checkAll);
    checks->addWidget(uncheckAll);
    checks->addStretch();
    layout->addLayout(checks);
    m_ignoreButton->setObjectName(QStringLiteral("ignoreButton"));
    m_ignoreButton->setText(QStringLiteral("Add restored items to the ignore list"));
    layout->addWidget(m_ignoreButton);
    auto *buttons = new QDialogButtonBox;
    QPushButton *restore =
        buttons->addButton(QStringLiteral("Restore"), QDialogButtonBox::AcceptRole);
    restore->setObjectName(QStringLiteral("restoreButton"));
    QPushButton *cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    layout->addWidget(buttons);
    // Return restores, wherever the focus is: Restore alone is a default button.
    // (Set once it is in the dialog; before, the dialog would make the first
    // button of its focus chain its default when shown.)
    for (QPushButton *button : {checkAll, uncheckAll, cancel})
        button->setAutoDefault(false);
    restore->setAutoDefault(true);
    restore->setDefault(true);
    connect(checkAll, &QPushButton::clicked, this, &RestoreFilesWindow::pressedCheckAll);
    connect(uncheckAll, &QPushButton::clicked, this, &RestoreFilesWindow::pressedUncheckAll);
    connect(buttons, &QDialogButtonBox::accepted, this, &RestoreFilesWindow::pressedRestore);
    connect(buttons, &QDialogButtonBox::rejected, this, &RestoreFilesWindow::pressedCancel);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RestoreFilesWindow::takeTicks);
    reload();
    resize(420, 360);
    markOpen(this);
}

void RestoreFilesWindow::reload()
{
    const QSignalBlocker quiet(m_list->selectionModel());
    m_list->clear();
    QFileIconProvider icons;
    for (const QString &name : m_model.sortedFilenames()) {
        auto *item = new QListWidgetItem(icons.icon(QFileInfo(m_model.pathOf(name))), name, m_list);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        const bool ticked = m_model.restoreFile(name);
        item->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
        item->setSelected(ticked);
        item->setSizeHint(QSize(0, 22));
    }
}

void RestoreFilesWindow::takeTicks()
{
    for (int row = 0; row < m_list->count(); ++row) {
        QListWidgetItem *item = m_list->item(row);
        const bool ticked = item->isSelected();
        m_model.setRestoreFile(item->text(), ticked);
        item->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
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
    clearOpen();
    m_model.applyRestoreSettings(m_ignoreButton->isChecked());
    deleteLater();
}

void RestoreFilesWindow::pressedCancel()
{
    hide();
    clearOpen();
    deleteLater();
}
