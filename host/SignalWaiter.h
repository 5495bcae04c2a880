#pragma once

#include <chrono>
#include <future>

// Ends the main thread's looper on SIGTERM or SIGINT, which must be blocked in every thread. Where the main thread is
// not done within LIMIT after that, since a component never returns, it ends the process with EXIT_STUCK. Waits on a
// thread of its own from construction on; made once, on the main thread, whose looper exists.
class SignalWaiter final {
public:
    static constexpr std::chrono::seconds LIMIT{3};
    static constexpr int EXIT_STUCK = 3;

    SignalWaiter();
    // The main thread is done.
    ~SignalWaiter();
    SignalWaiter(const SignalWaiter&) = delete;
    SignalWaiter& operator=(const SignalWaiter&) = delete;

private:
    std::promise<void> mDone;
};
