#include "CallContext.h"

#include <android/binder_ibinder.h>

#include <unistd.h>

namespace binder {
namespace {
thread_local const CallContext* tCurrent = nullptr;
}

CallContext::CallContext(pid_t pid, uid_t uid, const Session* session, Stream* stream)
    : mPid(pid), mUid(uid), mSession(session), mStream(stream), mOuter(tCurrent) {
    tCurrent = this;
}

CallContext::~CallContext() {
    tCurrent = mOuter;
}

const CallContext* CallContext::current() {
    return tCurrent;
}

Stream* CallContext::streamOf(const Session& session) {
    const CallContext* each = tCurrent;
    while (each != nullptr && (each->mStream == nullptr || each->mSession != &session)) each = each->mOuter;
    return each == nullptr ? nullptr : each->mStream;
}

}  // namespace binder

uid_t AIBinder_getCallingUid() {
    const auto* context = binder::CallContext::current();
    return context == nullptr ? getuid() : context->uid();
}

pid_t AIBinder_getCallingPid() {
    const auto* context = binder::CallContext::current();
    return context == nullptr ? getpid() : context->pid();
}
