#include "host/SignalWaiter.h"

#include <signal.h>
#include <unistd.h>

#include <thread>
#include <utility>

#include <mindroid/Log.h>
#include <mindroid/Looper.h>

namespace {

void waitForSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    int which = 0;
    sigwait(&signals, &which);
}

}  // namespace

SignalWaiter::SignalWaiter() {
    // Where no signal comes, the thread outlives this object and waits on.
    std::thread([looper = mindroid::Looper::myLooper(), done = mDone.get_future()] {
        waitForSignal();
        looper->quit();
        if (done.wait_for(LIMIT) == std::future_status::ready) return;
        mindroid::Log::e("subsysd", "the main thread is stuck: ended by force %d s after the signal",
                         static_cast<int>(LIMIT.count()));
        _exit(EXIT_STUCK);
    }).detach();
}

SignalWaiter::~SignalWaiter() {
    mDone.set_value();
}
