#include "core/SignalQuit.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace tallowmere {

namespace {
// The handler may only write to a descriptor; the main loop reads the other end.
int signalPipe[2] = {-1, -1};

void onSignal(int number)
{
    const unsigned char byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[0], &byte, 1);
}
} // namespace

SignalQuit::SignalQuit(QObject* parent)
    : QObject(parent)
{
    if (signalPipe[0] < 0 && ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, signalPipe) != 0)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(signalPipe[1], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &SignalQuit::drain);

    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

SignalQuit::~SignalQuit()
{
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

void SignalQuit::drain()
{
    unsigned char byte = 0;
    while (::read(signalPipe[1], &byte, 1) == 1) {
        emit signalled(byte);
        QCoreApplication::quit();
    }
}

} // namespace tallowmere
