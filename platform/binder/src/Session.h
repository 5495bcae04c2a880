#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Connection.h"
#include "Frame.h"
#include "ObjectTable.h"

namespace binder {

// What this process and one other share, from the first contact to the end of the control connection.
//
//   table of sessions --shared--> Session --shared--> its connections --shared--> Session
//   proxies           --shared--> Session ..weak..>   proxies
//
// end() cuts the table's entry and the session's own references, which opens the circle. Thread: any.
class Session : public std::enable_shared_from_this<Session> {
public:
    struct Peer {
        Key process{};
        pid_t pid = 0;
        uid_t uid = 0;
    };

    // `address` is the name that the peer serves, at the side that opened the session; empty at the other one.
    Session(const Key& key, const Peer& peer, std::string address)
        : mKey(key), mPeer(peer), mAddress(std::move(address)) {}

    [[nodiscard]] const Key& key() const { return mKey; }
    [[nodiscard]] const Peer& peer() const { return mPeer; }
    [[nodiscard]] ObjectTable& objects() { return mObjects; }
    [[nodiscard]] bool isOpener() const { return !mAddress.empty(); }
    [[nodiscard]] bool isAlive() const { return mAlive.load(std::memory_order_acquire); }

    // Makes the session known and its control connection watched. False when the system refuses.
    [[nodiscard]] bool start(UniqueFd control);
    [[nodiscard]] static std::shared_ptr<Session> find(const Key& key);
    // Living sessions with a process.
    [[nodiscard]] static size_t countOf(pid_t pid);
    // A living session with this process, whoever opened it.
    [[nodiscard]] static std::shared_ptr<Session> findProcess(const Key& process, pid_t pid);

    // Turns the call in `parcel` into its reply.
    [[nodiscard]] binder_status_t call(uint32_t target, uint32_t code, AParcel& parcel);
    // Queues a oneway call; leaves `parcel` empty.
    [[nodiscard]] binder_status_t post(uint32_t target, uint32_t code, AParcel& parcel);
    // Gives references of the peer's object back.
    void release(uint32_t target, uint64_t count);

    // A connection on which the peer calls; false, and it stays the caller's, when it has too many.
    [[nodiscard]] bool addServed(UniqueFd&& fd);
    // A connection that the peer opened for calls from here; false, as above, when none was asked for.
    [[nodiscard]] bool addReverse(UniqueFd&& fd);
    // Opens one for the peer, who asked for it. Only the opener of the session can.
    void openReverse();
    // A served connection is at its end.
    void remove(const std::shared_ptr<Connection>& connection);

    void flushControl();

    // Oneway calls that came in and wait for their object.
    void queue(size_t size) { mQueued.fetch_add(size, std::memory_order_relaxed); }
    void unqueue(size_t size);
    // Leaves the control connection unread while too much waits; false when it does not.
    [[nodiscard]] bool park(const std::shared_ptr<Connection>& control);

    // What is told once for a session, however often it comes.
    enum class Trouble : size_t { Token, Connection };
    [[nodiscard]] bool isFirst(Trouble trouble) { return !mTold[static_cast<size_t>(trouble)].exchange(true); }

    // The peer broke a rule: one line in the log, and the session comes to its end.
    void fail(const char* reason);
    [[nodiscard]] bool hasFailed() const { return mFailed.load(std::memory_order_relaxed); }
    // The control connection has ended: obituaries, on this thread, and everything is given back. Thread: binder.
    void end();

private:
    [[nodiscard]] binder_status_t acquire(std::shared_ptr<Connection>* connection);
    [[nodiscard]] binder_status_t takeIdle(std::unique_lock<std::mutex>& lock, std::shared_ptr<Connection>* connection,
                                           bool mayNeverCome);
    [[nodiscard]] std::shared_ptr<Connection> openCall();
    void askReverse();
    void giveBack(std::shared_ptr<Connection> connection);
    [[nodiscard]] binder_status_t exchange(Connection& connection, uint32_t target, uint32_t code, AParcel& parcel);
    [[nodiscard]] UniqueFd connectHello(HelloKind kind) const;
    [[nodiscard]] bool adopt(const std::shared_ptr<Connection>& connection);
    [[nodiscard]] Connection::WriteResult send(FrameKind kind, uint32_t target, uint32_t code, AParcel& parcel,
                                               size_t limit);
    // Nothing works from here on; the control connection's reader notices and ends the session.
    void cut();
    [[nodiscard]] bool isControlLost();
    void resume();

    const Key mKey;
    const Peer mPeer;
    const std::string mAddress;
    ObjectTable mObjects;
    std::atomic<bool> mAlive{true};
    std::atomic<bool> mFailed{false};
    std::atomic<bool> mEnded{false};
    std::array<std::atomic<bool>, 2> mTold{};

    std::mutex mSendLock;
    std::shared_ptr<Connection> mControl;  // whose writing side the lock guards too
    bool mIsFull = false;

    std::mutex mConnectionsLock;
    std::condition_variable mIdleChanged;
    std::vector<std::shared_ptr<Connection>> mConnections;  // all but the control connection
    std::vector<std::shared_ptr<Connection>> mIdle;         // for calls from here, the last used one at the end
    size_t mServed = 0;
    size_t mOutgoing = 0;  // open or asked for
    size_t mAsked = 0;     // asked for, not there yet

    std::atomic<size_t> mQueued{0};
    std::mutex mParkLock;
    std::shared_ptr<Connection> mParked;
};

}  // namespace binder
