#include "ServiceManager.h"

#include "Acceptor.h"
#include "IBinder.h"
#include "Log.h"
#include "NameFolder.h"
#include "NameWatch.h"
#include "Process.h"
#include "Session.h"
#include "Socket.h"
#include "ThreadPool.h"

#include <android/binder_manager.h>
#include <device/Mutex.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace binder {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto GET_SERVICE_TIME = 5s;
constexpr auto FOR_EVER = 24h * 365 * 100;
// A service that was there but did not answer is asked again after this time, though its name did not change.
constexpr auto ASK_AGAIN = 1s;

// A name of this process, whose lock ends with the process.
struct Service {
    ndk::SpAIBinder object;
    UniqueFd lock;
    ino_t socket = 0;
};

struct Registry {
    device::Mutex addLock;   // one registration at a time
    device::Mutex openLock;  // one new session at a time, so that there is one for each process
    device::Mutex lock;
    std::map<std::string, Service> services SUBSYS_GUARDED_BY(lock);
};

Registry& registry() {
    static auto* const instance = new Registry;  // outlives the threads that still use it at exit
    return *instance;
}

// Whether the threads are there that everything needs; logged when not.
bool isOpen() {
    if (ThreadPool::instance().open()) return true;
    warn("no threads for connections: %s", strerror(errno));
    return false;
}

// False when the name is not held yet.
bool replace(const std::string& name, const ndk::SpAIBinder& service) {
    ndk::SpAIBinder replaced;  // without the lock
    const device::MutexLock lock(registry().lock);
    const auto found = registry().services.find(name);
    if (found == registry().services.end()) return false;
    replaced = std::exchange(found->second.object, service);
    return true;
}

void hold(const std::string& name, Service service) {
    const device::MutexLock lock(registry().lock);
    registry().services[name] = std::move(service);
}

void unhold(const std::string& name) {
    Service dropped;  // without the lock
    const device::MutexLock lock(registry().lock);
    dropped = std::move(registry().services[name]);
    registry().services.erase(name);
}

// False, with errno, when the system refuses.
bool listen(const UniqueFd& folder, const std::string& name) {
    UniqueFd listener = NameFolder::listen(folder, name);
    if (!listener.isValid() || !Acceptor::instance().listen(std::move(listener), name)) return false;
    const device::MutexLock lock(registry().lock);
    registry().services[name].socket = NameFolder::socketIn(folder, name);
    return true;
}

// Whether the system may refuse no more after a while.
bool isShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOSPC;
}

// The lock file of a name was deleted or replaced: 0 when the name is still this process's, else the error.
int mendLock(const UniqueFd& folder, const std::string& name) {
    UniqueFd fresh = NameFolder::lock(folder, name);
    if (!fresh.isValid()) {
        const int error = errno;
        warn("the lock file of %s was deleted and cannot be made again: %s", name.c_str(),
             error == EAGAIN ? "another process holds the name" : strerror(error));
        return error;
    }
    warn("the lock file of %s was deleted: made again", name.c_str());
    const device::MutexLock lock(registry().lock);
    std::swap(registry().services[name].lock, fresh);
    return 0;
}

// 0, or the error.
int mendSocket(const UniqueFd& folder, const std::string& name) {
    const int error = listen(folder, name) ? 0 : errno;
    error == 0 ? warn("the socket of %s was deleted: made again", name.c_str())
               : warn("the socket of %s was deleted and cannot be made again: %s", name.c_str(), strerror(error));
    return error;
}

