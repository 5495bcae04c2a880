#pragma once

#include "tests/support/Threads.h"

#include <mindroid/Handler.h>
#include <mindroid/Looper.h>
#include <mindroid/Message.h>
#include <mindroid/SystemClock.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace test {

inline constexpr int32_t QUIT = -1;

// Counts its own deaths.
class Mortal : public mindroid::Object {
public:
    explicit Mortal(std::atomic<int>& deaths, std::function<void()> atDeath = nullptr)
        : mDeaths(deaths), mAtDeath(std::move(atDeath)) {}
    ~Mortal() override {
        ++mDeaths;
        if (mAtDeath) mAtDeath();
    }

private:
    std::atomic<int>& mDeaths;
    const std::function<void()> mAtDeath;
};

// Notes each message; QUIT ends the loop, every other one runs the action.
class Probe : public mindroid::Handler {
public:
    using Handler::Handler;

    void handleMessage(const mindroid::sp<mindroid::Message>& message) override {
        if (message->what == QUIT) return mindroid::Looper::myLooper()->quit();
        seen.push_back(message->what);
        if (action) action(message);
    }

    std::vector<int32_t> seen;
    std::function<void(const mindroid::sp<mindroid::Message>&)> action;
};

inline bool send(const mindroid::sp<mindroid::Handler>& handler, int32_t what) {
    return handler->obtainMessage(what)->sendToTarget();
}

// Not due before the test has ended.
inline bool sendLater(const mindroid::sp<mindroid::Handler>& handler, const mindroid::sp<mindroid::Message>& message) {
    return handler->sendMessageAtTime(message, mindroid::SystemClock::uptimeMillis() + 60'000);
}

// Sets up on a new thread that has a looper, runs the loop until something quits it, and returns. A set-up whose own
// variables must live during the loop runs the loop itself.
inline void runLoop(const std::function<void()>& setUp) {
    std::thread([&] {
        mindroid::Looper::prepare();
        setUp();
        mindroid::Looper::loop();
    }).join();
}

// Starts the call on `count` threads at once and returns how many answered true.
inline int countTrue(size_t count, const std::function<bool()>& call) {
    std::atomic<int> answers{0};
    inThreads(count, [&](size_t) { answers += call(); });
    return answers;
}

}  // namespace test
