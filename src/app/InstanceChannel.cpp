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

void reply(QLocalSocket &socket, const InstanceChannel::Reply &reply)
{
    QJsonObject message;
    message.insert(QStringLiteral("status"), reply.status);
    message.insert(QStringLiteral("out"), QString::fromUtf8(reply.out));
    message.insert(QStringLiteral("err"), QString::fromUtf8(reply.err));
    socket.write(encode(message));
    socket.flush();
    socket.disconnectFromServer();
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

void InstanceServer::setServing(bool serving)
{
    m_serving = serving;
    while (m_serving && !m_waiting.isEmpty()) {
        const auto [socket, request] = m_waiting.takeFirst();
        answer(socket, request);
    }
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
    const auto message = readMessage(*socket, 5000);
    if (!message) {
        reply(*socket, {2, {}, "brevano: the request could not be read\n"});
        return;
    }
    InstanceChannel::Request request{{}, message->value(QStringLiteral("cwd")).toString()};
    for (const QJsonValue &arg : message->value(QStringLiteral("args")).toArray())
        request.args.append(arg.toString());
    if (m_serving || request.args == QStringList{QStringLiteral("--version")}) {
        answer(socket, request);
        return;
    }
    // Gone before its turn: deleted, and taken out of the line.
    connect(socket, &QObject::destroyed, this, [this, socket] {
        m_waiting.removeIf([socket](const auto &waiting) { return waiting.first == socket; });
    });
    m_waiting.append({socket, request});
}

void InstanceServer::answer(QLocalSocket *socket, const InstanceChannel::Request &request)
{
    reply(*socket, m_handler(request));
}
