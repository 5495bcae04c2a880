#pragma once

#include "Stream.h"

#include <device/Mutex.h>

#include <condition_variable>
#include <memory>
#include <vector>

namespace binder {

class Session;

// The calls from this process to a peer: each waits for its reply on a connection of its own, and connections are used
// again. A call that a thread makes while it runs one of the peer's goes over that one's connection. Thread: any.
class Calls {
public:
    // Turns the call in `parcel`, whose objects are packed, into its reply.
    [[nodiscard]] binder_status_t call(const std::shared_ptr<Session>& session, uint32_t target, uint32_t code,
                                       AParcel& parcel);
    // Every call that waits returns STATUS_DEAD_OBJECT.
    void end();

private:
    [[nodiscard]] binder_status_t acquire(Session& session, std::unique_ptr<Stream>& stream);
    [[nodiscard]] std::unique_ptr<Stream> open(Session& session);
    [[nodiscard]] bool send(Stream& stream, Bytes frame);
    void giveBack(std::unique_ptr<Stream> stream);
    void drop(std::unique_ptr<Stream> stream);

    device::Mutex mLargeLock;  // held while a large call is written

    device::Mutex mLock;
    std::condition_variable mChanged;
    bool mEnded SUBSYS_GUARDED_BY(mLock) = false;
    size_t mOpen SUBSYS_GUARDED_BY(mLock) = 0;
    std::vector<Stream*> mUsed SUBSYS_GUARDED_BY(mLock);
    std::vector<std::unique_ptr<Stream>> mIdle SUBSYS_GUARDED_BY(mLock);  // the last used one at the end
};

}  // namespace binder
