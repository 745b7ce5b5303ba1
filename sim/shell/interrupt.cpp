#include "sim/shell/interrupt.h"

#include <signal.h>
#include <unistd.h>

#include <csignal>

namespace fmsim {

namespace {

constexpr int kUntakenLimit = 3;
constexpr int kExitInterrupted = 130;  // 128 + SIGINT, as shells report it

// A signal handler reaches the program only through globals.
std::atomic<bool>* gFlag = nullptr;
volatile std::sig_atomic_t gUntaken = 0;

void onInterrupt(int) {
    if (gFlag != nullptr) gFlag->store(true);
    gUntaken = gUntaken + 1;
    if (gUntaken >= kUntakenLimit) _exit(kExitInterrupted);
}

}  // namespace

void catchInterrupts(std::atomic<bool>& flag) {
    gFlag = &flag;
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no restart: a wait for a key or for input returns at once
    sigaction(SIGINT, &action, nullptr);
}

void interruptTaken() { gUntaken = 0; }

}  // namespace fmsim
