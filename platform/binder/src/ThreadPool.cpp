#include "ThreadPool.h"

#include "IoThread.h"
#include "Limits.h"
#include "Log.h"

#include <android/binder_process.h>
#include <android/log.h>
#include <binder/peer.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace binder {
namespace {

using Clock = std::chrono::steady_clock;

int inMilliseconds(Clock::duration time) {
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(time).count());
}

// Threads that wait for the same event at most: each byte that arrives before the first one runs wakes one more of
// them.
constexpr uint32_t WAITING = 2;

}  // namespace

ThreadPool& ThreadPool::instance() {
    static auto* const instance = new ThreadPool;  // outlives the threads that still use it at exit
    return *instance;
}

bool ThreadPool::open() {
    const device::MutexLock lock(mLock);
    if (mIsOpen) return true;
    if (!mPoller.open() || !IoThread::instance().start()) return false;
    IoThread::instance().addTicker([] { return ThreadPool::instance().tick(); });
    mIsOpen = true;
    return true;
}

bool ThreadPool::setMaxThreads(uint32_t count) {
    const device::MutexLock lock(mLock);
    if (mStarted) return false;
    mMax = count;
    return true;
}

void ThreadPool::start() {
    if (mStarted.exchange(true)) return;
    mMayGrow = true;
    if (open()) return spawn();
    warn("no binder threads for now: %s", strerror(errno));
    mStartFailed = true;
    mIsWatched = true;  // by the I/O thread, as soon as open() can start it
}

void ThreadPool::join() {
    if (!open()) __android_log_assert(nullptr, "Binder", "no binder threads: %s", strerror(errno));
    ++mThreads;
    run();
}

uint32_t ThreadPool::idle() {
    const device::MutexLock lock(mLock);
    return mIdle + mParked;
}

uint32_t ThreadPool::limit() {
    const device::MutexLock lock(mLock);
    const uint32_t own = mStarted ? mMax + 1 : 0;
    return own + mThreads - mSpawned;
}

void ThreadPool::run() {
    for (;;) {
        if (mIdle.fetch_add(1) >= WAITING) park();
        const auto ready = mPoller.wait(-1);
        mTurns.fetch_add(1, std::memory_order_relaxed);
        // Before user's code: somebody else has to wait now.
        if (mIdle.fetch_sub(1) == 1) promote();
        ready.report();
    }
}

// Sleeps until it is needed to wait.
void ThreadPool::park() {
    device::MutexLock lock(mLock);
    if (mIdle.fetch_sub(1) > 1) {
        ++mParked;
        while (mPromoted == 0) lock.wait(mPromotion);
        --mPromoted;
    }
    mIdle.fetch_add(1);
}

void ThreadPool::promote() {
    {
        const device::MutexLock lock(mLock);
        if (mParked != 0) {
            --mParked;
            ++mPromoted;
            return mPromotion.notify_one();
        }
    }
    mMayGrow ? spawn() : watch();
}

void ThreadPool::spawn() {
    const auto body = [](void* pool) -> void* { static_cast<ThreadPool*>(pool)->run(); };
    const device::MutexLock lock(mLock);
    if (!mMayGrow) return;
    const int error = startThread("binder", body, this);
    mStartFailed = error != 0;
    if (error != 0) {
        warn("a binder thread cannot be started: %s", strerror(error));
        return watch();
    }
    ++mThreads;
    mMayGrow = ++mSpawned <= mMax;
}

void ThreadPool::watch() {
    if (!mIsWatched.exchange(true)) IoThread::instance().wake();
}

// A thread that could not be started is tried again; when no thread comes back while calls wait, the log says so.
int ThreadPool::tick() {
    if (!mIsWatched) return -1;
    if (mStartFailed && mIdle == 0) spawn();
    if (mStartFailed && mIdle == 0) return inMilliseconds(RETRY_TIME);
    const auto now = Clock::now();
    const uint32_t turns = mTurns;
    const bool isNew = turns != mSeenTurns || mSeen == Clock::time_point();
    if (!isNew && now - mSeen < STALL_TIME) return inMilliseconds(STALL_TIME - (now - mSeen));
    if (!isNew && !mStallTold && mIdle == 0 && mPoller.hasReady()) {
        warn("all %u binder threads are busy: calls wait", mThreads.load());
        mStallTold = true;
    }
    if (isNew) mStallTold = false;
    mSeenTurns = turns;
    mSeen = now;
    if (mIdle == 0 || isNew) return inMilliseconds(STALL_TIME);
    mIsWatched = false;
    return -1;
}

}  // namespace binder

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    return binder::ThreadPool::instance().setMaxThreads(numThreads);
}

void ABinderProcess_startThreadPool() {
    binder::ThreadPool::instance().start();
}

void ABinderProcess_joinThreadPool() {
    binder::ThreadPool::instance().join();
}

void ABinderProcess_getThreadUsage(uint32_t* threads, uint32_t* idle, uint32_t* limit) {
    *threads = binder::ThreadPool::instance().threads();
    *idle = binder::ThreadPool::instance().idle();
    *limit = binder::ThreadPool::instance().limit();
}
