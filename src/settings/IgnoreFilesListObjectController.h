#pragma once

#include "ListObjectController.h"

class BrevanoData;
class FileChooser;
class RowListModel;

// Every path on the ignore list, whatever its stored value, with Add (a chooser
// of Desktop items) and Remove; changes reach the store at once.
class IgnoreFilesListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    IgnoreFilesListObjectController(BrevanoData &data, FileChooser &chooser,
                                    QWidget *parent = nullptr);

    // Reads the ignore list afresh.
    void rebuildData();
    const QStringList &sortedFilenames() const;

    void pressedAdd() override;
    void pressedRemove() override;

private:
    BrevanoData &m_data;
    FileChooser &m_chooser;
    RowListModel *m_model;
};
