#pragma once

#include <sys/types.h>

namespace binder {

class Session;
class Stream;

// The call that this thread runs for a peer, for a scope; calls may nest.
class CallContext {
public:
    // `stream` is the connection on which the caller waits; null in a oneway call.
    CallContext(pid_t pid, uid_t uid, const Session* session, Stream* stream);
    ~CallContext();
    CallContext(const CallContext&) = delete;
    CallContext& operator=(const CallContext&) = delete;

    static const CallContext* current();
    // The innermost connection on which a thread of this session's peer waits for this thread, or null.
    static Stream* streamOf(const Session& session);
    [[nodiscard]] pid_t pid() const { return mPid; }
    [[nodiscard]] uid_t uid() const { return mUid; }

private:
    const pid_t mPid;
    const uid_t mUid;
    const Session* const mSession;
    Stream* const mStream;
    const CallContext* const mOuter;
};

}  // namespace binder
