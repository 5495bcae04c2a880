#include "Connection.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Session.h"
#include "ThreadPool.h"

namespace binder {
namespace {

constexpr size_t kReadBuffer = 4096;
constexpr size_t kGrowth = 4;
// The largest frame: one that is half read never needs more.
constexpr size_t kMaxReadBuffer = sizeof(FrameHeader) + kMaxCall;
// A larger buffer is given back as soon as its frames are taken.
constexpr size_t kMaxKept = 64 * 1024;

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK;
}

// Bytes written, 0 when it would block, -1 when the connection is lost.
ssize_t sendSome(int fd, const uint8_t* bytes, size_t size, int flags) {
    for (;;) {
        const ssize_t sent = send(fd, bytes, size, flags | MSG_NOSIGNAL);
        if (sent >= 0) return sent;
        if (wouldBlock(errno)) return 0;
        if (errno != EINTR) return -1;
    }
}

}  // namespace

Connection::ReadResult Connection::read(FrameHeader& header, AParcel& parcel, std::vector<uint32_t>& offsets,
                                        int flags) {
    for (;;) {
        const ReadResult taken = takeFrame(header, parcel, offsets);
        if (taken != ReadResult::Again) return taken;
        makeRoom();
        const ssize_t received = recv(mFd.get(), mIn.get() + mEnd, mInCapacity - mEnd, flags);
        if (received > 0) {
            mEnd += static_cast<size_t>(received);
            // A peer that drips holds no thread: the poller waits for the rest.
            if (mRole != Role::Call) flags = MSG_DONTWAIT;
        } else if (received == 0) {
            return ReadResult::Closed;
        } else if (wouldBlock(errno)) {
            return ReadResult::Again;
        } else if (errno != EINTR) {
            return ReadResult::Closed;
        }
    }
}

Connection::ReadResult Connection::takeFrame(FrameHeader& header, AParcel& parcel, std::vector<uint32_t>& offsets) {
    if (mEnd - mBegin < sizeof(header)) return ReadResult::Again;
    memcpy(&header, mIn.get() + mBegin, sizeof(header));
    if (!header.isSane()) return ReadResult::Malformed;
    if (mEnd - mBegin < header.size) return ReadResult::Again;
    const uint8_t* data = mIn.get() + mBegin + sizeof(header);
    parcel.assign(data, header.dataSize());
    offsets.resize(header.objects);
    if (header.objects != 0) memcpy(offsets.data(), data + header.dataSize(), header.objects * sizeof(uint32_t));
    mBegin += header.size;
    if (mBegin == mEnd) mBegin = mEnd = 0;
    if (mEnd == 0 && mInCapacity > kMaxKept) dropBuffer();
    return ReadResult::Frame;
}

// A frame longer than the buffer makes it grow as its bytes arrive, not as its header claims.
void Connection::makeRoom() {
    if (mIn != nullptr && mEnd < mInCapacity) return;
    const bool full = mBegin == 0 && mEnd == mInCapacity;
    const size_t wanted = full ? kGrowth * mInCapacity : mInCapacity;
    const size_t capacity = std::clamp(wanted, kReadBuffer, kMaxReadBuffer);
    std::unique_ptr<uint8_t[]> buffer(new uint8_t[capacity]);
    if (mEnd != mBegin) memcpy(buffer.get(), mIn.get() + mBegin, mEnd - mBegin);
    mEnd -= mBegin;
    mBegin = 0;
    mIn = std::move(buffer);
    mInCapacity = capacity;
}

void Connection::shrink() {
    if (!isMidFrame()) dropBuffer();
}

void Connection::dropBuffer() {
    mIn.reset();
    mInCapacity = 0;
}

bool Connection::writeAll(Bytes bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = sendSome(mFd.get(), bytes.data(), bytes.size(), 0);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

Connection::WriteResult Connection::write(Bytes bytes, size_t limit) {
    const size_t waiting = mOut.size() - mOutBegin;
    ssize_t sent = 0;
    if (waiting == 0) sent = sendSome(mFd.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (sent < 0) return WriteResult::Closed;
    bytes.remove_prefix(static_cast<size_t>(sent));
    if (bytes.empty()) return WriteResult::Done;
    if (sent == 0 && waiting + bytes.size() > limit) return WriteResult::Full;
    mOut.insert(mOut.end(), bytes.begin(), bytes.end());
    Poller::instance().arm(*this, EPOLLOUT);
    return WriteResult::Queued;
}

Connection::WriteResult Connection::flush() {
    while (mOutBegin < mOut.size()) {
        const ssize_t sent = sendSome(mFd.get(), mOut.data() + mOutBegin, mOut.size() - mOutBegin, MSG_DONTWAIT);
        if (sent < 0) return WriteResult::Closed;
        if (sent == 0) break;
        mOutBegin += static_cast<size_t>(sent);
    }
    mOut.erase(mOut.begin(), mOut.begin() + static_cast<ptrdiff_t>(mOutBegin));
    mOutBegin = 0;
    if (mOut.empty()) {
        mOut.shrink_to_fit();
        return WriteResult::Done;
    }
    Poller::instance().arm(*this, EPOLLOUT);
    return WriteResult::Queued;
}

void Connection::shutdown() {
    ::shutdown(mFd.get(), SHUT_RDWR);
}

void Connection::onReady(uint32_t interest) {
    if ((interest & EPOLLOUT) != 0) {
        if (mRole == Role::Control) {
            mSession->flushControl();
        } else if (flush() != WriteResult::Queued) {
            interest |= EPOLLIN;  // the reply is out, or lost: its thread goes on reading
        }
    }
    if ((interest & EPOLLIN) != 0)
        ThreadPool::instance().enqueue(std::static_pointer_cast<Connection>(shared_from_this()));
}

}  // namespace binder
