#pragma once

#include <QLocalServer>
#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

// One Brevano per user: the running application listens on a socket in the
// user's runtime folder; a second start hands its command (or, with none, a
// "reopen") to it and prints what comes back.
class InstanceChannel
{
public:
    struct Request
    {
        QStringList args; // empty: reopen
        QString workingDirectory;
    };
    struct Reply
    {
        int status = 0;
        QByteArray out;
        QByteArray err;
    };

    static QString socketPath();
    // The running application's reply, or nothing when none is running. One
    // that takes the request and then stops or does not answer in time gives
    // a failure that says so.
    static std::optional<Reply> send(const Request &request, int timeoutMs = 600000);
};

class InstanceServer : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<InstanceChannel::Reply(const InstanceChannel::Request &)>;

    explicit InstanceServer(Handler handler, QObject *parent = nullptr);
    // False when another instance already listens.
    bool listen();
    // Until it serves, requests wait in line (the application is still
    // starting up) and are answered in order once it does; only "--version",
    // which tells that this instance lives, is answered at once.
    void setServing(bool serving);

private:
    void answer(class QLocalSocket *socket, const InstanceChannel::Request &request);
    void serve(class QLocalSocket *socket);

    Handler m_handler;
    QLocalServer m_server;
    bool m_serving = true;
    QList<std::pair<class QLocalSocket *, InstanceChannel::Request>> m_waiting;
};
