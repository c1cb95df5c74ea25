#include "NoTrayWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

NoTrayWindow::NoTrayWindow(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Brevano"));
    auto *layout = new QVBoxLayout(this);
    auto *text = new QLabel(QStringLiteral(
        "<p><b>Brevano is running, but this desktop shows no tray icons.</b></p>"
        "<p>Tidying goes on as set. To see Brevano's icon and menu, add a notification area "
        "(system tray) to your panel. On GNOME, install the <i>AppIndicator and "
        "KStatusNotifierItem Support</i> extension (Debian and Ubuntu: the package "
        "<tt>gnome-shell-extension-appindicator</tt>) and log in again.</p>"
        "<p>Meanwhile the command line does everything: <tt>brevano --help</tt>.</p>"));
    text->setWordWrap(true);
    text->setTextFormat(Qt::RichText);
    layout->addWidget(text);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
    resize(460, 240);
}
