#include "MessageQueue.h"

#include "Clock.h"

#include <mindroid/Handler.h>
#include <mindroid/Runnable.h>
#include <mindroid/SystemClock.h>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace mindroid {

namespace {

constexpr uint64_t NEVER = std::numeric_limits<uint64_t>::max();

// Sleeps while the word is 1, until `deadline` in milliseconds of CLOCK_MONOTONIC at most. May return early.
void futexWait(std::atomic<uint32_t>& word, uint64_t deadline) {
    timespec time{};
    time.tv_sec = static_cast<time_t>(deadline / 1000);
    time.tv_nsec = static_cast<long>(deadline % 1000) * 1'000'000;
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, 1, deadline == NEVER ? nullptr : &time, nullptr,
            FUTEX_BITSET_MATCH_ANY);
}

// Uses the word's address and not the word, which may be gone: who sleeps on a futex bears a wake-up without a reason.
void futexWake(std::atomic<uint32_t>& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

// What tells the classes of objects apart where they are built without type information: the object's first word.
const void* virtualTableOf(const Handler& handler) {
    const void* table = nullptr;
    memcpy(&table, static_cast<const void*>(&handler), sizeof(table));
    return table;
}

}  // namespace

bool MessageQueue::enqueue(Message& message, uint64_t dueTime) {
    {
        const device::MutexLock lock(mLock);
        if (mClosed) return false;
        if (!mTimed.empty()) moveDueToReady();
        if (dueTime == NOW || dueTime <= SystemClock::uptimeMillis()) {
            mReady.emplace_back(&message);
        } else {
            mTimed.emplace(dueTime, &message);
        }
        countWaiting();
        if (!rouse()) return true;
    }
    futexWake(mAsleep);
    return true;
}

sp<Message> MessageQueue::next(device::LoopThread& thread) {
    const device::MutexLock lock(mLock);
    while (!mClosed) {
        if (mReady.empty() && !mTimed.empty()) moveDueToReady();
        if (sp<Message> message = takeReady()) {
            thread.hasMore = !mReady.empty();
            return message;
        }
        thread.hasOutput() ? flush(thread) : sleep();
    }
    return nullptr;
}

void MessageQueue::remove(const Predicate& matches) {
    std::vector<sp<Message>> removed;
    const auto take = [&](const sp<Message>& message) {
        if (!matches(*message)) return false;
        removed.push_back(message);
        return true;
    };
    {
        const device::MutexLock lock(mLock);
        std::erase_if(mReady, take);
        std::erase_if(mTimed, [&](const auto& timed) { return take(timed.second); });
        countWaiting();
    }
    // Without the lock, since what the messages hold may call back when it dies.
    for (const sp<Message>& message : removed) message->letGo();
}

void MessageQueue::close() {
    bool mustWake = false;
    {
        const device::MutexLock lock(mLock);
        mClosed = true;
        mustWake = rouse();
    }
    if (mustWake) futexWake(mAsleep);
    remove([](const Message&) { return true; });
}

void MessageQueue::moveDueToReady() {
    const uint64_t now = SystemClock::uptimeMillis();
    while (!mTimed.empty() && mTimed.begin()->first <= now) {
        mReady.push_back(std::move(mTimed.begin()->second));
        mTimed.erase(mTimed.begin());
    }
}

sp<Message> MessageQueue::takeReady() {
    if (mReady.empty()) return nullptr;
    sp<Message> message = std::move(mReady.front());
    mReady.pop_front();
    countWaiting();
    state.since.store(device::coarseNanos(), std::memory_order_relaxed);
    state.handler.store(virtualTableOf(*message->mTarget), std::memory_order_relaxed);
    return message;
}

void MessageQueue::countWaiting() {
    state.waiting.store(static_cast<uint32_t>(mReady.size()), std::memory_order_relaxed);
}

uint64_t MessageQueue::nextDue() const {
    return mTimed.empty() ? NEVER : mTimed.begin()->first;
}

void MessageQueue::flush(device::LoopThread& thread) {
    mLock.unlock();
    thread.output->flush();
    mLock.lock();
}

void MessageQueue::sleep() {
    state.handler.store(nullptr, std::memory_order_relaxed);
    mAsleepUntil = nextDue();
    mAsleep.store(1, std::memory_order_relaxed);
    const uint64_t deadline = mAsleepUntil == NEVER ? NEVER : clock::timeToLook(mAsleepUntil);
    mLock.unlock();
    futexWait(mAsleep, deadline);
    mLock.lock();
    mAsleep.store(0, std::memory_order_relaxed);
}

bool MessageQueue::rouse() {
    const bool hasWork = !mReady.empty() || mClosed || nextDue() < mAsleepUntil;
    if (!hasWork || mAsleep.load(std::memory_order_relaxed) == 0) return false;
    mAsleep.store(0, std::memory_order_relaxed);
    return true;
}

}  // namespace mindroid
