#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "UniqueFd.h"

namespace binder {

// A descriptor that the poller watches. Each interest is reported once; it is armed again when wanted again.
class Pollable : public std::enable_shared_from_this<Pollable> {
public:
    virtual ~Pollable() = default;
    [[nodiscard]] virtual int fd() const = 0;
    // `interest` that became true, EPOLLIN or EPOLLOUT; an error counts as both. Runs on the poller's thread.
    virtual void onReady(uint32_t interest) = 0;

private:
    friend class Poller;
    std::mutex mArmLock;
    uint32_t mArmed = 0;
};

// The one thread that waits for everything nobody else waits for: listening sockets, connections that are quiet or
// stalled, queues that could not be written. It runs no user's code and never blocks on a peer. Thread: any.
class Poller {
public:
    // Milliseconds until it wants to run next; negative: when something else happens.
    using Ticker = std::function<int()>;

    // Started by the first use.
    static Poller& instance();

    // To be called by the poller's thread whenever it woke up.
    void addTicker(Ticker ticker);
    // Keeps `pollable` until it is removed. False when the system refuses.
    [[nodiscard]] bool add(const std::shared_ptr<Pollable>& pollable, uint32_t interest);
    void arm(Pollable& pollable, uint32_t interest);
    void remove(Pollable& pollable);
    // Makes it ask its tickers again.
    void wake();

private:
    Poller();
    [[noreturn]] void run();
    int tick();
    void report(int fd, uint32_t events);

    UniqueFd mEpoll;
    UniqueFd mWake;
    std::mutex mLock;
    std::unordered_map<int, std::shared_ptr<Pollable>> mPollables;
    std::vector<Ticker> mTickers;
};

}  // namespace binder
