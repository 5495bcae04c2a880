#include "ServedConnection.h"

#include "IoThread.h"
#include "Log.h"
#include "Session.h"
#include "ThreadPool.h"

#include <utility>

namespace binder {
namespace {

constexpr uint32_t CALL = EPOLLIN | EPOLLRDHUP | EPOLLET;
constexpr uint32_t ROOM = EPOLLOUT | EPOLLONESHOT;

}  // namespace

ServedConnection::ServedConnection(std::shared_ptr<Session> session, UniqueFd fd, Charge charge)
    : mSession(std::move(session)), mCharge(std::move(charge)), mStream(std::move(fd), mSession->peer().pid) {}

void ServedConnection::start(const std::shared_ptr<Session>& session, UniqueFd fd) {
    auto charge = Charge::take(session->peer().pid, Cost::Served);
    if (!charge) return warn("process %d has too many connections: such connections are closed", session->peer().pid);
    const auto connection = std::make_shared<ServedConnection>(session, std::move(fd), std::move(*charge));
    if (!session->addServed(connection)) return;
    if (!ThreadPool::instance().poller().add(connection, CALL, connection->mKey)) connection->lose();
}

void ServedConnection::end() {
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

void ServedConnection::answer(Bytes reply) {
    // The peer may send its next call as soon as it has the reply, and another thread take it.
    mIsOwned.store(false, std::memory_order_release);
    mSession->flush();
    const device::MutexLock lock(mReplyLock);
    if (!mReply.empty()) return mSession->end("calls before it has read its reply");
    const ssize_t sent = sendSome(mStream.fd(), reply, MSG_DONTWAIT);
    if (sent == static_cast<ssize_t>(reply.size())) return;
    if (sent < 0) return lose();
    mReply.assign(reply.begin() + sent, reply.end());
    mWritten = 0;
    if (!awaitRoom()) lose();
}

void ServedConnection::flush() {
    const device::MutexLock lock(mReplyLock);
    const ssize_t sent = sendSome(mStream.fd(), Bytes(mReply.data(), mReply.size()).substr(mWritten), MSG_DONTWAIT);
    if (sent >= 0) mWritten += static_cast<size_t>(sent);
    if (sent >= 0 && mWritten < mReply.size() && awaitRoom()) return;
    if (mWritten < mReply.size()) lose();
    std::vector<uint8_t>().swap(mReply);
    IoThread::instance().poller().remove(std::exchange(mFlushKey, 0));
}

bool ServedConnection::awaitRoom() {
    Poller& poller = IoThread::instance().poller();
    if (mFlushKey != 0) return poller.arm(mFlushKey, ROOM);
    return poller.add(std::shared_ptr<Flusher>(shared_from_this(), &mFlusher), ROOM, mFlushKey);
}

// Asks for an event for what arrived while this thread was the owner, and others left alone.
void ServedConnection::release() {
    mIsOwned.store(false, std::memory_order_release);
    if (!ThreadPool::instance().poller().arm(mKey, CALL)) lose();
}

void ServedConnection::lose() {
    warnLost(mSession->peer().pid);
    close();
}

void ServedConnection::onNoMemory() {
    warn("a call of process %d is lost: no memory", mSession->peer().pid);
    close();
}

void ServedConnection::close() {
    mSession->removeServed(*this);
    end();  // which the flusher notices
    ThreadPool::instance().poller().remove(mKey);
}

}  // namespace binder
