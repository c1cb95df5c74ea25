#include "UnixSignalWatcher.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

int UnixSignalWatcher::s_pipe[2] = {-1, -1};

UnixSignalWatcher::UnixSignalWatcher(std::initializer_list<int> signalNumbers, QObject *parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, s_pipe) != 0)
        return;
    m_notifier = new QSocketNotifier(s_pipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        unsigned char number = 0;
        if (::read(s_pipe[1], &number, 1) == 1)
            emit received(number);
    });
    for (int number : signalNumbers) {
        struct sigaction action = {};
        action.sa_handler = &UnixSignalWatcher::handle;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        ::sigaction(number, &action, nullptr);
    }
}

UnixSignalWatcher::~UnixSignalWatcher()
{
    ::signal(SIGTERM, SIG_DFL);
    ::signal(SIGINT, SIG_DFL);
}

// Only async-signal-safe work here: one byte down the pipe.
void UnixSignalWatcher::handle(int signal)
{
    const unsigned char number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(s_pipe[0], &number, 1);
}
