#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include <mindroid/Message.h>

namespace mindroid {

// A first-in first-out list of messages, threaded through the messages themselves. Holds a reference to each.
class MessageList {
public:
    MessageList() = default;
    MessageList(const MessageList&) = delete;
    MessageList& operator=(const MessageList&) = delete;
    // The messages left let go of what they hold, so no lock may be held.
    ~MessageList();

    [[nodiscard]] bool empty() const { return mHead == nullptr; }
    void push(sp<Message> message) { append(message.release()); }
    [[nodiscard]] sp<Message> pop();

    // Moves the messages that match to the end of `matched`; both keep their order.
    template <typename Matches>
    void extract(const Matches& matches, MessageList& matched);

private:
    void append(Message* message);

    Message* mHead = nullptr;
    Message* mTail = nullptr;
};

// What a looper still has to run. `mReady` is what is due, in the order it will run; `mTimed` is what was not due yet
// when somebody last looked. Whoever adds to the ready list first moves there what has become due meanwhile, so a
// message never overtakes one that was due before it was sent, and the clock is read only while timed messages wait.
class MessageQueue {
public:
    MessageQueue();
    ~MessageQueue();
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    // Due at once, whatever the clock says.
    static constexpr uint64_t kNow = 0;

    // Queues for a due time in uptime milliseconds. False after close; the message stays with the caller then.
    // Any thread.
    [[nodiscard]] bool enqueue(sp<Message>&& message, uint64_t dueTime);

    // Waits for the next message; null after close. The looper's thread.
    [[nodiscard]] sp<Message> next();

    // Drops the pending messages for which `matches` holds. Any thread.
    template <typename Matches>
    void remove(const Matches& matches);

    // Drops all messages, for ever. Any thread.
    void close();

    // The clock jumped: every sleeping queue looks again. Any thread.
    static void onClockChanged();

private:
    struct Timed {
        uint64_t dueTime;
        uint64_t sequence;
        Message* message;
    };
    static bool isLater(const Timed& a, const Timed& b);

    void addTimed(sp<Message> message, uint64_t dueTime);
    void moveDueToReady();
    // When the looper has to wake by itself.
    [[nodiscard]] uint64_t nextTimeout() const;
    void sleep(std::unique_lock<std::mutex>& lock);
    // Wakes the looper if it sleeps longer than it should now. Lets go of the lock.
    void wake(std::unique_lock<std::mutex> lock);

    std::mutex mLock;
    MessageList mReady;
    // A heap whose front is due first.
    std::vector<Timed> mTimed;
    uint64_t mSequence = 0;
    bool mClosed = false;
    bool mAsleep = false;
    uint64_t mAsleepUntil = 0;

    // 0 while the looper may sleep.
    std::atomic<uint32_t> mWakeWord{0};
};

template <typename Matches>
void MessageList::extract(const Matches& matches, MessageList& matched) {
    Message* rest = std::exchange(mHead, nullptr);
    while (rest != nullptr) {
        Message* message = std::exchange(rest, rest->mNext);
        (matches(*message) ? matched : *this).append(message);
    }
}

template <typename Matches>
void MessageQueue::remove(const Matches& matches) {
    MessageList removed;
    const std::lock_guard lock(mLock);
    mReady.extract(matches, removed);
    const auto kept = std::stable_partition(mTimed.begin(), mTimed.end(),
                                            [&](const Timed& timed) { return !matches(*timed.message); });
    for (auto timed = kept; timed != mTimed.end(); ++timed) removed.push(sp<Message>::adopt(timed->message));
    mTimed.erase(kept, mTimed.end());
    std::make_heap(mTimed.begin(), mTimed.end(), isLater);
}

}  // namespace mindroid
