#pragma once

#include "Poller.h"

#include <device/Mutex.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>

namespace binder {

// The binder threads. Two wait on one poller; the one that an event wakes runs what it brings, user's code included,
// while the other goes on waiting. Whoever leaves nobody waiting wakes one that sleeps, or starts one more, up to the
// maximum. Thread: any.
class ThreadPool {
public:
    static ThreadPool& instance();

    // Before anything else. False, with errno, when the system refuses; it may be tried again.
    [[nodiscard]] bool open();
    // What the threads serve. What is ready waits there while no thread is free.
    [[nodiscard]] Poller& poller() { return mPoller; }

    [[nodiscard]] bool setMaxThreads(uint32_t count);
    void start();
    [[noreturn]] void join();

    [[nodiscard]] uint32_t threads() const { return mThreads; }
    // Those that run no call.
    [[nodiscard]] uint32_t idle();
    // How many there may be.
    [[nodiscard]] uint32_t limit();

private:
    ThreadPool() = default;
    [[noreturn]] void run();
    void park();
    void promote();
    void spawn();
    // Has the I/O thread look at the pool while no thread is free.
    void watch();
    [[nodiscard]] int tick();

    Poller mPoller;
    device::Mutex mLock;
    uint32_t mMax SUBSYS_GUARDED_BY(mLock) = 15;     // threads started on demand, the first one not counted
    uint32_t mSpawned SUBSYS_GUARDED_BY(mLock) = 0;  // the first one counted
    uint32_t mParked SUBSYS_GUARDED_BY(mLock) = 0;
    uint32_t mPromoted SUBSYS_GUARDED_BY(mLock) = 0;  // that have not noticed yet
    std::condition_variable mPromotion;
    bool mIsOpen SUBSYS_GUARDED_BY(mLock) = false;
    std::atomic<bool> mMayGrow{false};  // started, and not all threads are there
    std::atomic<bool> mStarted{false};
    std::atomic<uint32_t> mThreads{0};  // that run, joined ones counted
    std::atomic<uint32_t> mIdle{0};     // that wait on the poller
    std::atomic<uint32_t> mTurns{0};    // times that a thread was woken
    std::atomic<bool> mIsWatched{false};
    std::atomic<bool> mStartFailed{false};
    uint32_t mSeenTurns = 0;  // the I/O thread's
    bool mStallTold = false;
    std::chrono::steady_clock::time_point mSeen;
};

}  // namespace binder
