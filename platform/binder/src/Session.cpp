#include "Session.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <limits>

#include "DeathRecipient.h"
#include "IBinder.h"
#include "Log.h"
#include "NameFolder.h"
#include "Process.h"
#include "RemoteBinder.h"
#include "ThreadPool.h"

namespace binder {
namespace {

// Connections for calls in one direction: one for each thread that waits for a reply. Each may hold a frame half read,
// so this bounds the memory for those, too.
constexpr size_t kMaxConnections = 64;
// How long a caller waits for a connection that may never come.
constexpr std::chrono::seconds kConnectionTime{5};

// What may wait for a peer that does not read: this much here, the rest of half a megabyte in the socket.
constexpr int kSocketBuffer = 64 * 1024;
constexpr size_t kMaxWaiting = 512 * 1024 - 2 * kSocketBuffer;
// References given back are never lost; a peer that lets this much wait breaks the session.
constexpr size_t kMaxWaitingReleases = 1024 * 1024;

// How long a binder thread waits on a quiet connection before it looks whether another one needs it.
void setLingerTime(int fd) {
    const timeval time{0, 20'000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time));
}

// Oneway calls that were read and wait for a busy object, before the rest is left in the socket.
constexpr size_t kMaxQueued = 128 * 1024;

struct Sessions {
    std::mutex lock;
    std::vector<std::shared_ptr<Session>> all;
};

Sessions& sessions() {
    static auto* const instance = new Sessions;  // outlives the threads that still use it at exit
    return *instance;
}

template <typename Predicate>
std::shared_ptr<Session> findSession(Predicate predicate) {
    std::lock_guard lock(sessions().lock);
    const auto& all = sessions().all;
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& each) { return predicate(*each); });
    return found == all.end() ? nullptr : *found;
}

}  // namespace

bool Session::start(UniqueFd control) {
    setsockopt(control.get(), SOL_SOCKET, SO_SNDBUF, &kSocketBuffer, sizeof(kSocketBuffer));
    setLingerTime(control.get());
    auto connection = std::make_shared<Connection>(std::move(control), Connection::Role::Control, shared_from_this());
    {
        std::lock_guard lock(mSendLock);
        mControl = connection;
    }
    {
        std::lock_guard lock(sessions().lock);
        sessions().all.push_back(shared_from_this());
    }
    if (Poller::instance().add(connection, EPOLLIN)) return true;
    end();
    return false;
}

std::shared_ptr<Session> Session::find(const Key& key) {
    return findSession([&key](const Session& each) { return each.mKey == key; });
}

size_t Session::countOf(pid_t pid) {
    std::lock_guard lock(sessions().lock);
    const auto& all = sessions().all;
    return static_cast<size_t>(std::count_if(
        all.begin(), all.end(), [pid](const auto& each) { return each->mPeer.pid == pid && each->isAlive(); }));
}

std::shared_ptr<Session> Session::findProcess(const Key& process, pid_t pid) {
    return findSession(
        [&](const Session& each) { return each.mPeer.process == process && each.mPeer.pid == pid && each.isAlive(); });
}

binder_status_t Session::call(uint32_t target, uint32_t code, AParcel& parcel) {
    if (parcel.size() + parcel.objects().size() * sizeof(uint32_t) > kMaxCall) return STATUS_FAILED_TRANSACTION;
    std::shared_ptr<Connection> connection;
    binder_status_t status = acquire(&connection);
    if (status != STATUS_OK) return status;
    status = mObjects.pack(parcel, *this);
    if (status == STATUS_OK) status = exchange(*connection, target, code, parcel);
    giveBack(std::move(connection));
    return status;
}

binder_status_t Session::exchange(Connection& connection, uint32_t target, uint32_t code, AParcel& parcel) {
    FrameHeader header{};
    std::vector<uint32_t> offsets;
    const bool replied = connection.writeAll(parcel.frame(FrameKind::Call, target, code)) &&
                         connection.read(header, parcel, offsets, 0) == Connection::ReadResult::Frame;
    if (replied && header.kind == FrameKind::Reply && mObjects.receive(parcel, offsets, shared_from_this())) {
        return static_cast<binder_status_t>(header.code);
    }
    if (replied) fail("sent a reply that makes no sense");
    cut();
    return STATUS_DEAD_OBJECT;
}

