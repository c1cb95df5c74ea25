#include "AlreadyRunningWindow.h"

#include "NotificationCenter.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

AlreadyRunningWindow::AlreadyRunningWindow(NotificationCenter &notifications, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Brevano Is Already Running"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    auto *page = new QTextBrowser;
    page->setOpenLinks(false);
    QFile help(QStringLiteral(":/AlreadyRunning.html"));
    if (help.open(QIODevice::ReadOnly))
        page->setHtml(QString::fromUtf8(help.readAll()));
    connect(page, &QTextBrowser::anchorClicked, this,
            [](const QUrl &url) { QDesktopServices::openUrl(url); });
    layout->addWidget(page);
    auto *buttons = new QDialogButtonBox;
    QPushButton *reveal =
        buttons->addButton(QStringLiteral("Reveal Shadow Desktop"), QDialogButtonBox::ActionRole);
    QPushButton *preferences =
        buttons->addButton(QStringLiteral("Preferences..."), QDialogButtonBox::ActionRole);
    preferences->setObjectName(QStringLiteral("preferencesButton"));
    buttons->addButton(QDialogButtonBox::Close);
    // Whoever opens Preferences listens for this; the window need not know who.
    connect(preferences, &QPushButton::clicked, this, [this, &notifications] {
        close();
        notifications.post(NotificationCenter::OpenPreferences);
    });
    connect(reveal, &QPushButton::clicked, this, [this] {
        close();
        emit revealShadowDesktop();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
    resize(520, 420);
}
