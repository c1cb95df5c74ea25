#include "MessageBoxAlertPresenter.h"

#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>

namespace {
// Escape and the window's close button put the box away without an answer; a
// plain message box takes either as a click on its way-out button.
class DismissableMessageBox : public QMessageBox
{
protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->matches(QKeySequence::Cancel))
            reject();
        else
            QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent *event) override { QDialog::closeEvent(event); }
};
} // namespace

int MessageBoxAlertPresenter::runModal(const Alert &alert)
{
    DismissableMessageBox box;
    // Above the panel, which stays on top of other windows.
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
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
    return index < 0 ? Dismissed : int(index);
}
