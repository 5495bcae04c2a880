#pragma once

#include <device/Mutex.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>

namespace simulator {

// A thread, named "icc events", that runs tasks in the order of their due time, first posted first run where equal. It
// runs until the process ends, so its owner must never be destroyed.
class EventThread {
public:
    using Task = std::function<void()>;

    EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    // Thread: any.
    void post(int64_t delayMillis, Task task);

private:
    using Clock = std::chrono::steady_clock;

    [[noreturn]] void run();
    Task waitForNext();

    device::Mutex mLock;
    std::condition_variable mWake;
    std::multimap<Clock::time_point, Task> mTasks SUBSYS_GUARDED_BY(mLock);
};

}  // namespace simulator
