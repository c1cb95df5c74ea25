#pragma once

#include "ListObjectController.h"

class BrevanoData;
class NotificationCenter;
class QuickFiltersTableModel;

// The quick filters as a list to add to, remove from, open for editing and put
// in order. Rows are reordered by dragging them, or from the keyboard with
// Alt+Up and Alt+Down on the selected row; F2 edits the selected row.
class QuickFiltersListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    QuickFiltersListObjectController(BrevanoData &store, NotificationCenter &notifications,
                                     QWidget *parent = nullptr);

    QuickFiltersTableModel *model() const { return m_model; }

    void reload();
    void updateButtons() override;
    void pressedAdd() override;
    void pressedRemove() override;
    void doubleClickedRow(int row) override;
    // Moves the selected filter one row up (-1) or down (+1).
    void moveSelectedFilter(int step);

private:
    // Edits the filter at row, or a new one when row is -1, in a modal editor.
    void editQuickFilter(int row);

    BrevanoData &m_data;
    NotificationCenter &m_notifications;
    QuickFiltersTableModel *m_model;
};
