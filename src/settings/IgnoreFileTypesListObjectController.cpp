#include "IgnoreFileTypesListObjectController.h"

#include "RowListModel.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

IgnoreFileTypesListObjectController::IgnoreFileTypesListObjectController(QWidget *parent)
    : ListObjectController(QStringLiteral("Ignored file types"), parent)
{
    const QString unavailable =
        QStringLiteral("Ignoring items by file type is not available in this version.");
    auto *note = new QLabel(unavailable, this);
    note->setObjectName(QStringLiteral("unavailableNote"));
    note->setWordWrap(true);
    static_cast<QVBoxLayout *>(layout())->insertWidget(0, note);
    buttonAdd()->setToolTip(unavailable);
    buttonRemove()->setToolTip(unavailable);
    setModel(new RowListModel(QStringLiteral("File Type"), this));
}
