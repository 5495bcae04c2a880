#include "ServedConnection.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "IoThread.h"
#include "Log.h"
#include "Session.h"
#include "ThreadPool.h"

namespace binder {
namespace {

constexpr uint32_t kCall = EPOLLIN | EPOLLRDHUP | EPOLLET;
constexpr uint32_t kRoom = EPOLLOUT | EPOLLONESHOT;

}  // namespace

ServedConnection::ServedConnection(std::shared_ptr<Session> session, UniqueFd fd, Charge charge)
    : mSession(std::move(session)), mCharge(std::move(charge)), mStream(std::move(fd), mSession->peer().pid) {}

bool ServedConnection::start(const std::shared_ptr<Session>& session, UniqueFd fd) {
    auto charge = Charge::take(session->peer().pid, Cost::Served);
    if (!charge) return false;
    const auto connection = std::make_shared<ServedConnection>(session, std::move(fd), std::move(*charge));
    if (!session->addServed(connection)) return false;
    if (ThreadPool::instance().poller().add(connection, kCall, connection->mKey)) return true;
    connection->close();
    return false;
}

void ServedConnection::shutdown() {
    ::shutdown(fd(), SHUT_RDWR);
}

void ServedConnection::onReady(uint32_t) {
    if (mIsOwned.exchange(true, std::memory_order_acquire)) return;
    FrameHeader header{};
    AParcel in;
    switch (mStream.read(header, in, in, MSG_DONTWAIT)) {
        case Stream::Result::Frame: {
            AParcel out;
            const Bytes reply = mStream.run(mSession, header, in, out);
            return reply.empty() ? close() : answer(reply);
        }
        case Stream::Result::Again:
            return release();
        case Stream::Result::Closed:
            return close();
        case Stream::Result::Malformed:
            mSession->end("sent a frame that makes no sense");
            return close();
    }
}

// The peer may send its next call as soon as it has the reply, and another thread take it: nothing is touched then.
void ServedConnection::answer(Bytes reply) {
    mIsOwned.store(false, std::memory_order_release);
    const ssize_t sent = sendSome(mStream.fd(), reply, MSG_DONTWAIT);
    if (sent == static_cast<ssize_t>(reply.size())) return;
    const int reason = errno;
    const bool isTaken = mIsOwned.exchange(true, std::memory_order_acquire);
    if (isTaken) return sent < 0 ? void() : mSession->end("calls before it has read its reply");
    errno = reason;
    if (sent < 0) return lose("cannot be answered");
    mReply.assign(reply.begin() + sent, reply.end());
    mWritten = 0;
    if (!awaitRoom()) lose("cannot be answered");
}

void ServedConnection::flush() {
    const ssize_t sent = sendSome(mStream.fd(), Bytes(mReply.data(), mReply.size()).substr(mWritten), MSG_DONTWAIT);
    if (sent < 0) return lose("cannot be answered");
    mWritten += static_cast<size_t>(sent);
    if (mWritten == mReply.size()) {
        std::vector<uint8_t>().swap(mReply);
        release();
    } else if (!awaitRoom()) {
        lose("cannot be answered");
    }
}

bool ServedConnection::awaitRoom() {
    Poller& poller = IoThread::instance().poller();
    if (mFlushKey != 0) return poller.arm(mFlushKey, kRoom);
    return poller.add(std::shared_ptr<Flusher>(shared_from_this(), &mFlusher), kRoom, mFlushKey);
}

// Asks for an event for what arrived while this thread was the owner, and nobody else cared.
void ServedConnection::release() {
    mIsOwned.store(false, std::memory_order_release);
    if (ThreadPool::instance().poller().arm(mKey, kCall)) return;
    if (!mIsOwned.exchange(true, std::memory_order_acquire)) lose("cannot be listened to");
}

// A peer that has died needs no line.
void ServedConnection::lose(const char* what) {
    if (errno != EPIPE && errno != ECONNRESET) {
        warn("a connection of process %d %s: %s", mSession->peer().pid, what, strerror(errno));
    }
    close();
}

void ServedConnection::onNoMemory() {
    warn("a call of process %d is lost: no memory", mSession->peer().pid);
    close();
}

// For good: the owner stays the owner.
void ServedConnection::close() {
    mSession->removeServed(*this);
    shutdown();
    IoThread::instance().poller().remove(mFlushKey);
    ThreadPool::instance().poller().remove(mKey);
}

}  // namespace binder
