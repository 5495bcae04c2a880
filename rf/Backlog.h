#pragma once

#include <atomic>
#include <cstddef>

namespace hal {

// Bounds what queues up while its consumer is held up. What enters has a size, in a unit of the owner's choice. Any
// thread; takes no lock.
class Backlog {
public:
    // Once `limit` is reached nothing more enters; `line` is logged as an error then, once until the backlog was empty.
    Backlog(size_t limit, const char* line) : mLimit(limit), mLine(line) {}

    // False when it is full. What entered leaves by `leave`, with the same size.
    [[nodiscard]] bool enter(size_t size);
    void leave(size_t size) { mWaiting -= size; }

private:
    const size_t mLimit;
    const char* const mLine;
    std::atomic<size_t> mWaiting = 0;
    std::atomic<bool> mReported = false;
};

}  // namespace hal
