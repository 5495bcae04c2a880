#include "LocalBinder.h"

#include "CallContext.h"
#include "Log.h"
#include "Session.h"

namespace binder {

bool LocalBinder::associate(const AIBinder_Class* clazz) {
    if (clazz == mClass) return true;
    if (clazz->descriptor == mClass->descriptor) {
        warn("the class %s is defined twice; an object belongs to one of them only", clazz->descriptor.c_str());
    }
    return false;
}

binder_status_t LocalBinder::transact(uint32_t code, std::unique_ptr<AParcel>& parcel, bool oneway) {
    auto reply = std::make_unique<AParcel>();
    parcel->setPosition(0);
    const binder_status_t status = dispatch(nullptr, code, *parcel, *reply);
    if (oneway) reply->reset();
    reply->setPosition(0);
    parcel = std::move(reply);
    return oneway ? STATUS_OK : status;
}

binder_status_t LocalBinder::dispatch(Session* caller, uint32_t code, const AParcel& in, AParcel& out) {
    if (code == kPingCode) return STATUS_OK;
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) return STATUS_UNKNOWN_TRANSACTION;
    if (!mClass->takeToken(in)) {
        if (caller == nullptr || caller->isFirst(Session::Trouble::Token))
            warn("a call %u to %s carries the token of another interface", code, mClass->descriptor.c_str());
        return STATUS_BAD_TYPE;
    }
    return mClass->onTransact(this, code, &in, &out);
}

bool LocalBinder::enterOneway(const std::shared_ptr<Session>& session, uint32_t code, AParcel& in) {
    std::lock_guard lock(mOnewayLock);
    if (!mOnewayRunning) {
        mOnewayRunning = true;
        return true;
    }
    mOneway.push_back({session, code, std::move(in)});
    session->queue(mOneway.back().size());
    return false;
}

void LocalBinder::runOneways(Session& session, uint32_t code, const AParcel& in) {
    runOneway(session, code, in);
    while (std::optional<OnewayCall> next = nextOneway()) {
        next->session->unqueue(next->size());
        runOneway(*next->session, next->code, next->in);
    }
}

std::optional<LocalBinder::OnewayCall> LocalBinder::nextOneway() {
    std::lock_guard lock(mOnewayLock);
    if (mOneway.empty()) {
        mOnewayRunning = false;
        return std::nullopt;
    }
    std::optional<OnewayCall> next(std::move(mOneway.front()));
    mOneway.pop_front();
    return next;
}

void LocalBinder::runOneway(Session& session, uint32_t code, const AParcel& in) {
    constexpr pid_t kNobody = 0;
    CallContext context(kNobody, session.peer().uid);
    AParcel discarded;
    dispatch(&session, code, in, discarded);
}

}  // namespace binder
