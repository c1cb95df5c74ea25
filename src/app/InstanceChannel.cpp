#include "InstanceChannel.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QStandardPaths>

#include <unistd.h>

namespace {
constexpr qint64 kMaxMessage = 64 * 1024 * 1024;

QByteArray encode(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

// One line of JSON, however it arrives in pieces.
std::optional<QJsonObject> readMessage(QLocalSocket &socket, int timeoutMs)
{
    QByteArray data;
    while (!data.contains('\n')) {
        if (!socket.waitForReadyRead(timeoutMs) || data.size() > kMaxMessage)
            return std::nullopt;
        data += socket.readAll();
    }
    const QJsonDocument document = QJsonDocument::fromJson(data.left(data.indexOf('\n')));
    if (!document.isObject())
        return std::nullopt;
    return document.object();
}
} // namespace

QString InstanceChannel::socketPath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + QStringLiteral("/brevano-%1.socket").arg(::getuid());
}

std::optional<InstanceChannel::Reply> InstanceChannel::send(const Request &request, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(2000))
        return std::nullopt;
    QJsonObject message;
    message.insert(QStringLiteral("args"), QJsonArray::fromStringList(request.args));
    message.insert(QStringLiteral("cwd"), request.workingDirectory);
    socket.write(encode(message));
    // A Brevano runs: whatever happens now, the command is its, never run a
    // second time here (it may have moved half of what it was asked to).
    const auto reply =
        socket.waitForBytesWritten(5000) ? readMessage(socket, timeoutMs) : std::nullopt;
    if (!reply)
        return Reply{1,
                     {},
                     "brevano: the running Brevano did not answer; if it stopped, its next "
                     "start finishes what it had begun\n"};
    return Reply{reply->value(QStringLiteral("status")).toInt(2),
                 reply->value(QStringLiteral("out")).toString().toUtf8(),
                 reply->value(QStringLiteral("err")).toString().toUtf8()};
}

InstanceServer::InstanceServer(Handler handler, QObject *parent)
    : QObject(parent), m_handler(std::move(handler))
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection())
            serve(socket);
    });
}

bool InstanceServer::listen()
{
    const QString path = InstanceChannel::socketPath();
    if (m_server.listen(path))
        return true;
    // A socket no one answers on is left from a process that died.
    if (InstanceChannel::send({{QStringLiteral("--version")}, QString()}, 2000))
        return false;
    QLocalServer::removeServer(path);
    return m_server.listen(path);
}

void InstanceServer::serve(QLocalSocket *socket)
{
    socket->setParent(this);
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    const auto request = readMessage(*socket, 5000);
    InstanceChannel::Reply reply{2, {}, "brevano: the request could not be read\n"};
    if (request) {
        QStringList args;
        for (const QJsonValue &arg : request->value(QStringLiteral("args")).toArray())
            args.append(arg.toString());
        reply = m_handler({args, request->value(QStringLiteral("cwd")).toString()});
    }
    QJsonObject message;
    message.insert(QStringLiteral("status"), reply.status);
    message.insert(QStringLiteral("out"), QString::fromUtf8(reply.out));
    message.insert(QStringLiteral("err"), QString::fromUtf8(reply.err));
    socket->write(encode(message));
    socket->flush();
    socket->disconnectFromServer();
}
