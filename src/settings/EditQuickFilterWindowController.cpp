#include "EditQuickFilterWindowController.h"

#include "BrevanoData.h"
#include "FileExtensionWindowController.h"
#include "FileTypeIcons.h"
#include "NotificationCenter.h"
#include "ui_QuickFilter.h"

#include <QRegularExpressionValidator>

namespace {

// A list's choice as stored: its index, all ones when nothing is chosen.
quint32 chosenIndex(const QComboBox *combo)
{
    return quint32(combo->currentIndex());
}

} // namespace

EditQuickFilterWindowController::EditQuickFilterWindowController(BrevanoData &store,
                                                                 NotificationCenter &notifications,
                                                                 QuickFilterList::ItemPointer item,
                                                                 QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::QuickFilter>()), m_data(store),
      m_notifications(notifications), m_item(std::move(item))
{
    m_ui->setupUi(this);
    m_ui->nameTextField->setText(m_item->getName());
    m_ui->styleComboBox->setCurrentIndex(int(m_item->getStyle()));
    m_ui->iconSizeComboBox->setCurrentIndex(int(m_item->getIconSize()));
    m_ui->folderComboBox->setCurrentIndex(int(m_item->getFolderStyle()));
    m_ui->iconStyleComboBox->setCurrentIndex(int(m_item->getIconStyle()));
    m_ui->dateModeCombo->setCurrentIndex(int(m_item->getDateMode()));
    m_ui->dateUnitsCombo->setCurrentIndex(int(m_item->getDateUnits()));
    // A count of units: digits only, no more than a 64-bit value holds.
    m_ui->dateValuetextField->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{1,18}")), m_ui->dateValuetextField));
    m_ui->dateValuetextField->setText(QString::number(m_item->getDateValue()));
    m_ui->extensionsTable->horizontalHeaderItem(0)->setData(Qt::UserRole, FilenameColumn);
    reloadExtensions();

    connect(m_ui->dateModeCombo, &QComboBox::currentIndexChanged, this, [this](int index) {
        m_item->setDateMode(quint32(index));
        updateButtons();
    });
    connect(m_ui->extensionsTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &EditQuickFilterWindowController::updateButtons);
    connect(m_ui->buttonAdd, &QPushButton::clicked, this,
            &EditQuickFilterWindowController::pressedAdd);
    connect(m_ui->buttonRemove, &QPushButton::clicked, this,
            &EditQuickFilterWindowController::pressedRemove);
    connect(m_ui->buttonSave, &QPushButton::clicked, this,
            &EditQuickFilterWindowController::pressedSave);
    connect(m_ui->buttonCancel, &QPushButton::clicked, this,
            &EditQuickFilterWindowController::pressedCancel);
    m_notifications.observe(
        NotificationCenter::AddFileExtension, this,
        [this](const QVariant &extension) { addFileExtension(extension.toString()); });
    markOpen(this);
}

EditQuickFilterWindowController::EditQuickFilterWindowController(BrevanoData &store,
                                                                 NotificationCenter &notifications,
                                                                 QWidget *parent)
    : EditQuickFilterWindowController(store, notifications, std::make_shared<QuickFilterItem>(),
                                      parent)
{
}

EditQuickFilterWindowController::~EditQuickFilterWindowController() = default;

void EditQuickFilterWindowController::updateButtons()
{
    m_ui->buttonRemove->setEnabled(
        !m_ui->extensionsTable->selectionModel()->selectedRows().isEmpty());
    const bool dated = m_item->getDateMode() != QuickFilterItem::DateModeNone;
    m_ui->dateUnitsCombo->setEnabled(dated);
    m_ui->dateValuetextField->setEnabled(dated);
}

void EditQuickFilterWindowController::reloadExtensions()
{
    QTableWidget *table = m_ui->extensionsTable;
    const PropertyArray extensions = m_item->fileExtensions();
    table->clearContents();
    table->setRowCount(int(extensions.size()));
    for (int row = 0; row < extensions.size(); ++row) {
        const QString extension = extensions.at(row).toString();
        table->setItem(
            row, 0,
            new QTableWidgetItem(FileTypeIcons::shared().forExtension(extension), extension));
    }
    updateButtons();
}

void EditQuickFilterWindowController::pressedAdd()
{
    if (FileExtensionWindowController::isOpen()) {
        FileExtensionWindowController::bringToFront();
        return;
    }
    QPointer<FileExtensionWindowController> prompt =
        new FileExtensionWindowController(m_notifications, QString(), this);
    prompt->exec();
    delete prompt;
}

void EditQuickFilterWindowController::addFileExtension(const QString &extension)
{
    m_item->fileExtensions().append(extension);
    reloadExtensions();
}

void EditQuickFilterWindowController::pressedRemove()
{
    const QModelIndexList selected = m_ui->extensionsTable->selectionModel()->selectedRows();
    if (selected.isEmpty())
        return;
    PropertyArray extensions = m_item->fileExtensions();
    if (selected.first().row() < extensions.size())
        extensions.removeAt(selected.first().row());
    reloadExtensions();
}

void EditQuickFilterWindowController::pressedSave()
{
    m_item->setStyle(chosenIndex(m_ui->styleComboBox));
    m_item->setIconSize(chosenIndex(m_ui->iconSizeComboBox));
    m_item->setIconStyle(chosenIndex(m_ui->iconStyleComboBox));
    m_item->setFolderStyle(chosenIndex(m_ui->folderComboBox));
    m_item->setDateMode(chosenIndex(m_ui->dateModeCombo));
    m_item->setDateUnits(chosenIndex(m_ui->dateUnitsCombo));
    m_item->setDateValue(m_ui->dateValuetextField->text().toLongLong());
    // An empty field gives an empty name, not none: a line edit's text is never null.
    m_item->setName(m_ui->nameTextField->text());
    m_item->applyChanges();
    if (m_item->createdItem()) {
        m_data.addQuickFilter(m_item);
        m_item->setCreatedItem(false);
    }
    clearOpen();
    done(Accepted);
    m_notifications.post(NotificationCenter::QuickFilterChanged);
}

void EditQuickFilterWindowController::pressedCancel()
{
    m_item->discardChanges();
    clearOpen();
    done(Rejected);
}

void EditQuickFilterWindowController::reject()
{
    pressedCancel();
}
