#include "CallContext.h"

#include <android/binder_ibinder.h>
#include <unistd.h>

namespace binder {
namespace {
thread_local const CallContext* sCurrent = nullptr;
}

CallContext::CallContext(pid_t pid, uid_t uid) : mPid(pid), mUid(uid), mOuter(sCurrent) {
    sCurrent = this;
}

CallContext::~CallContext() {
    sCurrent = mOuter;
}

const CallContext* CallContext::current() {
    return sCurrent;
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
