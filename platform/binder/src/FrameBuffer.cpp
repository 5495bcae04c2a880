#include "FrameBuffer.h"

#include "Log.h"
#include "Socket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace binder {

FrameBuffer::Result FrameBuffer::fill(Scratch& scratch, int flags) {
    if (mIsLost) return Result::Closed;
    for (;;) {
        if (const Result found = look(); found != Result::Again) return found;
        if (mIsDry && !mIsEnding && flags != 0) return Result::Again;
        mHalfSent.pause();
        const size_t room = makeRoom(scratch);
        const ssize_t received = receiveSome(mFd, mEnd, room, flags);
        if (received < 0 && errno == EAGAIN) return Result::Again;
        if (received < 0) warnLost(mPid);
        if (received <= 0) return Result::Closed;
        mEnd += received;
        mIsDry = static_cast<size_t>(received) < room;
    }
}

FrameBuffer::Result FrameBuffer::look() {
    if (size() < sizeof(mHeader)) return Result::Again;
    memcpy(&mHeader, mBegin, sizeof(mHeader));
    if (!mHeader.isSane()) return Result::Malformed;
    return size() < mHeader.size ? Result::Again : Result::Frame;
}

void FrameBuffer::take(AParcel& parcel) {
    parcel.assign(mBegin + sizeof(mHeader), mHeader.dataSize(), mHeader.objects);
    mBegin += mHeader.size;
}

size_t FrameBuffer::makeRoom(Scratch& scratch) {
    if (size() == 0) {
        mKept.reset();
        mBegin = mEnd = scratch.data();
        return scratch.size();
    }
    // A frame longer than the scratch memory makes room grow as its bytes arrive, not as its header claims.
    if (mKept == nullptr || mEnd == mKept.get() + mCapacity) moveTo(std::max(scratch.size(), 4 * size()));
    return static_cast<size_t>(mKept.get() + mCapacity - mEnd);
}

void FrameBuffer::moveTo(size_t capacity) {
    std::unique_ptr<uint8_t[]> larger(new uint8_t[capacity]);
    memcpy(larger.get(), mBegin, size());
    mEnd = larger.get() + size();
    mBegin = larger.get();
    mKept = std::move(larger);
    mCapacity = capacity;
}

void FrameBuffer::keep() {
    if (size() == 0) {
        mKept.reset();
    } else if (mKept == nullptr) {
        moveTo(std::max(size(), sizeof(Scratch)));
    }
    mHalfSent.set(size());
}

void FrameBuffer::lose() {
    mIsLost = true;
    mBegin = mEnd = nullptr;
    mKept.reset();
    mHalfSent.set(0);
}

}  // namespace binder
