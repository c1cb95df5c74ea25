#include "QtFileChooser.h"

#include "FileNames.h"

#include <QFileDialog>
#include <QFileSystemModel>
#include <QListView>

namespace {

// Qt's dialog takes either files or one folder; this one takes several items of
// both kinds: whatever is selected in its list when Open is pressed. It runs in
// the mode for existing files, whose Open button stays enabled for folders too
// (in the folder mode it is off while a file is selected first); a folder is
// entered by a double click.
class FilesAndFoldersDialog : public QFileDialog
{
public:
    using QFileDialog::QFileDialog;

    void allowManyOfAnyKind() { setFileMode(QFileDialog::ExistingFiles); }
    QStringList chosen() const { return m_chosen; }

    void accept() override
    {
        if (fileMode() != QFileDialog::ExistingFiles) {
            QFileDialog::accept();
            return;
        }
        QStringList paths;
        if (const auto *view = findChild<QListView *>(QStringLiteral("listView"))) {
            for (const QModelIndex &index : view->selectionModel()->selectedRows())
                paths.append(index.data(QFileSystemModel::FilePathRole).toString());
        }
        if (paths.isEmpty()) // a name typed rather than chosen
            paths = selectedFiles();
        paths.removeAll(QString());
        if (paths.isEmpty())
            return;
        m_chosen = paths;
        QDialog::accept();
    }

private:
    QStringList m_chosen;
};

// Qt decodes names as UTF-8 and shows other bytes as U+FFFD, while the rest of
// Brevano keeps such names whole: each path is mapped back to its item. One
// that cannot be (no item, or several, shows so) is left out, since it would
// name a missing item, or perhaps the wrong one, to be ignored or made the
// Shadow Desktop.
QStringList realPaths(const QStringList &paths)
{
    QStringList real;
    for (const QString &path : paths) {
        const QString resolved = FileNames::resolveQtDecoded(path);
        if (!resolved.isNull())
            real.append(resolved);
    }
    return real;
}

} // namespace

QStringList QtFileChooser::choose(const Options &options, QWidget *parent)
{
    FilesAndFoldersDialog dialog(parent, options.title, options.directory);
    // Qt's own dialog everywhere: the many-kinds selection needs its views, and
    // tests and screen readers then meet the same window on every desktop.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setOption(QFileDialog::ReadOnly, !options.canCreateFolders);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    if (options.mode == Mode::OneFolder) {
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
    } else {
        dialog.allowManyOfAnyKind();
    }
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return realPaths(options.mode == Mode::OneFolder ? dialog.selectedFiles().mid(0, 1)
                                                     : dialog.chosen());
}
