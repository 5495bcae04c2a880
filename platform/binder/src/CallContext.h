#pragma once

#include <sys/types.h>

namespace binder {

// Makes a peer the calling process of this thread for a scope; calls may nest.
class CallContext {
public:
    CallContext(pid_t pid, uid_t uid);
    ~CallContext();
    CallContext(const CallContext&) = delete;
    CallContext& operator=(const CallContext&) = delete;

    static const CallContext* current();
    [[nodiscard]] pid_t pid() const { return mPid; }
    [[nodiscard]] uid_t uid() const { return mUid; }

private:
    const pid_t mPid;
    const uid_t mUid;
    const CallContext* const mOuter;
};

}  // namespace binder
