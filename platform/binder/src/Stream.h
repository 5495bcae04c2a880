#pragma once

#include "FrameBuffer.h"
#include "Socket.h"

#include <memory>
#include <vector>

namespace binder {

class Session;

// One end of a call connection: calls and replies alternate on it, in both directions. One thread at a time owns it.
class Stream {
public:
    Stream(UniqueFd fd, pid_t pid) : mFd(std::move(fd)), mPid(pid), mBuffer(mFd, pid) {}
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    [[nodiscard]] const UniqueFd& fd() const { return mFd; }

    using Result = FrameBuffer::Result;
    // The next frame: a reply goes to `reply`, anything else to `call`. Waits for it with `flags` 0, not with
    // MSG_DONTWAIT. Throws std::bad_alloc; nothing can be read any more then.
    [[nodiscard]] Result read(FrameHeader& header, AParcel& call, AParcel& reply, int flags);

    // Writes the frame, and waits until all of it is written. False when the connection is lost.
    [[nodiscard]] bool send(Bytes frame) const;

    // Runs a call that was read and gives the frame to answer with, which lies in `out`; none, and the session is
    // ended, when the peer cannot mean it.
    [[nodiscard]] Bytes run(const std::shared_ptr<Session>& session, const FrameHeader& header, AParcel& in,
                            AParcel& out);
    // Waits for the reply to a call that was sent, and runs the calls that come back meanwhile. `parcel` is the call,
    // whose objects stay referenced until then, and becomes the reply. False when the connection is lost, as it
    // is when this throws std::bad_alloc.
    [[nodiscard]] bool await(const std::shared_ptr<Session>& session, AParcel& parcel, binder_status_t& status);

private:
    const UniqueFd mFd;
    const pid_t mPid;
    FrameBuffer mBuffer;
    // Of the peer's own objects in the last reply: they stay referenced until the peer has read it.
    std::vector<ndk::SpAIBinder> mReplied;
};

}  // namespace binder
