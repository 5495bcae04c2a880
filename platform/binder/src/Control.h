#pragma once

#include "Poller.h"

namespace binder {

class Session;

// The socket that brings call connections of the peer, and takes those that this process opens to it. Thread: the I/O
// thread, where nothing else is said.
class Control final : public Pollable {
public:
    Control(Session& session, UniqueFd fd) : mSession(session), mFd(std::move(fd)) {}

    // Begins to listen, and keeps the session until end(). False, with errno, when the system refuses. Thread: any.
    [[nodiscard]] bool start();
    // Gives the peer its end of a connection. False, with errno, when it cannot take it. Thread: any.
    [[nodiscard]] bool pass(const UniqueFd& end) const;
    // Thread: any.
    void end();
    [[nodiscard]] const UniqueFd& socket() const { return mFd; }

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override;

private:
    Session& mSession;
    const UniqueFd mFd;
    PollKey mKey = 0;
};

}  // namespace binder
