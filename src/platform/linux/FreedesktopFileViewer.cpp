#include "FreedesktopFileViewer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QUrl>

bool FreedesktopFileViewer::showInFileManager(const QString &method, const QString &path)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                       QStringLiteral("/org/freedesktop/FileManager1"),
                                       QStringLiteral("org.freedesktop.FileManager1"), method);
    call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
    return bus.call(call, QDBus::Block, 3000).type() == QDBusMessage::ReplyMessage;
}

bool FreedesktopFileViewer::open(const QString &path)
{
    return QProcess::startDetached(QStringLiteral("xdg-open"), {path});
}

bool FreedesktopFileViewer::reveal(const QString &path)
{
    if (showInFileManager(QStringLiteral("ShowItems"), path))
        return true;
    const qsizetype slash = path.lastIndexOf(u'/');
    return open(slash <= 0 ? QStringLiteral("/") : path.left(slash));
}

bool FreedesktopFileViewer::openFolder(const QString &path)
{
    return showInFileManager(QStringLiteral("ShowFolders"), path) || open(path);
}
