#include "MessageQueue.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <limits>

#include <mindroid/Handler.h>
#include <mindroid/Runnable.h>
#include <mindroid/SystemClock.h>

namespace mindroid {

namespace {

constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

// Sleeps while the word is 0, until `deadline` in uptime milliseconds at most. May return early.
void futexWait(std::atomic<uint32_t>& word, uint64_t deadline) {
    timespec time{};
    time.tv_sec = static_cast<time_t>(deadline / 1000);
    time.tv_nsec = static_cast<long>(deadline % 1000) * 1'000'000;
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, 0, deadline == kNever ? nullptr : &time, nullptr,
            FUTEX_BITSET_MATCH_ANY);
}

void futexWake(std::atomic<uint32_t>& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

// The queues that there are, for a clock that jumps.
struct Queues {
    std::mutex lock;
    std::vector<MessageQueue*> all;

    // Never destroyed: loopers may outlive the statics.
    static Queues& get() {
        static auto* instance = new Queues();
        return *instance;
    }
};

}  // namespace

MessageList::~MessageList() {
    while (!empty()) pop()->letGo();
}

sp<Message> MessageList::pop() {
    Message* message = mHead;
    mHead = message->mNext;
    return sp<Message>::adopt(message);
}

void MessageList::append(Message* message) {
    message->mNext = nullptr;
    (mHead == nullptr ? mHead : mTail->mNext) = message;
    mTail = message;
}

MessageQueue::MessageQueue() {
    Queues& queues = Queues::get();
    const std::lock_guard lock(queues.lock);
    queues.all.push_back(this);
}

MessageQueue::~MessageQueue() {
    {
        Queues& queues = Queues::get();
        const std::lock_guard lock(queues.lock);
        std::erase(queues.all, this);
    }
    close();
}

bool MessageQueue::enqueue(sp<Message>&& message, uint64_t dueTime) {
    std::unique_lock lock(mLock);
    if (mClosed) return false;
    if (!mTimed.empty()) moveDueToReady();
    if (dueTime == kNow || dueTime <= SystemClock::uptimeMillis()) {
        mReady.push(std::move(message));
    } else {
        addTimed(std::move(message), dueTime);
    }
    wake(std::move(lock));
    return true;
}

sp<Message> MessageQueue::next() {
    std::unique_lock lock(mLock);
    while (!mClosed) {
        if (mReady.empty() && !mTimed.empty()) moveDueToReady();
        if (!mReady.empty()) return mReady.pop();
        sleep(lock);
    }
    return nullptr;
}

void MessageQueue::close() {
    const auto any = [](const Message&) { return true; };
    {
        std::unique_lock lock(mLock);
        mClosed = true;
        wake(std::move(lock));
    }
    remove(any);
}

void MessageQueue::onClockChanged() {
    Queues& queues = Queues::get();
    const std::lock_guard lock(queues.lock);
    for (MessageQueue* queue : queues.all) {
        std::unique_lock queueLock(queue->mLock);
        queue->moveDueToReady();
        queue->wake(std::move(queueLock));
    }
}

bool MessageQueue::isLater(const Timed& a, const Timed& b) {
    return a.dueTime != b.dueTime ? a.dueTime > b.dueTime : a.sequence > b.sequence;
}

void MessageQueue::addTimed(sp<Message> message, uint64_t dueTime) {
    mTimed.push_back({dueTime, mSequence++, message.release()});
    std::push_heap(mTimed.begin(), mTimed.end(), isLater);
}

void MessageQueue::moveDueToReady() {
    const uint64_t now = SystemClock::uptimeMillis();
    while (!mTimed.empty() && mTimed.front().dueTime <= now) {
        std::pop_heap(mTimed.begin(), mTimed.end(), isLater);
        mReady.push(sp<Message>::adopt(mTimed.back().message));
        mTimed.pop_back();
    }
}

uint64_t MessageQueue::nextTimeout() const {
    return mTimed.empty() || SystemClock::isManual() ? kNever : mTimed.front().dueTime;
}

void MessageQueue::sleep(std::unique_lock<std::mutex>& lock) {
    const uint64_t deadline = nextTimeout();
    mAsleep = true;
    mAsleepUntil = deadline;
    mWakeWord.store(0, std::memory_order_relaxed);
    lock.unlock();
    futexWait(mWakeWord, deadline);
    lock.lock();
    mAsleep = false;
}

void MessageQueue::wake(std::unique_lock<std::mutex> lock) {
    const bool stays = mReady.empty() && !mClosed && nextTimeout() >= mAsleepUntil;
    if (!mAsleep || stays) return;
    mAsleep = false;
    mWakeWord.store(1, std::memory_order_relaxed);
    lock.unlock();
    futexWake(mWakeWord);
}

}  // namespace mindroid
