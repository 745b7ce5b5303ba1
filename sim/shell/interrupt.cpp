#include "sim/shell/interrupt.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

namespace fmsim {

namespace {

constexpr int kUntakenLimit = 3;
constexpr int kExitInterrupted = 130;  // 128 + SIGINT, as shells report it

// A signal handler reaches the program only through globals.
std::atomic<bool>* gFlag = nullptr;
std::atomic<int> gUntaken{0};
std::atomic<pthread_t> gMainThread{};

// The kernel may deliver Ctrl-C to any thread, a plug-in's among them; only the main thread's
// wait for a key or for input returns early when the signal lands there, so it is passed on.
void onInterrupt(int signal) {
    const pthread_t main = gMainThread.load();
    if (!pthread_equal(pthread_self(), main)) {
        pthread_kill(main, signal);
        return;
    }
    if (gFlag != nullptr) gFlag->store(true);
    if (gUntaken.fetch_add(1) + 1 >= kUntakenLimit) _exit(kExitInterrupted);
}

}  // namespace

void catchInterrupts(std::atomic<bool>& flag) {
    gFlag = &flag;
    gMainThread.store(pthread_self());
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no restart: a wait for a key or for input returns at once
    sigaction(SIGINT, &action, nullptr);
}

void interruptTaken() { gUntaken.store(0); }

}  // namespace fmsim
