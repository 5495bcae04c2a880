#include "host/SignalThread.h"

#include <mindroid/Log.h>
#include <mindroid/Looper.h>

#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <utility>

namespace {

// All that a signal handler may touch. The signals are not blocked, so that a debugger stops at them.
sem_t sTaken;
std::atomic<bool> sStop = false;
std::atomic<bool> sUser = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void take(int number) {
    (number == SIGUSR1 ? sUser : sStop) = true;
    sem_post(&sTaken);
}

constexpr int SIGNALS[] = {SIGTERM, SIGINT, SIGUSR1};

void startTaking() {
    sem_init(&sTaken, 0, 0);
    struct sigaction action = {};
    action.sa_handler = take;
    action.sa_flags = SA_RESTART;
    for (const int number : SIGNALS) sigaction(number, &action, nullptr);
}

// ThreadSanitizer calls no handler while the thread is in a system call that it doesn't know, as that of a message
// loop. There, this thread and those that it starts leave the signals to the one that is started already.
void leaveToOthersUnderThreadSanitizer() {
#if defined(__SANITIZE_THREAD__)
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : SIGNALS) sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
#endif
}

// Returns when the process shall stop.
void serve(const std::function<void()>& onUser) {
    while (!sStop) {
        if (sem_wait(&sTaken) == 0 && sUser.exchange(false)) onUser();
    }
}

[[noreturn]] void endByForce(std::chrono::milliseconds waited) {
    mindroid::Log::e("subsysd", "the main thread is stuck: ended by force %lld ms after the signal",
                     static_cast<long long>(waited.count()));
    _exit(SignalThread::EXIT_STUCK);
}

}  // namespace

SignalThread::SignalThread(std::chrono::milliseconds stopTimeout, std::function<void()> onUser) {
    startTaking();
    // Where no signal comes, the thread outlives this object and waits on.
    std::thread thread(
        [=, onUser = std::move(onUser), looper = mindroid::Looper::myLooper(), done = mDone.get_future()] {
            serve(onUser);
            looper->quit();
            if (done.wait_for(stopTimeout) != std::future_status::ready) endByForce(stopTimeout);
        });
    pthread_setname_np(thread.native_handle(), "signals");
    thread.detach();
    leaveToOthersUnderThreadSanitizer();
}

SignalThread::~SignalThread() {
    mDone.set_value();
}
