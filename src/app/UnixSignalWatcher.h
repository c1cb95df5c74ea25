#pragma once

#include <QObject>

#include <initializer_list>

class QSocketNotifier;

// Turns SIGTERM and SIGINT (a session logging out, Ctrl+C) into a Qt signal on
// the main loop, so that quitting takes its orderly way.
class UnixSignalWatcher : public QObject
{
    Q_OBJECT
public:
    explicit UnixSignalWatcher(std::initializer_list<int> signalNumbers, QObject *parent = nullptr);
    ~UnixSignalWatcher() override;

signals:
    void received(int signal);

private:
    static void handle(int signal);
    static int s_pipe[2];
    QSocketNotifier *m_notifier = nullptr;
};
