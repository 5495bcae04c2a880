#include "Control.h"

#include "Frame.h"
#include "IoThread.h"
#include "Log.h"
#include "ServedConnection.h"
#include "Session.h"
#include "Socket.h"

#include <cerrno>
#include <memory>
#include <vector>

namespace binder {

bool Control::start() {
    const std::shared_ptr<Control> self(mSession.shared_from_this(), this);
    return IoThread::instance().poller().add(self, EPOLLIN, mKey);
}

bool Control::pass(const UniqueFd& end) const {
    const FrameHeader header{sizeof(FrameHeader), FrameKind::Connection, 0, 0, 0};
    const Bytes bytes(reinterpret_cast<const uint8_t*>(&header), sizeof(header));
    return sendWith(mFd, bytes, {end.get()}, MSG_DONTWAIT) == static_cast<ssize_t>(bytes.size());
}

void Control::end() {
    IoThread::instance().poller().remove(mKey);
    shutdown(mFd.get(), SHUT_RDWR);
}

void Control::onReady(uint32_t) {
    const auto session = mSession.shared_from_this();
    FrameHeader header{};
    std::vector<UniqueFd> passed;
    const ssize_t received = receiveWith(mFd, reinterpret_cast<uint8_t*>(&header), sizeof(header), passed);
    if (received < 0 && errno == EAGAIN) return;
    // A connection may be lost with what failed, whose caller waits: the session ends as well.
    if (received < 0) warnLost(session->peer().pid);
    if (received <= 0) {
        // The end of the channel may never come: the peer is free to hand over both ends of one.
        mSession.inbox().end();
        return end();
    }
    if (received != sizeof(header) || header.kind != FrameKind::Connection || passed.size() > 1)
        return session->end("sent something else than a connection");
    if (passed.empty()) return warn("a connection of process %d is lost: no descriptors", session->peer().pid);
    if (!isStreamOf(passed.front(), session->peer().pid))
        return session->end("passed something else than a connection");
    ServedConnection::start(session, std::move(passed.front()));
}

void Control::onNoMemory() {
    warn("a connection of process %d is lost: no memory", mSession.peer().pid);
}

}  // namespace binder
