#pragma once

#include "QuickFilterList.h"
#include "SingleInstance.h"

#include <QDialog>

#include <memory>

class BrevanoData;
class NotificationCenter;
namespace Ui {
class QuickFilter;
}

// Edits one quick filter: its name, how the status menu and the panel show it,
// its date condition and its extensions. Changes go to the filter's working
// copy; Save commits them (and adds a new filter to the store), Cancel, Escape
// and the close button discard them. Extensions are the record's own list, so
// those added or removed stay changed on an existing filter even after Cancel.
// One at a time; run it with exec().
class EditQuickFilterWindowController : public QDialog,
                                        public SingleInstance<EditQuickFilterWindowController>
{
    Q_OBJECT
public:
    // Edits item, a live filter of the store.
    EditQuickFilterWindowController(BrevanoData &store, NotificationCenter &notifications,
                                    QuickFilterList::ItemPointer item, QWidget *parent = nullptr);
    // Makes a new filter, added to the store on Save.
    EditQuickFilterWindowController(BrevanoData &store, NotificationCenter &notifications,
                                    QWidget *parent = nullptr);
    ~EditQuickFilterWindowController() override;

    // The extensions table's one column answers this under Qt::UserRole.
    static inline const QString FilenameColumn = QStringLiteral("FilenameColumn");

    const QuickFilterList::ItemPointer &quickFilterItem() const { return m_item; }

    void updateButtons();
    // Asks for an extension to add.
    void pressedAdd();
    void pressedRemove();
    void pressedSave();
    void pressedCancel();
    void reject() override;

private:
    void addFileExtension(const QString &extension);
    void reloadExtensions();

    std::unique_ptr<Ui::QuickFilter> m_ui;
    BrevanoData &m_data;
    NotificationCenter &m_notifications;
    QuickFilterList::ItemPointer m_item;
};
