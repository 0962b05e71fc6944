#include "app/TerminationSignals.h"

#include <QSocketNotifier>

#include <sys/eventfd.h>
#include <unistd.h>

#include <csignal>

namespace kestrant {

namespace {

volatile std::sig_atomic_t eventDescriptor = -1;

// Only what is safe inside a signal handler.
void onSignal(int signal) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(eventDescriptor, &one, sizeof one);
    // NOLINTNEXTLINE(bugprone-signal-handler): sigaction semantics are given back to the system for the next
    // signal.
    ::signal(signal, SIG_DFL);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> handler, QObject* parent) : QObject(parent) {
    descriptor_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    eventDescriptor = descriptor_;
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, this,
                     [this, handler = std::move(handler)] {
                         std::uint64_t count = 0;
                         if (::read(descriptor_, &count, sizeof count) > 0)
                             handler();
                     });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals() {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::signal(signal, SIG_DFL);
    eventDescriptor = -1;
    ::close(descriptor_);
}

}  // namespace kestrant
