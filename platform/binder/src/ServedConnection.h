#pragma once

#include "PeerCosts.h"
#include "Poller.h"
#include "Stream.h"

#include <device/Mutex.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace binder {

// A connection on which a peer calls. The binder thread that takes it when a call arrives owns its reading side until
// the reply is on its way. What arrives meanwhile is the owner's, too: other threads leave it alone. Thread: binder.
class ServedConnection final : public Pollable, public std::enable_shared_from_this<ServedConnection> {
public:
    // Closes it, with a line, when the peer has too many or the system refuses; without one when the session has ended.
    static void start(const std::shared_ptr<Session>& session, UniqueFd fd);
    ServedConnection(std::shared_ptr<Session> session, UniqueFd fd, Charge charge);

    // Ends it for both sides; its owner notices. Thread: any.
    void end();

    [[nodiscard]] int fd() const override { return mStream.fd().get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override;

private:
    // Writes the rest of a reply, on the I/O thread.
    struct Flusher final : public Pollable {
        explicit Flusher(ServedConnection& connection) : owner(connection) {}
        [[nodiscard]] int fd() const override { return owner.fd(); }
        void onReady(uint32_t) override { owner.flush(); }
        void onNoMemory() override {}
        ServedConnection& owner;
    };

    void answer(Bytes reply);
    void flush();
    [[nodiscard]] bool awaitRoom() SUBSYS_REQUIRES(mReplyLock);
    // Leaves it to whoever is woken next.
    void release();
    void lose();
    void close();

    const std::shared_ptr<Session> mSession;
    const Charge mCharge;
    PollKey mKey = 0;
    std::atomic<bool> mIsOwned{false};

    Stream mStream;  // the owner's

    device::Mutex mReplyLock;
    Flusher mFlusher{*this};
    PollKey mFlushKey SUBSYS_GUARDED_BY(mReplyLock) = 0;
    std::vector<uint8_t> mReply SUBSYS_GUARDED_BY(mReplyLock);  // what the peer has not read yet
    size_t mWritten SUBSYS_GUARDED_BY(mReplyLock) = 0;
};

}  // namespace binder
