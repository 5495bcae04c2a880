#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

namespace test {

// How long a test waits for what must come; far more than it ever takes.
inline constexpr std::chrono::seconds DEADLINE{10};

// Values in the order of their arrival, from any thread.
template <typename T>
class Recorder {
public:
    void add(T value) {
        const std::lock_guard lock(mLock);
        mValues.push_back(std::move(value));
        mChanged.notify_all();
    }

    // True once `count` values have come, false when they have not by the deadline.
    [[nodiscard]] bool await(size_t count = 1, std::chrono::milliseconds timeout = DEADLINE) const {
        return awaitThat([&](const auto& values) { return values.size() >= count; }, timeout);
    }
    // True once the values satisfy the predicate, which runs with the lock held.
    template <typename Predicate>
    [[nodiscard]] bool awaitThat(Predicate predicate, std::chrono::milliseconds timeout = DEADLINE) const {
        std::unique_lock lock(mLock);
        return mChanged.wait_for(lock, timeout, [&] { return predicate(mValues); });
    }

    [[nodiscard]] std::vector<T> all() const {
        const std::lock_guard lock(mLock);
        return mValues;
    }
    [[nodiscard]] size_t count() const {
        const std::lock_guard lock(mLock);
        return mValues.size();
    }
    void clear() {
        const std::lock_guard lock(mLock);
        mValues.clear();
    }

private:
    mutable std::mutex mLock;
    mutable std::condition_variable mChanged;
    std::vector<T> mValues;
};

// Something that happens, once or more often.
class Event {
public:
    void signal() { mSignals.add(true); }
    [[nodiscard]] bool await(size_t count = 1) const { return mSignals.await(count); }
    [[nodiscard]] size_t count() const { return mSignals.count(); }

private:
    Recorder<bool> mSignals;
};

}  // namespace test
