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

constexpr uint32_t kCall = EPOLLIN | EPOLLRDHUP | EPOLLONESHOT;
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
    mReply.empty() ? serve() : flush();
}

void ServedConnection::serve() {
    FrameHeader header{};
    AParcel in;
    switch (mStream.read(header, in, in, MSG_DONTWAIT)) {
        case Stream::Result::Frame: {
            AParcel out;
            const Bytes reply = mStream.run(mSession, header, in, out);
            return reply.empty() ? close() : answer(reply);
        }
        case Stream::Result::Again:
            return arm();
        case Stream::Result::Closed:
            return close();
        case Stream::Result::Malformed:
            mSession->end("sent a frame that makes no sense");
            return close();
    }
}

void ServedConnection::answer(Bytes reply) {
    const ssize_t sent = sendSome(mStream.fd(), reply, MSG_DONTWAIT);
    if (sent < 0) return lose("cannot be answered");
    mReply.assign(reply.begin() + sent, reply.end());
    mWritten = 0;
    arm();
}

void ServedConnection::flush() {
    const ssize_t sent = sendSome(mStream.fd(), Bytes(mReply.data(), mReply.size()).substr(mWritten), MSG_DONTWAIT);
    if (sent < 0) return lose("cannot be answered");
    mWritten += static_cast<size_t>(sent);
    if (mWritten == mReply.size()) std::vector<uint8_t>().swap(mReply);
    arm();
}

void ServedConnection::arm() {
    if (mReply.empty() ? ThreadPool::instance().poller().arm(mKey, kCall) : armFlush()) return;
    lose("cannot be listened to");
}

bool ServedConnection::armFlush() {
    Poller& poller = IoThread::instance().poller();
    return mFlushKey != 0 ? poller.arm(mFlushKey, kRoom) : poller.add(shared_from_this(), kRoom, mFlushKey);
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

void ServedConnection::close() {
    mSession->removeServed(*this);
    shutdown();
    IoThread::instance().poller().remove(mFlushKey);
    ThreadPool::instance().poller().remove(mKey);
}

}  // namespace binder