binder_status_t Session::post(uint32_t target, uint32_t code, AParcel& parcel) {
    if (parcel.size() + parcel.objects().size() * sizeof(uint32_t) > kMaxOneway) return STATUS_FAILED_TRANSACTION;
    const binder_status_t packed = mObjects.pack(parcel, *this);
    if (packed != STATUS_OK) return packed;
    const auto result = send(FrameKind::Oneway, target, code, parcel, kMaxWaiting);
    if (result == Connection::WriteResult::Full) mObjects.unpack(parcel);
    parcel.reset();
    if (result == Connection::WriteResult::Closed) cut();
    return result == Connection::WriteResult::Closed ? STATUS_DEAD_OBJECT
           : result == Connection::WriteResult::Full ? STATUS_FAILED_TRANSACTION
                                                     : STATUS_OK;
}

void Session::release(uint32_t target, uint64_t count) {
    constexpr uint64_t kMost = std::numeric_limits<uint32_t>::max();
    AParcel empty;
    while (count != 0 && isAlive()) {
        const auto part = static_cast<uint32_t>(std::min(count, kMost));
        count -= part;
        const auto result = send(FrameKind::Release, target, part, empty, kMaxWaitingReleases);
        if (result == Connection::WriteResult::Full) fail("does not read what is given back to it");
    }
}

Connection::WriteResult Session::send(FrameKind kind, uint32_t target, uint32_t code, AParcel& parcel, size_t limit) {
    std::lock_guard lock(mSendLock);
    if (mControl == nullptr) return Connection::WriteResult::Closed;
    const auto result = mControl->write(parcel.frame(kind, target, code), limit);
    if (result == Connection::WriteResult::Full && !mIsFull) {
        mIsFull = true;
        warn("process %d does not read: oneway calls to it fail until it does", mPeer.pid);
    }
    return result;
}

void Session::flushControl() {
    std::lock_guard lock(mSendLock);
    if (mControl != nullptr && mControl->flush() == Connection::WriteResult::Done) mIsFull = false;
}

binder_status_t Session::acquire(std::shared_ptr<Connection>* connection) {
    std::unique_lock lock(mConnectionsLock);
    const bool isNew = mIdle.empty() && isAlive() && mOutgoing < kMaxConnections;
    if (isNew) {
        ++mOutgoing;
        if (mAddress.empty()) ++mAsked;
        lock.unlock();
        if (mAddress.empty()) askReverse();
        if (!mAddress.empty()) *connection = openCall();
        if (*connection != nullptr) return STATUS_OK;
        lock.lock();
    }
    // With all connections open and in use one comes back; one that is still to be opened may never come.
    return takeIdle(lock, connection, isNew || mAddress.empty());
}

binder_status_t Session::takeIdle(std::unique_lock<std::mutex>& lock, std::shared_ptr<Connection>* connection,
                                  bool mayNeverCome) {
    const auto decided = [this] { return !mIdle.empty() || !isAlive() || mOutgoing == 0; };
    if (mayNeverCome) {
        mIdleChanged.wait_for(lock, kConnectionTime, decided);
    } else {
        mIdleChanged.wait(lock, decided);
    }
    if (!isAlive()) return STATUS_DEAD_OBJECT;
    if (mIdle.empty()) return STATUS_FAILED_TRANSACTION;
    *connection = std::move(mIdle.back());
    mIdle.pop_back();
    return STATUS_OK;
}

// Null when the name is not there or this process has no descriptors: its peer may live all the same.
std::shared_ptr<Connection> Session::openCall() {
    if (UniqueFd fd = connectHello(HelloKind::Call); fd.isValid()) {
        auto connection = std::make_shared<Connection>(std::move(fd), Connection::Role::Call, shared_from_this());
        if (adopt(connection)) return connection;
    } else if (isControlLost()) {
        cut();
    } else if (isFirst(Trouble::Connection)) {
        warn("no new connection to process %d", mPeer.pid);
    }
    std::lock_guard lock(mConnectionsLock);
    --mOutgoing;
    mIdleChanged.notify_all();
    return nullptr;
}

void Session::askReverse() {
    AParcel empty;
    const auto result = send(FrameKind::OpenReverse, 0, 0, empty, kMaxWaitingReleases);
    if (result == Connection::WriteResult::Done || result == Connection::WriteResult::Queued) return;
    std::lock_guard lock(mConnectionsLock);
    if (mAsked == 0) return;  // it came unasked
    --mAsked;
    --mOutgoing;
    mIdleChanged.notify_all();
}

UniqueFd Session::connectHello(HelloKind kind) const {
    UniqueFd fd = NameFolder::connect(mAddress);
    const Hello hello{kProtocol, kind, mKey};
    if (peerOf(fd).pid != mPeer.pid || ::send(fd.get(), &hello, sizeof(hello), MSG_NOSIGNAL) != sizeof(hello))
        return UniqueFd();
    return fd;
}

