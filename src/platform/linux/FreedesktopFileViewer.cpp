#include "FreedesktopFileViewer.h"

#include "FileNames.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>

namespace {
// A file URI of the name's bytes, so that a name that is not UTF-8 still
// names its item (QUrl would turn such bytes into U+FFFD).
QString fileUri(const QString &path)
{
    return QStringLiteral("file://") +
           QString::fromLatin1(FileNames::encode(path).toPercentEncoding("/"));
}
} // namespace

bool FreedesktopFileViewer::showInFileManager(const QString &method, const QString &path)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QDBusMessage call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                       QStringLiteral("/org/freedesktop/FileManager1"),
                                       QStringLiteral("org.freedesktop.FileManager1"), method);
    call << QStringList{fileUri(path)} << QString();
    return bus.call(call, QDBus::Block, 3000).type() == QDBusMessage::ReplyMessage;
}

bool FreedesktopFileViewer::open(const QString &path)
{
    return QProcess::startDetached(QStringLiteral("xdg-open"), {fileUri(path)});
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
