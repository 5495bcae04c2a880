#pragma once

#include <mindroid/Object.h>

#include <atomic>
#include <cstddef>

namespace hal {

// Bounds what queues up while its consumer is held up. What enters has a size, in a unit of the owner's choice. Any
// thread; takes no lock.
class Backlog : public mindroid::Object {
public:
    // Once `limit` is reached nothing more enters; `line` is logged as an error then, once until the backlog was empty.
    Backlog(size_t limit, const char* tag, const char* line) : mLimit(limit), mTag(tag), mLine(line) {}

    // A place in the backlog, which is given back with the last reference to it. Null when the backlog is full.
    [[nodiscard]] mindroid::sp<mindroid::Object> enter(size_t size);

private:
    class Place;

    [[nodiscard]] bool take(size_t size);

    const size_t mLimit;
    const char* const mTag;
    const char* const mLine;
    std::atomic<size_t> mWaiting = 0;
    std::atomic<bool> mReported = false;
};

}  // namespace hal
