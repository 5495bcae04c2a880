#pragma once

#include "Calls.h"
#include "Control.h"
#include "Inbox.h"
#include "ObjectTable.h"
#include "Outbox.h"
#include "PeerCosts.h"

#include <device/Mutex.h>

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace binder {

class ServedConnection;

// What this process and one other share, from the first contact to the end of a channel.
//
//   registry, pollers (for inbox and control socket), proxies, served connections --shared--> Session ..weak..>
//   proxies, connections
//
// end() takes it out of the registry and the I/O thread's poller, and shuts everything down; the binder thread that
// reads the inbox to its end takes it out of its poller. Thread: any.
class Session : public std::enable_shared_from_this<Session> {
public:
    struct Peer {
        Key process{};
        pid_t pid = 0;
        uid_t uid = 0;
    };

    // Makes the session known and begins to read. Null, with errno, when the peer has too many (EUSERS) or the system
    // refuses.
    [[nodiscard]] static std::shared_ptr<Session> open(const Peer& peer, UniqueFd control, UniqueFd in, UniqueFd out);
    // The living sessions.
    [[nodiscard]] static std::vector<std::shared_ptr<Session>> all();
    // The living session with this process, or null.
    [[nodiscard]] static std::shared_ptr<Session> find(const Key& process, pid_t pid);
    Session(const Peer& peer, UniqueFd control, UniqueFd in, UniqueFd out, Charge charge);

    [[nodiscard]] const Peer& peer() const { return mPeer; }
    [[nodiscard]] ObjectTable& objects() { return mObjects; }
    [[nodiscard]] Inbox& inbox() { return mIn; }
    [[nodiscard]] Outbox& outbox() { return *mOut; }
    [[nodiscard]] Control& control() { return mControl; }
    [[nodiscard]] bool isAlive() const { return mAlive.load(std::memory_order_acquire); }

    // Turns the call in `parcel` into its reply.
    [[nodiscard]] binder_status_t call(uint32_t target, uint32_t code, AParcel& parcel);
    // Sends a oneway call; leaves `parcel` empty.
    [[nodiscard]] binder_status_t post(uint32_t target, uint32_t code, AParcel& parcel);
    // What this process sent to the peer before leaves first; to be called before anything is sent on another socket.
    void flush() { mOut->flushDeferred(); }
    static void flushAll();
    // Gives references of the peer's object back.
    void release(uint32_t target, uint64_t count);
    // A connection broke. STATUS_DEAD_OBJECT, and the session is ended, when the peer died; STATUS_FAILED_TRANSACTION
    // when it is the only one.
    [[nodiscard]] binder_status_t onLost();

    // A connection on which the peer calls; false when the session has ended.
    [[nodiscard]] bool addServed(const std::shared_ptr<ServedConnection>& connection);
    void removeServed(const ServedConnection& connection);

    // Of the peer's calls, those that no thread has taken yet; all its oneway calls together count as one.
    [[nodiscard]] uint32_t waitingCalls();

    // Nothing works from here on. `breach`: what rule the peer broke, for the log; null when it died. The first call
    // counts.
    void end(const char* breach = nullptr);
    // Whether the peer broke a rule: what it sent behind is not run.
    [[nodiscard]] bool hasFailed() const { return mFailed.load(std::memory_order_relaxed); }
    // The inbox is at its end: obituaries, and everything is given back. Nobody hears of the death where one of them
    // throws, so that ends the process. Thread: binder.
    void bury() noexcept;  // NOLINT(bugprone-exception-escape): that is meant

private:
    const Peer mPeer;
    std::optional<Charge> mCharge;  // until end()
    ObjectTable mObjects;
    Calls mCalls;
    const std::shared_ptr<Outbox> mOut;
    Inbox mIn;
    Control mControl;
    std::atomic<bool> mAlive{true};
    std::atomic<bool> mFailed{false};
    std::atomic<bool> mBuried{false};

    device::Mutex mServedLock;
    std::vector<std::weak_ptr<ServedConnection>> mServed SUBSYS_GUARDED_BY(mServedLock);
};

}  // namespace binder
