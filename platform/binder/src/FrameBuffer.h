#pragma once

#include "Frame.h"
#include "Parcel.h"
#include "PeerCosts.h"
#include "UniqueFd.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace binder {

// Makes frames of what a socket delivers. Bytes lie in the caller's scratch memory as long as they may, so that a quiet
// connection owns none. Thread: any; one at a time.
class FrameBuffer {
public:
    using Scratch = std::array<uint8_t, size_t{16} * 1024>;
    enum class Result { Frame, Again, Closed, Malformed };

    // The bytes of a half sent frame are counted for process `pid`.
    FrameBuffer(const UniqueFd& fd, pid_t pid) : mFd(fd), mPid(pid), mHalfSent(fd.get(), pid) {}

    // Says that the socket may hold more than the last read took; with `isEnding`, that its end is behind.
    void wake(bool isEnding = false) {
        mIsDry = false;
        mIsEnding |= isEnding;
    }
    // Reads until a whole frame is in front; Again when the socket holds no more. Waits for one with `flags` 0, not
    // with MSG_DONTWAIT. Throws std::bad_alloc.
    [[nodiscard]] Result fill(Scratch& scratch, int flags);

    // The frame in front, when fill() said that there is one.
    [[nodiscard]] const FrameHeader& header() const { return mHeader; }
    // Moves behind it and puts its data, and the offsets of its objects, into the parcel. Throws std::bad_alloc.
    void take(AParcel& parcel);
    // Before the scratch memory goes away. Throws std::bad_alloc.
    void keep();
    // Instead, when one of these threw: drops what is there; fill() gives Closed from now on.
    void lose();

private:
    [[nodiscard]] Result look();
    [[nodiscard]] size_t size() const { return static_cast<size_t>(mEnd - mBegin); }
    // How much fits behind what is there.
    [[nodiscard]] size_t makeRoom(Scratch& scratch);
    void moveTo(size_t capacity);

    const UniqueFd& mFd;
    const pid_t mPid;
    HalfSent mHalfSent;
    FrameHeader mHeader{};
    bool mIsDry = false;        // the last read took all there was
    bool mIsEnding = false;     // and no event will tell of the end
    bool mIsLost = false;       // there was no memory for what was read
    uint8_t* mBegin = nullptr;  // in mKept when that is there, else in the scratch memory
    uint8_t* mEnd = nullptr;
    std::unique_ptr<uint8_t[]> mKept;
    size_t mCapacity = 0;
};

}  // namespace binder
