#include "host/SignalThread.h"

#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <utility>

#include <mindroid/Log.h>
#include <mindroid/Looper.h>

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

void startTaking() {
    sem_init(&sTaken, 0, 0);
    struct sigaction action = {};
    action.sa_handler = take;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGTERM, SIGINT, SIGUSR1}) sigaction(number, &action, nullptr);
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
    std::thread([=, onUser = std::move(onUser), looper = mindroid::Looper::myLooper(), done = mDone.get_future()] {
        pthread_setname_np(pthread_self(), "signals");
        serve(onUser);
        looper->quit();
        if (done.wait_for(stopTimeout) != std::future_status::ready) endByForce(stopTimeout);
    }).detach();
}

SignalThread::~SignalThread() {
    mDone.set_value();
}
