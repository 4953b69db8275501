#include "StopSignals.h"

#include <signal.h>

#include <initializer_list>

namespace diff {
namespace {

int gReceived = 0;

bool isIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// What is ignored, as by nohup, stays so.
sigset_t waitedFor() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGCHLD);
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        if (!isIgnored(number)) {
            sigaddset(&signals, number);
        }
    }
    return signals;
}

}  // namespace

StopSignals::StopSignals() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &action, nullptr);  // were it ignored, children could not be waited for
    const sigset_t signals = waitedFor();
    sigprocmask(SIG_BLOCK, &signals, &mBefore);
}

StopSignals::~StopSignals() {
    sigprocmask(SIG_SETMASK, &mBefore, nullptr);
}

void StopSignals::wait() {
    const sigset_t signals = waitedFor();
    const int number = sigwaitinfo(&signals, nullptr);
    if (number > 0 && number != SIGCHLD) {
        gReceived = number;
    }
}

int StopSignals::received() {
    return gReceived;
}

}  // namespace diff
