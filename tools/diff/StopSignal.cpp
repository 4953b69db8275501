#include "StopSignal.h"

#include <signal.h>

#include <initializer_list>

namespace diff {
namespace {

volatile sig_atomic_t gReceived = 0;

void note(int number) {
    gReceived = number;
}

void handleBy(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction before {};
        // What is ignored, as by nohup, stays so.
        if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
            sigaction(number, &action, nullptr);
        }
    }
}

}  // namespace

StopSignals::StopSignals() {
    handleBy(note);
}

StopSignals::~StopSignals() {
    handleBy(SIG_DFL);
}

int StopSignals::received() {
    return gReceived;
}

}  // namespace diff
