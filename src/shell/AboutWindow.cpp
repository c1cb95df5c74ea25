#include "AboutWindow.h"

#include "BrevanoData.h"
#include "StatusIcons.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

AboutWindow::AboutWindow(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("About Brevano"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    auto *icon = new QLabel;
    icon->setPixmap(StatusIcons::icon(QStringLiteral("brevano.svg")).pixmap(64, 64));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);
    auto *text = new QLabel(
        QStringLiteral(
            "<h2>Brevano</h2><p>Version %1</p><p>Keeps your Desktop clear by moving what "
            "lies on it to the Shadow Desktop, from where it can be found, opened, "
            "restored or sent to the Trash.</p><p>Built with Qt %2.</p>")
            .arg(BrevanoData::getAppVersion(), QString::fromLatin1(qVersion())));
    text->setAlignment(Qt::AlignCenter);
    text->setWordWrap(true);
    layout->addWidget(text);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
    resize(360, 300);
}
