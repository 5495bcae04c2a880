#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "Connection.h"

namespace binder {

// A connection that a binder thread serves. While the thread runs a peer's oneway call, the watchdog may take the
// connection away and give it to another thread, so that a handler that blocks holds up nobody else's calls.
class Serving {
public:
    void lend(std::shared_ptr<Connection> connection);
    // False when the watchdog took it.
    [[nodiscard]] bool reclaim();
    // Null unless the same call was running the last time this was asked.
    [[nodiscard]] std::shared_ptr<Connection> takeStuck();

private:
    std::mutex mLock;
    std::shared_ptr<Connection> mLent;
    uint64_t mCall = 0;
    uint64_t mSeen = 0;
};

// The binder threads. Thread: any.
class ThreadPool {
public:
    static ThreadPool& instance();

    [[nodiscard]] bool setMaxThreads(uint32_t count);
    void start();
    [[noreturn]] void join();

    // Gives a connection to a thread; it waits while the pool is not started or all of them are busy.
    void enqueue(std::shared_ptr<Connection> connection);
    // Whether a thread may go on waiting on its quiet connection: nobody waits for a thread, and another one is free.
    [[nodiscard]] bool mayLinger() const;
    // Whether a connection waits and no thread is free for it.
    [[nodiscard]] bool isContended() const;

private:
    struct Ready {
        std::shared_ptr<Connection> connection;
        std::chrono::steady_clock::time_point since;
    };

    ThreadPool();
    void spawn();
    [[noreturn]] void run();
    std::shared_ptr<Connection> next(std::unique_lock<std::mutex>& lock);
    int tick();
    void warnOfStall(std::chrono::steady_clock::time_point now);

    std::mutex mLock;
    std::condition_variable mWork;
    std::deque<Ready> mReady;
    std::vector<Serving*> mServing;
    uint32_t mMax = 15;
    uint32_t mSpawned = 0;
    uint32_t mJoined = 0;
    uint32_t mIdle = 0;
    bool mStarted = false;
    bool mStallTold = false;  // since a connection waits

    std::atomic<uint32_t> mThreads{0};  // that there may be, joined ones included; that there are when one fails
    std::atomic<uint32_t> mBusy{0};
    std::atomic<uint32_t> mWaiting{0};
    std::chrono::steady_clock::time_point mLastCheck;
};

}  // namespace binder