// Puts back what somebody deleted under this process, as far as the name is still free. False when it is worth another
// try. Thread: the I/O thread.
bool mendNames() try {
    const UniqueFd folder = NameFolder::openExisting();
    if (!folder.isValid()) {
        const int error = errno;
        if (error == ENOENT) warn("the folder of names was deleted: no service of this process is found any more");
        return !isShortage(error);
    }
    (void)NameWatch::instance().start(folder, mendNames);
    const device::MutexLock adding(registry().addLock);
    std::vector<std::string> lostLocks;
    std::vector<std::string> lostSockets;
    {
        const device::MutexLock lock(registry().lock);
        for (const auto& [name, service] : registry().services) {
            if (!NameFolder::isLockIn(folder, name, service.lock)) lostLocks.push_back(name);
            if (NameFolder::socketIn(folder, name) != service.socket) lostSockets.push_back(name);
        }
    }
    bool isShort = false;
    for (const std::string& name : lostLocks) {
        const int error = mendLock(folder, name);
        isShort |= isShortage(error);
        if (error != 0) std::erase(lostSockets, name);
    }
    for (const std::string& name : lostSockets) isShort |= isShortage(mendSocket(folder, name));
    return !isShort;
} catch (const std::bad_alloc&) {
    warn("what was deleted in the folder of names is not made again yet: no memory");
    return false;
}

binder_exception_t publish(const std::string& name, const ndk::SpAIBinder& service) {
    if (!isOpen()) return EX_UNSUPPORTED_OPERATION;
    const UniqueFd folder = NameFolder::open();
    if (!folder.isValid()) return errno == EPERM ? EX_SECURITY : EX_UNSUPPORTED_OPERATION;
    UniqueFd owned = NameFolder::lock(folder, name);
    if (!owned.isValid()) {
        const bool isHeld = errno == EAGAIN || errno == EACCES;
        warn("%s is not registered: %s", name.c_str(), isHeld ? "another process holds the name" : strerror(errno));
        return isHeld ? EX_ILLEGAL_STATE : EX_UNSUPPORTED_OPERATION;
    }
    hold(name, {service, std::move(owned)});
    if (!listen(folder, name)) {
        warn("%s is not registered: %s", name.c_str(), strerror(errno));
        unhold(name);
        return EX_UNSUPPORTED_OPERATION;
    }
    if (!NameWatch::instance().start(folder, mendNames))
        warn("the folder of names is not watched: %s", strerror(errno));
    return EX_NONE;
}

// What a server answers to a hello, if it does in time.
std::optional<HelloReply> ask(const UniqueFd& fd, HelloKind kind, const std::vector<int>& passed = {}) {
    const Hello hello{PROTOCOL, kind, processKey()};
    const Bytes bytes(reinterpret_cast<const uint8_t*>(&hello), sizeof(hello));
    const ssize_t sent = passed.empty() ? sendSome(fd, bytes, 0) : sendWith(fd, bytes, passed, 0);
    HelloReply reply{};
    auto* const answer = reinterpret_cast<uint8_t*>(&reply);
    const ssize_t received = sent == sizeof(hello) ? receiveSome(fd, answer, sizeof(reply), MSG_WAITALL) : ssize_t{-1};
    // A server that is stopped needs no line.
    if (received < 0 && errno != EAGAIN) warnLost(peerOf(fd).pid);
    return received == sizeof(reply) && reply.protocol == PROTOCOL ? std::optional(reply) : std::nullopt;
}

// An object of a peer.
struct Root {
    std::shared_ptr<Session> session;
    std::optional<HelloReply> reply;
};

Root openSession(UniqueFd fd, const Session::Peer& peer) {
    auto [out, peersIn] = socketPair();
    auto [in, peersOut] = socketPair();
    if (!out.isValid() || !in.isValid()) {
        warn("no session with process %d: %s", peer.pid, strerror(errno));
        return {};
    }
    const auto reply = ask(fd, HelloKind::Open, {peersIn.get(), peersOut.get()});
    if (!reply) return {};
    auto session = Session::open(peer, std::move(fd), std::move(in), std::move(out));
    if (session == nullptr) warn("no session with process %d: %s", peer.pid, strerror(errno));
    return {std::move(session), reply};
}

