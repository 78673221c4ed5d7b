#include "app/stop_signals.h"

#include <QSocketNotifier>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace cvd::app {

namespace {

// The write end of the pair: the handler may only make a system call, so it wakes the loop through it.
int g_signal_fd[2] = {-1, -1};

extern "C" void on_stop_signal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(g_signal_fd[0], &byte, 1);
}

} // namespace

StopSignals::StopSignals(QObject* context, std::function<void()> on_stop) : m_on_stop(std::move(on_stop))
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_signal_fd) != 0) {
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(g_signal_fd[1], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, context, [this] {
        char buffer[16];
        while (::read(g_signal_fd[1], buffer, sizeof buffer) > 0) {
        }
        m_on_stop();
    });
    struct sigaction action
    {
    };
    action.sa_handler = on_stop_signal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

StopSignals::~StopSignals()
{
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    m_notifier.reset();
    for (int& fd : g_signal_fd) {
        if (fd >= 0) {
            ::close(fd);
            fd = -1;
        }
    }
}

} // namespace cvd::app
