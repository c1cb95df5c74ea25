#include "MessageBoxAlertPresenter.h"

#include <QMessageBox>
#include <QPushButton>

int MessageBoxAlertPresenter::runModal(const Alert &alert)
{
    QMessageBox box;
    box.setWindowTitle(QStringLiteral("Brevano"));
    box.setText(alert.title);
    box.setInformativeText(alert.message);
    QList<QPushButton *> buttons;
    for (qsizetype i = 0; i < alert.buttons.size(); ++i) {
        // The last of several answers is the way out; the first is the default.
        const auto role = alert.buttons.size() > 1 && i == alert.buttons.size() - 1
                              ? QMessageBox::RejectRole
                              : QMessageBox::AcceptRole;
        buttons.append(box.addButton(alert.buttons.at(i), role));
    }
    if (!buttons.isEmpty())
        box.setDefaultButton(buttons.first());
    box.exec();
    const qsizetype index = buttons.indexOf(static_cast<QPushButton *>(box.clickedButton()));
    return index < 0 ? int(alert.buttons.size() - 1) : int(index);
}
