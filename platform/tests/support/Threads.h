#pragma once

#include <cstddef>
#include <functional>
#include <latch>
#include <thread>
#include <vector>

namespace test {

// Runs the action with 0, 1, ... `count` - 1, each on a thread of its own, all at once; returns when they have ended.
inline void inThreads(size_t count, const std::function<void(size_t)>& action) {
    std::latch start(static_cast<ptrdiff_t>(count));
    std::vector<std::thread> threads;
    for (size_t i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            action(i);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace test
