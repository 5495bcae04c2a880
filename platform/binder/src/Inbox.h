#pragma once

#include "FrameBuffer.h"
#include "Poller.h"

#include <device/Mutex.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace binder {

class Session;

// The channel from a peer. Binder threads read it one at a time, which gives its oneway calls the order in which their
// objects run them, and let go of it before they run any. Thread: binder.
class Inbox final : public Pollable {
public:
    Inbox(Session& session, UniqueFd fd, pid_t pid) : mSession(session), mFd(std::move(fd)), mBuffer(mFd, pid) {}

    // Begins to read, and keeps the session until remove(). False, with errno, when the system refuses.
    [[nodiscard]] bool start();
    void remove();
    // Ends it for both sides; a binder thread notices, and reads what has arrived first. Thread: any.
    void end();
    // A oneway call whose parcel has this size has run.
    void onRun(size_t size);

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override;

private:
    struct Work;

    void next(FrameBuffer::Scratch& scratch, Work& work);
    void takeAll(FrameBuffer::Scratch& scratch, Work& work) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool take(Work& work) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool takeOneway(Work& work) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] bool takeRelease(Work& work) SUBSYS_REQUIRES(mLock);
    void handOn(bool isMore) SUBSYS_REQUIRES(mLock);

    Session& mSession;
    const UniqueFd mFd;
    PollKey mKey = 0;

    device::Mutex mLock;
    FrameBuffer mBuffer SUBSYS_GUARDED_BY(mLock);
    bool mIsHandedOn SUBSYS_GUARDED_BY(mLock) = false;
    uint64_t mTaken SUBSYS_GUARDED_BY(mLock) = 0;  // bytes of oneway calls, as the peer counts them
    std::atomic<uint64_t> mRun{0};
};

}  // namespace binder
