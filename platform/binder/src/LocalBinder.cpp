#include "LocalBinder.h"

#include "CallContext.h"
#include "Dump.h"
#include "Log.h"
#include "Mark.h"
#include "Session.h"

#include <new>
#include <utility>

namespace binder {

bool LocalBinder::associate(const AIBinder_Class* clazz) {
    if (clazz == mClass) return true;
    if (clazz->descriptor == mClass->descriptor) {
        warn("the class %s is defined twice; an object belongs to one of them only", clazz->descriptor.c_str());
    }
    return false;
}

binder_status_t LocalBinder::transact(uint32_t code, AParcel& parcel, bool oneway) {
    AParcel reply;
    parcel.setPosition(0);
    const binder_status_t status = dispatch(code, parcel, reply);
    if (oneway) reply.reset();
    parcel = std::move(reply);
    parcel.setPosition(0);
    return oneway ? STATUS_OK : status;
}

binder_status_t LocalBinder::dispatch(uint32_t code, const AParcel& in, AParcel& out) try {
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) return dispatchOwn(code, in, out);
    if (!mClass->takeToken(in)) {
        warn("a call %u to %s carries the token of another interface", code, mClass->descriptor.c_str());
        return STATUS_BAD_TYPE;
    }
    return mClass->onTransact(this, code, &in, &out);
} catch (const std::bad_alloc&) {
    warn("a call %u to %s fails: no memory", code, mClass->descriptor.c_str());
    return STATUS_NO_MEMORY;
}

// What every object answers, whatever its class.
binder_status_t LocalBinder::dispatchOwn(uint32_t code, const AParcel& in, AParcel& out) {
    switch (code) {
        case PING_CODE:
            return STATUS_OK;
        case DUMP_CODE:
            return answerDump(this, in, out);
        case EXTENSION_CODE:
            return AParcel_writeStrongBinder(&out, extension().get());
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

bool LocalBinder::enterOneway(OnewayCall& call) {
    const device::MutexLock lock(mLock);
    if (mIsOnewayRunning) {
        mOneways.push_back(std::move(call));
        return false;
    }
    mIsOnewayRunning = true;
    return true;
}

void LocalBinder::runOneways(OnewayCall& call) {
    runOneway(call);
    while (std::optional<OnewayCall> next = nextOneway()) runOneway(*next);
}

std::optional<OnewayCall> LocalBinder::nextOneway() {
    const device::MutexLock lock(mLock);
    if (mOneways.empty()) {
        mIsOnewayRunning = false;
        return std::nullopt;
    }
    std::optional<OnewayCall> next(std::move(mOneways.front()));
    mOneways.pop_front();
    return next;
}

void LocalBinder::runOneway(OnewayCall& call) {
    constexpr pid_t NOBODY = 0;
    const size_t size = call.in.transportSize();
    {
        const CallSection section("oneway from ", call.session->peer().pid, call.code, size, call.place);
        const CallContext context(NOBODY, call.session->peer().uid, nullptr, nullptr);
        AParcel discarded;
        dispatch(call.code, call.in, discarded);
    }
    call.session->inbox().onRun(size);
}

ndk::SpAIBinder LocalBinder::extension() {
    const device::MutexLock lock(mLock);
    return mExtension;
}

void LocalBinder::setExtension(ndk::SpAIBinder extension) {
    const device::MutexLock lock(mLock);
    std::swap(mExtension, extension);
}

}  // namespace binder
