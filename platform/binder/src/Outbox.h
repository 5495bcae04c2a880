#pragma once

#include "Frame.h"
#include "Poller.h"
#include "Socket.h"

#include <android/binder_status.h>
#include <device/Mutex.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace binder {

// The channel to a peer: oneway calls and references given back, in the order in which they were sent. It never waits:
// what the socket does not take is queued and written by the I/O thread. Thread: any.
class Outbox final : public Pollable, public std::enable_shared_from_this<Outbox> {
public:
    Outbox(UniqueFd fd, pid_t pid) : mFd(std::move(fd)), mPid(pid) {}

    // A oneway call, which may wait for more of them. STATUS_FAILED_TRANSACTION when too many of its calls have not
    // run, STATUS_DEAD_OBJECT when the peer is gone.
    [[nodiscard]] binder_status_t post(Bytes frame, bool mayWait);
    // Anything else. False when the peer is gone, or lets too much wait.
    [[nodiscard]] bool send(Bytes frame);

    // Writes the calls that wait for more, so that what is sent on another socket now does not overtake them.
    void flushDeferred();

    // What the peer has not read yet, and how many oneway calls to it failed because it was too slow.
    [[nodiscard]] uint64_t unreadBytes();
    [[nodiscard]] uint64_t undelivered();

    // Whether the peer's process ends within this time.
    [[nodiscard]] bool isPeerGone(std::chrono::milliseconds within) const;
    // Closes it for both sides, and says what was not delivered.
    void end();

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override { end(); }

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] bool write(Bytes frame) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool queueRest(Bytes frame) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool defer(Bytes frame) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool flush() SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool watch() SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool lose() const;
    void readAcks() SUBSYS_REQUIRES(mLock);
    void reportLost() SUBSYS_REQUIRES(mLock);

    const UniqueFd mFd;
    const pid_t mPid;

    device::Mutex mLock;
    bool mEnded SUBSYS_GUARDED_BY(mLock) = false;
    PollKey mKey SUBSYS_GUARDED_BY(mLock) = 0;
    std::vector<uint8_t> mQueue SUBSYS_GUARDED_BY(mLock);  // frames of which the last is not written whole
    bool mIsStalled SUBSYS_GUARDED_BY(mLock) = false;      // the socket has no room
    std::atomic<bool> mIsDeferred{false};                  // calls wait for more, not for room
    size_t mWritten SUBSYS_GUARDED_BY(mLock) = 0;          // of the queue
    uint64_t mPosted SUBSYS_GUARDED_BY(mLock) = 0;         // bytes of oneway calls
    Ack mAcked SUBSYS_GUARDED_BY(mLock) = 0;
    std::vector<uint8_t> mAckBytes SUBSYS_GUARDED_BY(mLock);
    uint64_t mLost SUBSYS_GUARDED_BY(mLock) = 0;      // oneway calls that were not delivered
    uint64_t mReported SUBSYS_GUARDED_BY(mLock) = 0;  // those that a line was written about
    Clock::time_point mReportedAt SUBSYS_GUARDED_BY(mLock);
};

}  // namespace binder
