#pragma once

#include <chrono>
#include <functional>
#include <future>

// Takes the process's signals on a thread of its own, named "signals". SIGTERM and SIGINT quit the main thread's
// looper; where the main thread is not done within the time-out after that, since a component does not return, the
// process ends with EXIT_STUCK. SIGUSR1 calls `onUser` on that thread, from now on. Made once, on the main thread,
// whose looper exists.
class SignalThread final {
public:
    static constexpr int EXIT_STUCK = 3;

    SignalThread(std::chrono::milliseconds stopTimeout, std::function<void()> onUser);
    // The main thread is done.
    ~SignalThread();
    SignalThread(const SignalThread&) = delete;
    SignalThread& operator=(const SignalThread&) = delete;

private:
    std::promise<void> mDone;
};
