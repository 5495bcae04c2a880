#include "Deferral.h"

#include "IoThread.h"
#include "Limits.h"
#include "Outbox.h"
#include "Session.h"

#include <device/LoopThread.h>

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace binder {
namespace {

// The channels with calls that wait for a loop to have nothing to run.
class DeferredTo final : public device::LoopOutput {
public:
    void flush() override {
        isWaiting = false;
        for (const auto& each : mOutboxes) each->flushDeferred();
        mOutboxes.clear();
    }
    void add(const std::shared_ptr<Outbox>& outbox) {
        if (std::find(mOutboxes.begin(), mOutboxes.end(), outbox) == mOutboxes.end()) mOutboxes.push_back(outbox);
        isWaiting = true;
    }

private:
    std::vector<std::shared_ptr<Outbox>> mOutboxes;
};

class Timer final : public Pollable {
public:
    // False when the system refuses.
    [[nodiscard]] bool start() {
        if (mIsRunning.exchange(true)) return true;
        itimerspec time{};
        time.it_value.tv_nsec = std::chrono::nanoseconds(DEFERRAL).count();
        mIsRunning = timerfd_settime(mFd.get(), 0, &time, nullptr) == 0;
        return mIsRunning;
    }

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t) override {
        uint64_t count = 0;
        [[maybe_unused]] const ssize_t size = read(mFd.get(), &count, sizeof(count));
        mIsRunning = false;  // before the calls that came meanwhile are written
        Session::flushAll();
    }
    void onNoMemory() override {}

    PollKey key = 0;

private:
    const UniqueFd mFd{timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)};
    std::atomic<bool> mIsRunning{false};
};

// Null when the system refuses one.
Timer* timer() {
    static const auto* const instance = [] {
        auto* const timer = new auto(std::make_shared<Timer>());  // outlives all threads
        if ((*timer)->fd() >= 0) (void)IoThread::instance().poller().add(*timer, EPOLLIN, (*timer)->key);
        return timer;
    }();
    return (*instance)->key == 0 ? nullptr : instance->get();
}

}  // namespace

bool mayDefer(const std::shared_ptr<Outbox>& outbox) {
    device::LoopThread* const loop = device::LoopThread::current();
    if (loop == nullptr || !loop->hasMore) return false;
    if (loop->output == nullptr) loop->output = std::make_unique<DeferredTo>();
    static_cast<DeferredTo&>(*loop->output).add(outbox);
    return true;
}

bool startDeferral() {
    Timer* const running = timer();
    return running != nullptr && running->start();
}

}  // namespace binder
