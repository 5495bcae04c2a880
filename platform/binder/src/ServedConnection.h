#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "PeerCosts.h"
#include "Poller.h"
#include "Stream.h"

namespace binder {

// A connection on which a peer calls. It belongs to the binder thread that its poller woke, until that one has
// answered; then to the poller again, or to the I/O thread while the peer does not read its reply. Thread: binder.
class ServedConnection final : public Pollable, public std::enable_shared_from_this<ServedConnection> {
public:
    // False when the peer has too many, the session has ended, or the system refuses.
    [[nodiscard]] static bool start(const std::shared_ptr<Session>& session, UniqueFd fd);
    ServedConnection(std::shared_ptr<Session> session, UniqueFd fd, Charge charge);

    // Ends it for both sides; its owner notices. Thread: any.
    void shutdown();

    [[nodiscard]] int fd() const override { return mStream.fd().get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override;

private:
    void serve();
    void answer(Bytes reply);
    void flush();
    // Waits for the next call, or until more of the reply can be written.
    void arm();
    [[nodiscard]] bool armFlush();
    void lose(const char* what);
    void close();

    const std::shared_ptr<Session> mSession;
    const Charge mCharge;
    Stream mStream;
    PollKey mKey = 0;             // of the binder threads
    PollKey mFlushKey = 0;        // of the I/O thread
    std::vector<uint8_t> mReply;  // what the peer has not read yet
    size_t mWritten = 0;
};

}  // namespace binder
