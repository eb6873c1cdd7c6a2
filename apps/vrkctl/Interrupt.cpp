#include "apps/vrkctl/Interrupt.h"

#include <csignal>
#include <initializer_list>

namespace vrk {

namespace {
volatile std::sig_atomic_t raised = 0;
std::function<void()> handlerOfOwner;

void onRaised(int) {
    raised = 1;
    if (handlerOfOwner)
        handlerOfOwner();
}

void handle(void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (const int number : {SIGINT, SIGTERM})
        sigaction(number, &action, nullptr);
}
} // namespace

Interrupt::Interrupt(std::function<void()> onSignal) {
    raised = 0;
    handlerOfOwner = std::move(onSignal);
    handle(onRaised, static_cast<int>(SA_RESETHAND));
}

Interrupt::~Interrupt() {
    handle(SIG_DFL, 0);
    handlerOfOwner = nullptr;
}

bool Interrupt::requested() const {
    return raised != 0;
}

} // namespace vrk
