#include "ViewOptionsPopoverViewController.h"

#include "QuickFilterItem.h"
#include "ui_ViewOptionsPopoverViewController.h"

#include <QKeyEvent>
#include <QRegularExpressionValidator>

namespace {

// The combo's choice, or fallback when it shows none (a stored value beyond its list).
quint32 chosen(const QComboBox *combo, quint32 fallback)
{
    return combo->currentIndex() >= 0 ? quint32(combo->currentIndex()) : fallback;
}

bool isReturn(const QKeyEvent *key)
{
    return key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
}

} // namespace

ViewOptionsPopoverViewController::ViewOptionsPopoverViewController(QuickFilterItem &quickFilterItem,
                                                                   QWidget *parent)
    : QFrame(parent), m_ui(std::make_unique<Ui::ViewOptionsPopoverViewController>()),
      m_item(quickFilterItem)
{
    m_ui->setupUi(this);
    m_ui->titletextField->setText(QStringLiteral("%1 View Options").arg(m_item.getName()));
    m_ui->styleComboBox->setCurrentIndex(int(m_item.getStyle()));
    m_ui->iconSizeComboBox->setCurrentIndex(int(m_item.getIconSize()));
    m_ui->folderComboBox->setCurrentIndex(int(m_item.getFolderStyle()));
    m_ui->iconStyleComboBox->setCurrentIndex(int(m_item.getIconStyle()));
    m_ui->dateModeCombo->setCurrentIndex(int(m_item.getDateMode()));
    m_ui->dateUnitsCombo->setCurrentIndex(int(m_item.getDateUnits()));
    // A count of units: digits only, no more than a 64-bit value holds.
    m_ui->dateValuetextField->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{1,18}")), m_ui->dateValuetextField));
    m_ui->dateValuetextField->setText(QString::number(m_item.getDateValue()));
    updateButtons();

    connect(m_ui->dateModeCombo, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            m_item.setDateMode(quint32(index));
        updateButtons();
    });
    connect(m_ui->buttonSave, &QPushButton::clicked, this,
            &ViewOptionsPopoverViewController::pressedSave);
    connect(m_ui->buttonCancel, &QPushButton::clicked, this,
            &ViewOptionsPopoverViewController::pressedCancel);
}

ViewOptionsPopoverViewController::~ViewOptionsPopoverViewController() = default;

void ViewOptionsPopoverViewController::updateButtons()
{
    const bool dated = m_item.getDateMode() != QuickFilterItem::DateModeNone;
    m_ui->dateUnitsCombo->setEnabled(dated);
    m_ui->dateValuetextField->setEnabled(dated);
}

void ViewOptionsPopoverViewController::pressedSave()
{
    m_item.setStyle(chosen(m_ui->styleComboBox, m_item.getStyle()));
    m_item.setIconSize(chosen(m_ui->iconSizeComboBox, m_item.getIconSize()));
    m_item.setIconStyle(chosen(m_ui->iconStyleComboBox, m_item.getIconStyle()));
    m_item.setFolderStyle(chosen(m_ui->folderComboBox, m_item.getFolderStyle()));
    m_item.setDateMode(chosen(m_ui->dateModeCombo, m_item.getDateMode()));
    m_item.setDateUnits(chosen(m_ui->dateUnitsCombo, m_item.getDateUnits()));
    // An emptied field keeps the value it showed.
    bool isNumber = false;
    const qint64 value = m_ui->dateValuetextField->text().toLongLong(&isNumber);
    if (isNumber)
        m_item.setDateValue(value);
    m_item.applyChanges();
    emit applyViewOptionsChange(&m_item);
}

void ViewOptionsPopoverViewController::pressedCancel()
{
    emit cancelViewOptionsChange();
}

bool ViewOptionsPopoverViewController::event(QEvent *event)
{
    // Return and Escape belong to this frame while the focus is in it, before
    // any shortcut of the window (the panel closes on Escape).
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->modifiers() == Qt::NoModifier || key->modifiers() == Qt::KeypadModifier) {
            if (key->key() == Qt::Key_Escape || isReturn(key)) {
                event->accept();
                return true;
            }
        }
    }
    return QFrame::event(event);
}

void ViewOptionsPopoverViewController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        pressedCancel();
        event->accept();
    } else if (isReturn(event)) {
        pressedSave();
        event->accept();
    } else {
        QFrame::keyPressEvent(event);
    }
}
