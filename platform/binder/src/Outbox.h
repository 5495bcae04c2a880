#pragma once

#include "Frame.h"
#include "Mutex.h"
#include "Poller.h"
#include "Socket.h"

#include <android/binder_status.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace binder {

// The channel to a peer: oneway calls, references given back, in the order in which they were
// sent. It never waits: what the socket does not take is queued and written by the I/O thread. Thread: any.
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

    // Whether the peer's process ends within this time.
    [[nodiscard]] bool isPeerGone(std::chrono::milliseconds within) const;
    // Closes it for both sides, and says what was not delivered.
    void end();

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override { end(); }

private:
    [[nodiscard]] bool write(Bytes frame) REQUIRES(mLock);
    [[nodiscard]] bool queueRest(Bytes frame) REQUIRES(mLock);
    [[nodiscard]] bool defer(Bytes frame) REQUIRES(mLock);
    [[nodiscard]] bool flush() REQUIRES(mLock);
    [[nodiscard]] bool watch() REQUIRES(mLock);
    void readAcks() REQUIRES(mLock);
    void reportLost() REQUIRES(mLock);

    const UniqueFd mFd;
    const pid_t mPid;

    Mutex mLock;
    bool mEnded GUARDED_BY(mLock) = false;
    PollKey mKey GUARDED_BY(mLock) = 0;
    std::vector<uint8_t> mQueue GUARDED_BY(mLock);  // frames of which the last is not written whole
    bool mIsStalled GUARDED_BY(mLock) = false;      // the socket has no room
    std::atomic<bool> mIsDeferred{false};           // calls wait for more, not for room
    size_t mWritten GUARDED_BY(mLock) = 0;          // of the queue
    uint64_t mPosted GUARDED_BY(mLock) = 0;         // bytes of oneway calls
    Ack mAcked GUARDED_BY(mLock) = 0;
    std::vector<uint8_t> mAckBytes GUARDED_BY(mLock);
    uint64_t mLost GUARDED_BY(mLock) = 0;  // oneway calls
};

}  // namespace binder