// Keeps a connection, so that it ends with the session; false when that has ended.
bool Session::adopt(const std::shared_ptr<Connection>& connection) {
    std::lock_guard lock(mConnectionsLock);
    if (!isAlive()) return false;
    mConnections.push_back(connection);
    return true;
}

void Session::giveBack(std::shared_ptr<Connection> connection) {
    std::lock_guard lock(mConnectionsLock);
    if (!isAlive()) return;
    mIdle.push_back(std::move(connection));
    mIdleChanged.notify_one();
}

bool Session::addServed(UniqueFd&& fd) {
    setLingerTime(fd.get());
    std::shared_ptr<Connection> connection;
    {
        std::lock_guard lock(mConnectionsLock);
        if (!isAlive() || mServed == kMaxConnections) return false;
        connection = std::make_shared<Connection>(std::move(fd), Connection::Role::Serve, shared_from_this());
        ++mServed;
        mConnections.push_back(connection);
    }
    if (Poller::instance().add(connection, EPOLLIN)) return true;
    remove(connection);
    return false;
}

bool Session::addReverse(UniqueFd&& fd) {
    std::lock_guard lock(mConnectionsLock);
    if (!isAlive() || mAsked == 0) return false;
    --mAsked;
    mIdle.push_back(std::make_shared<Connection>(std::move(fd), Connection::Role::Call, shared_from_this()));
    mConnections.push_back(mIdle.back());
    mIdleChanged.notify_one();
    return true;
}

void Session::openReverse() {
    UniqueFd fd = connectHello(HelloKind::Reverse);
    const bool isOpen = fd.isValid() && addServed(std::move(fd));
    if (!isOpen && isFirst(Trouble::Connection)) warn("process %d cannot call back: no connection", mPeer.pid);
}

void Session::remove(const std::shared_ptr<Connection>& connection) {
    Poller::instance().remove(*connection);
    std::lock_guard lock(mConnectionsLock);
    if (std::erase(mConnections, connection) != 0) --mServed;
}

void Session::unqueue(size_t size) {
    if (mQueued.fetch_sub(size, std::memory_order_relaxed) - size < kMaxQueued / 2) resume();
}

bool Session::park(const std::shared_ptr<Connection>& control) {
    if (mQueued.load(std::memory_order_relaxed) < kMaxQueued) return false;
    std::lock_guard lock(mParkLock);
    if (!isAlive() || mQueued.load(std::memory_order_relaxed) < kMaxQueued / 2) return false;
    mParked = control;
    return true;
}

void Session::resume() {
    std::shared_ptr<Connection> parked;
    {
        std::lock_guard lock(mParkLock);
        parked = std::move(mParked);
    }
    if (parked != nullptr) ThreadPool::instance().enqueue(std::move(parked));
}

void Session::fail(const char* reason) {
    if (isAlive() && !mFailed.exchange(true)) warn("process %d %s: its connections are closed", mPeer.pid, reason);
    cut();
}

void Session::cut() {
    mAlive.store(false, std::memory_order_release);
    {
        std::lock_guard lock(mSendLock);
        if (mControl != nullptr) mControl->shutdown();
    }
    {
        std::lock_guard lock(mConnectionsLock);
        for (const auto& each : mConnections) each->shutdown();
    }
    mIdleChanged.notify_all();
    resume();
}

// The only proof of the peer's death, which the control connection's reader may hear of later.
bool Session::isControlLost() {
    std::lock_guard lock(mSendLock);
    if (mControl == nullptr) return true;
    pollfd control{mControl->fd(), 0, 0};
    return poll(&control, 1, 0) > 0;
}

void Session::end() {
    if (mEnded.exchange(true)) return;
    cut();
    {
        std::lock_guard lock(sessions().lock);
        std::erase(sessions().all, shared_from_this());
    }
    std::shared_ptr<Connection> control;
    std::vector<std::shared_ptr<Connection>> idle;
    {
        std::lock_guard lock(mSendLock);
        control = std::move(mControl);
    }
    {
        std::lock_guard lock(mConnectionsLock);
        idle.swap(mIdle);
        std::erase_if(mConnections, [](const auto& each) { return each->role() == Connection::Role::Call; });
    }
    if (control != nullptr) Poller::instance().remove(*control);
    for (const ndk::SpAIBinder& proxy : mObjects.close()) sendObituaries(*proxy.get()->remote());
}

}  // namespace binder
