#include "Stream.h"

#include "CallContext.h"
#include "LocalBinder.h"
#include "Log.h"
#include "Mark.h"
#include "RemoteBinder.h"
#include "Session.h"

namespace binder {
namespace {

// Of the peer's objects in a reply: a proxy that dies first would give them back before the peer knows them.
std::vector<ndk::SpAIBinder> peersObjects(AParcel& parcel) {
    std::vector<ndk::SpAIBinder> objects;
    for (const auto& each : parcel.objects()) {
        if (each.binder.get()->remote() != nullptr) objects.push_back(each.binder);
    }
    return objects;
}

}  // namespace

Stream::Result Stream::read(FrameHeader& header, AParcel& call, AParcel& reply, int flags) {
    FrameBuffer::Scratch scratch;
    mBuffer.wake();
    const Result result = mBuffer.fill(scratch, flags);
    if (result == Result::Frame) {
        header = mBuffer.header();
        mBuffer.take(header.kind == FrameKind::Reply ? reply : call);
    }
    mBuffer.keep();
    return result;
}

bool Stream::send(Bytes frame) const {
    while (!frame.empty()) {
        const ssize_t sent = sendSome(mFd, frame, 0);
        if (sent < 0) warnLost(mPid);
        if (sent <= 0) return false;
        frame.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

Bytes Stream::run(const std::shared_ptr<Session>& session, const FrameHeader& header, AParcel& in, AParcel& out) {
    mReplied.clear();
    const auto refuse = [&](const char* reason) {
        session->end(reason);
        return Bytes();
    };
    if (header.kind != FrameKind::Call) return refuse("sent something else than a call");
    if (!session->objects().receive(in, session)) return refuse("sent an object it cannot mean");
    const ndk::SpAIBinder target = session->objects().exported(header.target);
    if (target.get() == nullptr) return refuse("called an object it does not have");
    const CallSection section("call from ", session->peer().pid, header.code, in.transportSize());
    const CallContext context(session->peer().pid, session->peer().uid, session.get(), this);
    binder_status_t status = target.get()->local()->dispatch(header.code, in, out);
    if (status == STATUS_OK && out.transportSize() > MAX_CALL) status = STATUS_FAILED_TRANSACTION;
    if (status == STATUS_OK) status = session->objects().pack(out, *session);
    if (status != STATUS_OK) out.reset();
    if (!out.objects().empty()) mReplied = peersObjects(out);
    return out.frame(FrameKind::Reply, 0, static_cast<uint32_t>(status));
}

bool Stream::await(const std::shared_ptr<Session>& session, AParcel& parcel, binder_status_t& status) try {
    FrameHeader header{};
    for (;;) {
        AParcel in;
        const Result result = read(header, in, parcel, 0);
        if (result == Result::Malformed) session->end("sent a frame that makes no sense");
        if (result != Result::Frame) return false;
        if (header.kind == FrameKind::Reply) break;
        AParcel out;
        const Bytes answer = run(session, header, in, out);
        session->flush();
        if (answer.empty() || !send(answer)) return false;
    }
    status = static_cast<binder_status_t>(header.code);
    if (session->objects().receive(parcel, session)) return true;
    session->end("sent an object it cannot mean");
    return false;
} catch (...) {
    // The reply may be still to come: the call around this one must not take it for its own.
    mBuffer.lose();
    shutdown(mFd.get(), SHUT_RDWR);
    throw;
}

}  // namespace binder
