#include "IgnoreFilesListObjectController.h"

#include "AppFolders.h"
#include "BrevanoData.h"
#include "FileChooser.h"
#include "KeyPressAction.h"
#include "RowListModel.h"

#include <QPushButton>
#include <QTableView>

#include <algorithm>

IgnoreFilesListObjectController::IgnoreFilesListObjectController(BrevanoData &store,
                                                                 FileChooser &chooser,
                                                                 QWidget *parent)
    : ListObjectController(QStringLiteral("Ignored files"), parent), m_data(store),
      m_chooser(chooser), m_model(new RowListModel(QStringLiteral("Filename"), this))
{
    buttonAdd()->setToolTip(QStringLiteral("Add items on the Desktop to the ignore list"));
    buttonRemove()->setToolTip(QStringLiteral("Remove the selected items from the ignore list"));
    tableView()->setIconSize(QSize(16, 16));
    // Delete removes the selection, as the Remove button does.
    new KeyPressAction(tableView(), Qt::Key_Delete, [this] { pressedRemove(); });
    setModel(m_model);
    rebuildData();
}

void IgnoreFilesListObjectController::rebuildData()
{
    QStringList paths = m_data.ignoreList().paths();
    std::sort(paths.begin(), paths.end());
    m_model->setPaths(paths);
    updateButtons();
}

const QStringList &IgnoreFilesListObjectController::sortedFilenames() const
{
    return m_model->paths();
}

void IgnoreFilesListObjectController::pressedAdd()
{
    FileChooser::Options options;
    options.title = QStringLiteral("Select Files To Ignore");
    options.directory = AppFolders::desktopFolder();
    options.mode = FileChooser::Mode::FilesAndFolders;
    options.canCreateFolders = false;
    const QStringList chosen = m_chooser.choose(options, this);
    if (!chosen.isEmpty())
        m_data.addIgnoreFiles(chosen);
    rebuildData();
}

void IgnoreFilesListObjectController::pressedRemove()
{
    QStringList paths;
    for (const int row : selectedRows())
        paths.append(m_model->paths().at(row));
    if (paths.isEmpty())
        return;
    m_data.removeIgnoreFiles(paths);
    rebuildData();
}
