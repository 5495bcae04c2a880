#include "Outbox.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "IoThread.h"
#include "Limits.h"
#include "Log.h"

namespace binder {
namespace {

// Oneway calls in a chunk that are not written whole.
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

binder_status_t Outbox::post(Bytes frame) {
    const size_t cost = frame.size() + kOnewayOverhead;
    const Lock lock(mLock);
    if (mPosted + cost - mAcked > kMaxOnewayWaiting) readAcks();
    if (mEnded) return STATUS_DEAD_OBJECT;
    if (mPosted + cost - mAcked > kMaxOnewayWaiting) {
        if (mLost++ == 0) {
            warn("process %d %s: oneway calls to it fail until it does", mPid,
                 mQueue.empty() ? "does not run its oneway calls" : "does not read");
        }
        return STATUS_FAILED_TRANSACTION;
    }
    if (mLost != 0) reportLost();
    if (!write(frame, UniqueFd())) return STATUS_DEAD_OBJECT;
    mPosted += cost;
    return STATUS_OK;
}

bool Outbox::send(Bytes frame, UniqueFd passed) {
    const Lock lock(mLock);
    if (mEnded) return false;
    if (mQueued <= kMaxUnread) return write(frame, std::move(passed));
    warn("process %d does not read what is given back to it", mPid);
    return false;
}

bool Outbox::write(Bytes frame, UniqueFd passed) {
    ssize_t sent = 0;
    if (mQueue.empty()) {
        sent = writeSome(frame, passed);
        if (sent < 0) return false;
        if (static_cast<size_t>(sent) == frame.size()) return true;
        if (!watch()) return false;
    }
    if (mQueue.empty() || passed.isValid()) mQueue.push_back({{}, static_cast<size_t>(sent), std::move(passed)});
    auto& bytes = mQueue.back().bytes;
    bytes.insert(bytes.end(), frame.begin(), frame.end());
    mQueued += frame.size() - static_cast<size_t>(sent);
    return true;
}

ssize_t Outbox::writeSome(Bytes bytes, UniqueFd& passed) {
    if (!passed.isValid()) return sendSome(mFd, bytes, MSG_DONTWAIT);
    const ssize_t sent = sendWith(mFd, bytes, {passed.get()}, MSG_DONTWAIT);
    if (sent > 0) passed = UniqueFd();
    return sent;
}

bool Outbox::watch() {
    Poller& poller = IoThread::instance().poller();
    constexpr uint32_t kWritable = EPOLLOUT | EPOLLONESHOT;
    return mKey != 0 ? poller.arm(mKey, kWritable) : poller.add(shared_from_this(), kWritable, mKey);
}

void Outbox::onReady(uint32_t) {
    bool isBroken = false;
    {
        const Lock lock(mLock);
        if (mEnded) return;
        isBroken = !flush() || (!mQueue.empty() && !watch());
    }
    if (isBroken) end();
}

// False when the connection is lost.
bool Outbox::flush() {
    while (!mQueue.empty()) {
        Chunk& chunk = mQueue.front();
        const ssize_t sent = writeSome(Bytes(chunk.bytes.data(), chunk.bytes.size()).substr(chunk.begin), chunk.passed);
        if (sent < 0) return false;
        if (sent == 0) break;
        chunk.begin += static_cast<size_t>(sent);
        mQueued -= static_cast<size_t>(sent);
        if (chunk.begin == chunk.bytes.size()) mQueue.pop_front();
    }
    return true;
}

// Each says more than the one before, so only the last whole one counts.
void Outbox::readAcks() {
    std::array<uint8_t, 64 * sizeof(Ack)> bytes;
    for (;;) {
        const ssize_t received = receiveSome(mFd, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (received == 0) mEnded = true;
        if (received <= 0) break;
        mAckBytes.insert(mAckBytes.end(), bytes.data(), bytes.data() + received);
        const size_t whole = mAckBytes.size() / sizeof(Ack) * sizeof(Ack);
        if (whole == 0) continue;
        Ack ack = 0;
        memcpy(&ack, mAckBytes.data() + whole - sizeof(ack), sizeof(ack));
        mAcked = std::clamp(ack, mAcked, mPosted);
        mAckBytes.erase(mAckBytes.begin(), mAckBytes.begin() + static_cast<ptrdiff_t>(whole));
    }
}

bool Outbox::isPeerGone(std::chrono::milliseconds within) const {
    pollfd channel{mFd.get(), 0, 0};
    return poll(&channel, 1, static_cast<int>(within.count())) > 0;
}

void Outbox::reportLost() {
    info("%llu oneway calls to process %d were not delivered", static_cast<unsigned long long>(mLost), mPid);
    mLost = 0;
}

void Outbox::end() {
    std::deque<Chunk> dropped;
    PollKey key = 0;
    {
        const Lock lock(mLock);
        mEnded = true;
        key = std::exchange(mKey, 0);
        dropped.swap(mQueue);
        for (const Chunk& each : dropped) mLost += callsIn(each.bytes, each.begin);
        if (mLost != 0) reportLost();
    }
    shutdown(mFd.get(), SHUT_RDWR);
    if (key != 0) IoThread::instance().poller().remove(key);
}

}  // namespace binder
