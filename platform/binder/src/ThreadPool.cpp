#include "ThreadPool.h"

#include <android/binder_process.h>
#include <pthread.h>

#include "Log.h"
#include "Receiver.h"

namespace binder {
namespace {

using namespace std::chrono_literals;

// How long a handler may hold its peer's control connection before another thread goes on with it.
constexpr auto kStuck = 20ms;
// How long a connection waits for a thread before the log says so.
constexpr auto kPatience = 1s;
constexpr size_t kStack = 512 * 1024;

}  // namespace

void Serving::lend(std::shared_ptr<Connection> connection) {
    std::lock_guard lock(mLock);
    mLent = std::move(connection);
    ++mCall;
}

bool Serving::reclaim() {
    std::lock_guard lock(mLock);
    const bool mine = mLent != nullptr;
    mLent.reset();  // never the last reference: the serving thread has its own
    return mine;
}

std::shared_ptr<Connection> Serving::takeStuck() {
    std::lock_guard lock(mLock);
    if (mLent == nullptr || mSeen != mCall) {
        mSeen = mCall;
        return nullptr;
    }
    return std::move(mLent);
}

ThreadPool& ThreadPool::instance() {
    static auto* const instance = new ThreadPool;  // outlives the threads that still use it at exit
    return *instance;
}

ThreadPool::ThreadPool() {
    Poller::instance().addTicker([this] { return tick(); });
}

bool ThreadPool::setMaxThreads(uint32_t count) {
    std::lock_guard lock(mLock);
    if (mStarted) return false;
    mMax = count;
    return true;
}

void ThreadPool::start() {
    {
        std::lock_guard lock(mLock);
        if (mStarted) return;
        mStarted = true;
        mThreads = mJoined + mMax;
        for (size_t i = 0; i < mReady.size() && mSpawned < mMax; ++i) spawn();
    }
    Poller::instance().wake();
}

void ThreadPool::join() {
    {
        std::lock_guard lock(mLock);
        ++mJoined;
        ++mThreads;
    }
    run();
}

void ThreadPool::spawn() {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes, kStack);
    pthread_t thread{};
    const auto body = [](void* pool) -> void* { static_cast<ThreadPool*>(pool)->run(); };
    const bool isSpawned = pthread_create(&thread, &attributes, body, this) == 0;
    if (isSpawned) {
        ++mSpawned;
    } else if (mSpawned == 0) {
        warn("no binder thread could be started; calls to this process wait");
    }
    mThreads = mJoined + (isSpawned ? mMax : mSpawned);
    pthread_attr_destroy(&attributes);
}

void ThreadPool::enqueue(std::shared_ptr<Connection> connection) {
    std::lock_guard lock(mLock);
    mReady.push_back({std::move(connection), std::chrono::steady_clock::now()});
    mWaiting.store(static_cast<uint32_t>(mReady.size()), std::memory_order_relaxed);
    if (mReady.size() <= mIdle) {
        mWork.notify_one();
    } else if (mStarted && mSpawned < mMax) {
        spawn();
    }
}

bool ThreadPool::mayLinger() const {
    if (mWaiting.load(std::memory_order_relaxed) != 0) return false;
    const uint32_t threads = mThreads.load(std::memory_order_relaxed);
    return threads == 1 || mBusy.load(std::memory_order_relaxed) < threads;
}

bool ThreadPool::isContended() const {
    return mWaiting.load(std::memory_order_relaxed) != 0 &&
           mBusy.load(std::memory_order_relaxed) >= mThreads.load(std::memory_order_relaxed);
}

std::shared_ptr<Connection> ThreadPool::next(std::unique_lock<std::mutex>& lock) {
    ++mIdle;
    mWork.wait(lock, [this] { return !mReady.empty(); });
    --mIdle;
    auto connection = std::move(mReady.front().connection);
    mReady.pop_front();
    if (mReady.empty()) mStallTold = false;
    mBusy.fetch_add(1, std::memory_order_relaxed);
    mWaiting.store(static_cast<uint32_t>(mReady.size()), std::memory_order_relaxed);
    return connection;
}

void ThreadPool::run() {
    Serving serving;
    std::unique_lock lock(mLock);
    mServing.push_back(&serving);
    for (;;) {
        auto connection = next(lock);
        lock.unlock();
        serve(std::move(connection), serving);
        lock.lock();
        mBusy.fetch_sub(1, std::memory_order_relaxed);
    }
}

int ThreadPool::tick() {
    {
        std::lock_guard lock(mLock);
        if (mThreads == 0 || (mBusy == 0 && mReady.empty())) return -1;
    }
    const auto now = std::chrono::steady_clock::now();
    const auto since = now - mLastCheck;
    if (since < kStuck) return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(kStuck - since).count());
    mLastCheck = now;
    std::vector<Serving*> all;
    {
        std::lock_guard lock(mLock);
        all = mServing;
    }
    for (Serving* each : all) {
        if (auto stuck = each->takeStuck()) enqueue(std::move(stuck));
    }
    warnOfStall(now);
    return static_cast<int>(kStuck.count());
}

void ThreadPool::warnOfStall(std::chrono::steady_clock::time_point now) {
    const uint32_t threads = mThreads;
    {
        std::lock_guard lock(mLock);
        if (mStallTold || mReady.empty() || mBusy < threads || now - mReady.front().since < kPatience) return;
        mStallTold = true;
    }
    warn("all %u binder threads are busy: calls wait", threads);
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