Root findRoot(UniqueFd fd, const Session::Peer& peer) {
    const device::MutexLock lock(registry().openLock);
    const auto known = Session::find(peer.process, peer.pid);
    return known != nullptr ? Root{known, ask(fd, HelloKind::Root)} : openSession(std::move(fd), peer);
}

ndk::SpAIBinder find(const std::string& name) {
    if (ndk::SpAIBinder own = registeredHere(name); own.get() != nullptr) return own;
    UniqueFd fd = NameFolder::connect(name);
    if (!fd.isValid() && errno != ENOENT && errno != ECONNREFUSED)
        warn("%s cannot be reached: %s", name.c_str(), strerror(errno));
    const ucred server = peerOf(fd);
    if (server.pid < 0 || !isOpen()) return nullptr;
    const auto identity = ask(fd, HelloKind::Identify);
    if (!identity) return nullptr;
    const Root root = findRoot(std::move(fd), {identity->process, server.pid, server.uid});
    if (root.session == nullptr || !root.reply || root.reply->object == 0) return nullptr;
    return root.session->objects().import(root.reply->object, root.reply->descriptor, root.session);
}

// Blocks until something in the folder changed, or for `time`.
void awaitChange(const UniqueFd& changes, Clock::duration time) {
    pollfd wanted{changes.get(), POLLIN, 0};
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(time);
    if (poll(&wanted, 1, static_cast<int>(milliseconds.count())) <= 0) return;
    alignas(inotify_event) char events[4096];
    [[maybe_unused]] const ssize_t size = read(changes.get(), events, sizeof(events));
}

UniqueFd watchFolder() {
    const UniqueFd folder = NameFolder::open();
    UniqueFd changes(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (folder.isValid() && changes.isValid()) (void)NameFolder::watch(folder, changes, IN_MOVED_TO);
    return changes;
}

ndk::SpAIBinder findUntil(const std::string& name, Clock::time_point deadline) {
    if (ndk::SpAIBinder found = find(name); found.get() != nullptr) return found;
    const UniqueFd changes = watchFolder();
    for (;;) {
        if (ndk::SpAIBinder found = find(name); found.get() != nullptr) return found;
        const auto left = deadline - Clock::now();
        if (left <= 0s) return nullptr;
        awaitChange(changes, std::min<Clock::duration>(left, ASK_AGAIN));
    }
}

AIBinder* release(const ndk::SpAIBinder& binder) {
    AIBinder_incStrong(binder.get());
    return binder.get();
}

}  // namespace

ndk::SpAIBinder registeredHere(const std::string& name) {
    const device::MutexLock lock(registry().lock);
    const auto found = registry().services.find(name);
    return found == registry().services.end() ? nullptr : found->second.object;
}

}  // namespace binder

using namespace binder;

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || binder->local() == nullptr || !NameFolder::isName(instance)) {
        warn("%s is not registered: the object or the name is not allowed", instance == nullptr ? "null" : instance);
        return EX_ILLEGAL_ARGUMENT;
    }
    AIBinder_incStrong(binder);
    const ndk::SpAIBinder service(binder);
    const device::MutexLock lock(registry().addLock);
    return replace(instance, service) ? EX_NONE : publish(instance, service);
}

AIBinder* AServiceManager_checkService(const char* instance) {
    return NameFolder::isName(instance) ? release(find(instance)) : nullptr;
}

AIBinder* AServiceManager_getService(const char* instance) {
    return NameFolder::isName(instance) ? release(findUntil(instance, Clock::now() + GET_SERVICE_TIME)) : nullptr;
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    return NameFolder::isName(instance) ? release(findUntil(instance, Clock::now() + FOR_EVER)) : nullptr;
}

bool AServiceManager_isDeclared(const char* instance) {
    if (!NameFolder::isName(instance)) return false;
    return registeredHere(instance).get() != nullptr || NameFolder::isLocked(instance);
}
