#pragma once

#include <QWidget>

class QAbstractItemModel;
class QModelIndex;
class QPushButton;
class QTableView;

// A table with Add and Remove buttons under it. Remove is enabled only while a
// row is selected unless a subclass says otherwise; double clicks on rows and
// the buttons go to the subclass.
class ListObjectController : public QWidget
{
    Q_OBJECT
public:
    // name is what assistive technology calls the table ("Ignored files").
    explicit ListObjectController(const QString &name, QWidget *parent = nullptr);

    QTableView *tableView() const { return m_table; }
    QPushButton *buttonAdd() const { return m_buttonAdd; }
    QPushButton *buttonRemove() const { return m_buttonRemove; }

    // The selected rows, ascending; the current row first when one must be chosen.
    QList<int> selectedRows() const;
    int selectedRow() const;

    virtual void updateButtons();
    virtual void pressedAdd() {}
    virtual void pressedRemove() {}
    virtual void doubleClickedRow(int row) { Q_UNUSED(row); }

protected:
    // Shows model in the table and follows its selection; the model is not taken.
    void setModel(QAbstractItemModel *model);

private:
    QTableView *m_table;
    QPushButton *m_buttonAdd;
    QPushButton *m_buttonRemove;
};
