#pragma once

#include "Poller.h"

#include <device/Mutex.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace binder {

// The one thread that waits for what no call waits for: names, hellos, output that a peer does not read yet, time. It
// runs no user's code and never blocks on a peer. Thread: any.
class IoThread {
public:
    // Milliseconds until it wants to run next; negative: when something else happens.
    using Ticker = int (*)();

    static IoThread& instance();

    // Starts the thread unless it runs. False, with errno, when the system refuses; nothing else may be called then.
    [[nodiscard]] bool start();
    [[nodiscard]] Poller& poller() { return mPoller; }
    // To be called by the thread whenever it woke up. There may be four; one that is known is not added again.
    void addTicker(Ticker ticker);
    // Makes it ask its tickers again.
    void wake() const;

private:
    [[noreturn]] void run();
    [[nodiscard]] int tick();

    Poller mPoller;
    std::shared_ptr<Pollable> mWake;
    device::Mutex mLock;
    bool mStarted SUBSYS_GUARDED_BY(mLock) = false;
    std::array<std::atomic<Ticker>, 4> mTickers{};
};

// Starts a thread of this library; 0, or the error.
[[nodiscard]] int startThread(const char* name, void* (*body)(void*), void* argument);

}  // namespace binder
