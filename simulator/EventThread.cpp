#include "simulator/EventThread.h"

#include <pthread.h>

#include <thread>
#include <utility>

namespace simulator {

EventThread::EventThread() {
    std::thread([this] { run(); }).detach();
}

void EventThread::post(int64_t delayMillis, Task task) {
    const device::MutexLock lock(mLock);
    mTasks.emplace(Clock::now() + std::chrono::milliseconds(delayMillis), std::move(task));
    mWake.notify_one();
}

void EventThread::run() {
    pthread_setname_np(pthread_self(), "icc events");
    for (;;) waitForNext()();
}

EventThread::Task EventThread::waitForNext() {
    device::MutexLock lock(mLock);
    for (;;) {
        if (mTasks.empty()) {
            lock.wait(mWake);
        } else if (mTasks.begin()->first > Clock::now()) {
            lock.waitUntil(mWake, mTasks.begin()->first);
        } else {
            return std::move(mTasks.extract(mTasks.begin()).mapped());
        }
    }
}

}  // namespace simulator
