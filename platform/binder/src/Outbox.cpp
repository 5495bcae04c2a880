#include "Outbox.h"

#include "Deferral.h"
#include "IoThread.h"
#include "Limits.h"
#include "Log.h"
#include "Mark.h"

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace binder {
namespace {

// Oneway calls that end behind `begin`.
uint64_t callsIn(const std::vector<uint8_t>& bytes, size_t begin) {
    uint64_t calls = 0;
    FrameHeader header{};
    for (size_t at = 0; at < bytes.size(); at += header.size) {
        memcpy(&header, bytes.data() + at, sizeof(header));
        if (header.kind == FrameKind::Oneway && at + header.size > begin) ++calls;
    }
    return calls;
}

}  // namespace

binder_status_t Outbox::post(Bytes frame, bool mayWait) {
    const size_t cost = frame.size() + ONEWAY_OVERHEAD;
    const device::MutexLock lock(mLock);
    // What waits first is not written now, which would tell of a dead peer.
    const bool mustLook = mayWait && mQueue.empty();
    if (mustLook || mPosted + cost - mAcked > MAX_ONEWAY_WAITING) readAcks();
    if (mEnded) return STATUS_DEAD_OBJECT;
    if (mPosted + cost - mAcked > MAX_ONEWAY_WAITING) {
        if (mLost++ == mReported)
            warn("too much waits for process %d: oneway calls to it fail until it has run some", mPid);
        return STATUS_FAILED_TRANSACTION;
    }
    if (mLost != mReported && Clock::now() - mReportedAt >= QUIET_TIME) reportLost();
    FrameHeader header{};
    memcpy(&header, frame.data(), sizeof(header));
    markSent(mPid, header.code, frame.size() - sizeof(header), mPosted + cost);
    if (!(mayWait ? defer(frame) : write(frame))) return STATUS_DEAD_OBJECT;
    mPosted += cost;
    return STATUS_OK;
}

bool Outbox::send(Bytes frame) {
    const device::MutexLock lock(mLock);
    if (mEnded) return false;
    if (mQueue.size() <= MAX_UNREAD) return write(frame);
    warn("process %d does not read what is given back to it", mPid);
    return false;
}

bool Outbox::write(Bytes frame) {
    if (mQueue.empty()) {
        const ssize_t sent = sendSome(mFd, frame, MSG_DONTWAIT);
        if (sent == static_cast<ssize_t>(frame.size())) return true;
        if (sent < 0) return lose();
        mWritten = static_cast<size_t>(sent);
    }
    if (!queueRest(frame)) return false;
    return mIsStalled || flush();
}

// False when a part of the frame is written, and there is no memory for the rest.
bool Outbox::queueRest(Bytes frame) try {
    mQueue.insert(mQueue.end(), frame.begin(), frame.end());
    return true;
} catch (const std::bad_alloc&) {
    if (!mQueue.empty() || mWritten == 0) throw;
    warn("the connection to process %d is lost: no memory", mPid);
    return false;
}

bool Outbox::defer(Bytes frame) {
    mQueue.insert(mQueue.end(), frame.begin(), frame.end());
    if (mIsStalled) return true;
    mIsDeferred = true;
    return (mQueue.size() < MAX_DEFERRED && startDeferral()) || flush();
}

void Outbox::flushDeferred() {
    if (!mIsDeferred.load(std::memory_order_acquire)) return;
    bool isBroken = false;
    {
        const device::MutexLock lock(mLock);
        isBroken = !mEnded && !mIsStalled && !flush();
    }
    if (isBroken) end();
}

bool Outbox::watch() {
    Poller& poller = IoThread::instance().poller();
    constexpr uint32_t WRITABLE = EPOLLOUT | EPOLLONESHOT;
    return mKey != 0 ? poller.arm(mKey, WRITABLE) : poller.add(shared_from_this(), WRITABLE, mKey);
}

// Always false, as all that ends the connection.
bool Outbox::lose() const {
    warnLost(mPid);
    return false;
}

void Outbox::onReady(uint32_t) {
    bool isBroken = false;
    {
        const device::MutexLock lock(mLock);
        mIsStalled = false;
        isBroken = !mEnded && !flush();
    }
    if (isBroken) end();
}

// Writes what the socket takes; the I/O thread goes on when it has room. False when the connection is lost.
bool Outbox::flush() {
    const ssize_t sent = sendSome(mFd, Bytes(mQueue.data(), mQueue.size()).substr(mWritten), MSG_DONTWAIT);
    // Not before they are written: another thread that sees none waiting makes its own call at once.
    mIsDeferred = false;
    if (sent < 0) return lose();
    mWritten += static_cast<size_t>(sent);
    mIsStalled = mWritten < mQueue.size();
    if (mIsStalled) return watch() || lose();
    if (mQueue.capacity() > 2 * MAX_DEFERRED) std::vector<uint8_t>().swap(mQueue);
    mQueue.clear();
    mWritten = 0;
    return true;
}

// Each says more than the one before, so only the last whole one counts. One read takes all that an honest peer can
// have sent, which is no more than a few; another one could go on for ever.
void Outbox::readAcks() {
    std::array<uint8_t, 2 * MAX_ONEWAY_WAITING / ACK_INTERVAL * sizeof(Ack)> bytes;
    const ssize_t received = receiveSome(mFd, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (received < 0 && errno == EAGAIN) return;
    if (received <= 0) {
        if (received < 0) warnLost(mPid);
        mEnded = true;
        return;
    }
    mAckBytes.insert(mAckBytes.end(), bytes.data(), bytes.data() + received);
    const size_t whole = mAckBytes.size() / sizeof(Ack) * sizeof(Ack);
    if (whole == 0) return;
    Ack ack = 0;
    memcpy(&ack, mAckBytes.data() + whole - sizeof(ack), sizeof(ack));
    mAcked = std::clamp(ack, mAcked, mPosted);
    mAckBytes.erase(mAckBytes.begin(), mAckBytes.begin() + static_cast<ptrdiff_t>(whole));
}

bool Outbox::isPeerGone(std::chrono::milliseconds within) const {
    pollfd channel{mFd.get(), 0, 0};
    return poll(&channel, 1, static_cast<int>(within.count())) > 0;
}

void Outbox::reportLost() {
    info("%llu oneway calls to process %d were not delivered so far", static_cast<unsigned long long>(mLost), mPid);
    mReported = mLost;
    mReportedAt = Clock::now();
}

uint64_t Outbox::unreadBytes() {
    int inKernel = 0;
    const device::MutexLock lock(mLock);
    if (ioctl(mFd.get(), SIOCOUTQ, &inKernel) != 0) inKernel = 0;
    return static_cast<uint64_t>(inKernel) + mQueue.size() - mWritten;
}

uint64_t Outbox::undelivered() {
    const device::MutexLock lock(mLock);
    return mLost;
}

void Outbox::end() {
    PollKey key = 0;
    {
        const device::MutexLock lock(mLock);
        mEnded = true;
        key = std::exchange(mKey, 0);
        mLost += callsIn(mQueue, mWritten);
        std::vector<uint8_t>().swap(mQueue);
        if (mLost != mReported) reportLost();
    }
    shutdown(mFd.get(), SHUT_RDWR);
    if (key != 0) IoThread::instance().poller().remove(key);
}

}  // namespace binder
