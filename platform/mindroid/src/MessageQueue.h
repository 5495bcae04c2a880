#pragma once

#include <device/LoopState.h>
#include <device/LoopThread.h>
#include <device/Mutex.h>
#include <mindroid/Message.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>

namespace mindroid {

// What a looper still has to run. `mReady` is what is due, in the order it will run; `mTimed` is what was not due yet
// when somebody last looked. Whoever adds to the ready messages first moves there what has become due meanwhile, so a
// message never overtakes one that was due before it was sent, and the clock is read only while timed messages wait.
class MessageQueue {
public:
    using Predicate = std::function<bool(const Message&)>;

    // Due at once, whatever the clock says.
    static constexpr uint64_t NOW = 0;

    MessageQueue() = default;
    ~MessageQueue() {
        close();
        device::giveBack(state);
    }
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    // Queues for a due time in uptime milliseconds. False after close. When it returns, the message may have run, and
    // the last reference to the looper may be gone. Thread: any.
    [[nodiscard]] bool enqueue(Message& message, uint64_t dueTime);

    // Waits for the next message; null after close. The looper's thread, which is `thread`.
    [[nodiscard]] sp<Message> next(device::LoopThread& thread);

    // Drops the pending messages for which the predicate holds. Thread: any.
    void remove(const Predicate& matches);

    // Drops all messages, for ever. When it returns, what they held is gone, and this queue may be. Thread: any.
    void close();

    // The queue keeps all but the thread up to date.
    device::LoopState& state = device::takeLoopState();

private:
    void moveDueToReady() SUBSYS_REQUIRES(mLock);
    // The next message that is due, which runs from now on; null when there is none.
    [[nodiscard]] sp<Message> takeReady() SUBSYS_REQUIRES(mLock);
    void countWaiting() SUBSYS_REQUIRES(mLock);
    // When the looper has to look again by itself.
    [[nodiscard]] uint64_t nextDue() const SUBSYS_REQUIRES(mLock);
    void flush(device::LoopThread& thread) SUBSYS_REQUIRES(mLock);
    void sleep() SUBSYS_REQUIRES(mLock);
    // Whether the looper sleeps longer than it should now; it counts as awake from then on, and the caller wakes it.
    [[nodiscard]] bool rouse() SUBSYS_REQUIRES(mLock);

    device::Mutex mLock;
    std::deque<sp<Message>> mReady SUBSYS_GUARDED_BY(mLock);
    // By due time, first sent first where equal.
    std::multimap<uint64_t, sp<Message>> mTimed SUBSYS_GUARDED_BY(mLock);
    bool mClosed SUBSYS_GUARDED_BY(mLock) = false;
    uint64_t mAsleepUntil SUBSYS_GUARDED_BY(mLock) = 0;

    // 1 while the looper sleeps: the word that it sleeps on. Written with the lock.
    std::atomic<uint32_t> mAsleep{0};
};

}  // namespace mindroid
