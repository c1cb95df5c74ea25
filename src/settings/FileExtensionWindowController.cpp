#include "FileExtensionWindowController.h"

#include "NotificationCenter.h"
#include "ui_Extension.h"

FileExtensionWindowController::FileExtensionWindowController(NotificationCenter &notifications,
                                                             const QString &extension,
                                                             QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::Extension>()), m_notifications(notifications)
{
    m_ui->setupUi(this);
    m_ui->nameTextField->setText(extension);
    connect(m_ui->buttonSave, &QPushButton::clicked, this,
            &FileExtensionWindowController::pressedSave);
    connect(m_ui->buttonCancel, &QPushButton::clicked, this,
            &FileExtensionWindowController::pressedCancel);
    markOpen(this);
}

FileExtensionWindowController::~FileExtensionWindowController() = default;

QString FileExtensionWindowController::extension() const
{
    return m_ui->nameTextField->text();
}

void FileExtensionWindowController::pressedSave()
{
    QString extension = m_ui->nameTextField->text();
    extension.remove(u'.').remove(u' ');
    m_notifications.post(NotificationCenter::AddFileExtension, extension.toLower());
    clearOpen();
    done(1);
}

void FileExtensionWindowController::pressedCancel()
{
    clearOpen();
    done(0);
}

void FileExtensionWindowController::reject()
{
    pressedCancel();
}
