#include "Acceptor.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "IBinder.h"
#include "Log.h"
#include "Process.h"
#include "ServiceManager.h"
#include "Session.h"

namespace binder {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// A connection says what it is for within this time.
constexpr auto kPatience = 5s;
constexpr auto kRetry = 100ms;
constexpr int kMaxHellos = 4;
// Of one process: connections that have not said yet, and sessions, of which it needs one.
constexpr int kMaxSilent = 128;
constexpr size_t kMaxSessions = 4;
// Before the poller's other work has its turn.
constexpr int kMaxAccepted = 32;
// Processes remembered as told of, so that each fault of each makes one line.
constexpr size_t kMaxTold = 64;

class Listener final : public Pollable {
public:
    Listener(UniqueFd fd, std::string name) : mFd(std::move(fd)), mName(std::move(name)) {}

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t) override { Acceptor::instance().accept(shared_from_this(), mName); }

private:
    const UniqueFd mFd;
    const std::string mName;
};

}  // namespace

// A connection whose hello is being read.
class Greeting final : public Pollable {
public:
    Greeting(UniqueFd fd, const ucred& peer, std::string name)
        : mFd(std::move(fd)), mPeer(peer), mName(std::move(name)) {}

    [[nodiscard]] int fd() const override { return mFd.get(); }
    [[nodiscard]] pid_t pid() const { return mPeer.pid; }
    [[nodiscard]] Clock::time_point since() const { return mSince; }
    void onReady(uint32_t) override {
        if (read()) Acceptor::instance().greeted(std::static_pointer_cast<Greeting>(shared_from_this()));
    }

    // True when it is over: the connection was handed on, refused or lost.
    [[nodiscard]] bool read() {
        for (;;) {
            auto* const bytes = static_cast<uint8_t*>(static_cast<void*>(&mHello));
            const ssize_t received = recv(mFd.get(), bytes + mReceived, sizeof(mHello) - mReceived, MSG_DONTWAIT);
            if (received < 0 && errno == EINTR) continue;
            if (received < 0 && errno == EAGAIN) {
                Poller::instance().arm(*this, EPOLLIN);
                return false;
            }
            if (received <= 0) return true;
            mReceived += static_cast<size_t>(received);
            if (mReceived < sizeof(mHello)) continue;
            mReceived = 0;
            if (!answer() || ++mHellos == kMaxHellos) return true;
        }
    }

private:
    // True when another hello may follow.
    bool answer() {
        if (mHello.protocol != kProtocol) return refuse("speaks another protocol");
        switch (mHello.kind) {
            case HelloKind::Identify:
                return reply({kProtocol, 0, 0, processKey()});
            case HelloKind::Root:
                return sendRoot();
            case HelloKind::Control:
                return openSession();
            case HelloKind::Call:
            case HelloKind::Reverse:
                return join();
        }
        return refuse("said a hello that makes no sense");
    }

    bool refuse(const char* reason) {
        Acceptor::instance().warnOnce(mPeer.pid, reason);
        return false;
    }

    bool reply(const HelloReply& reply) {
        return send(mFd.get(), &reply, sizeof(reply), MSG_DONTWAIT | MSG_NOSIGNAL) == sizeof(reply);
    }

    std::shared_ptr<Session> session() const {
        auto found = Session::find(mHello.key);
        return found != nullptr && found->peer().pid == mPeer.pid ? found : nullptr;
    }

    bool sendRoot() {
        const auto known = session();
        const ndk::SpAIBinder root = registeredHere(mName);
        if (known == nullptr || root.get() == nullptr) return refuse("has no session");
        return reply({kProtocol, known->objects().send(root.get()), root.get()->clazz()->descriptorHash, mHello.key});
    }

    bool openSession() {
        if (Session::countOf(mPeer.pid) >= kMaxSessions) return refuse("has too many sessions");
        const auto opened =
            std::make_shared<Session>(randomKey(), Session::Peer{mHello.key, mPeer.pid, mPeer.uid}, std::string());
        if (reply({kProtocol, 0, 0, opened->key()})) (void)opened->start(release());
        return false;
    }

    bool join() {
        const auto known = session();
        if (known == nullptr) return refuse("has no session");
        UniqueFd fd = release();  // closed after the line is written
        if (mHello.kind == HelloKind::Call) {
            if (!known->addServed(std::move(fd))) refuse("has too many connections");
        } else if (!known->addReverse(std::move(fd))) {
            refuse("opened a connection that nobody asked for");
        }
        return false;
    }

    // The descriptor, no longer watched here.
    UniqueFd release() {
        Poller::instance().remove(*this);
        return std::move(mFd);
    }

    UniqueFd mFd;
    const ucred mPeer;
    const std::string mName;
    const Clock::time_point mSince = Clock::now();
    Hello mHello{};
    size_t mReceived = 0;
    int mHellos = 0;
};

Acceptor& Acceptor::instance() {
    static auto* const instance = new Acceptor;  // outlives the threads that still use it at exit
    return *instance;
}

Acceptor::Acceptor() {
    Poller::instance().addTicker([this] { return tick(); });
}

bool Acceptor::listen(UniqueFd listener, std::string name) {
    return Poller::instance().add(std::make_shared<Listener>(std::move(listener), std::move(name)), EPOLLIN);
}

void Acceptor::accept(const std::shared_ptr<Pollable>& listener, const std::string& name) {
    for (int i = 0; i < kMaxAccepted; ++i) {
        UniqueFd fd(accept4(listener->fd(), nullptr, nullptr, SOCK_CLOEXEC));
        if (fd.isValid()) {
            admit(std::move(fd), name);
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            if (mPaused.empty()) warn("no connection can be taken for %s: %s", name.c_str(), strerror(errno));
            mPaused.push_back(listener);
            mPausedUntil = Clock::now() + kRetry;
            return;
        }
    }
    Poller::instance().arm(*listener, EPOLLIN);
}

void Acceptor::admit(UniqueFd fd, const std::string& name) {
    const ucred peer = peerOf(fd);
    if (peer.pid < 0) return;
    int& silent = mSilent[peer.pid];
    if (silent >= kMaxSilent) return warnOnce(peer.pid, "has too many silent connections");
    const auto greeting = std::make_shared<Greeting>(std::move(fd), peer, name);
    ++silent;
    mGreetings.push_back(greeting);
    // Most have said hello already.
    if (!Poller::instance().add(greeting, 0) || greeting->read()) greeted(greeting);
}

void Acceptor::greeted(const std::shared_ptr<Greeting>& greeting) {
    Poller::instance().remove(*greeting);
    std::erase(mGreetings, greeting);
    const auto silent = mSilent.find(greeting->pid());
    if (silent != mSilent.end() && --silent->second == 0) mSilent.erase(silent);
}

void Acceptor::warnOnce(pid_t pid, std::string_view reason) {
    const std::pair told(pid, reason);
    if (std::find(mTold.begin(), mTold.end(), told) != mTold.end()) return;
    if (mTold.size() == kMaxTold) mTold.pop_front();
    mTold.push_back(told);
    warn("process %d %s: such connections are closed", pid, reason.data());
}

int Acceptor::tick() {
    if (mPaused.empty() && mGreetings.empty()) return -1;
    const auto now = Clock::now();
    if (now >= mPausedUntil) resume();
    closeSilent(now);
    return static_cast<int>(std::chrono::milliseconds(kRetry).count());
}

void Acceptor::resume() {
    for (const auto& listener : std::exchange(mPaused, {})) Poller::instance().arm(*listener, EPOLLIN);
}

void Acceptor::closeSilent(Clock::time_point now) {
    const auto greetings = mGreetings;
    for (const auto& greeting : greetings) {
        if (now - greeting->since() < kPatience) continue;
        warnOnce(greeting->pid(), "connected and did not say in time what for");
        greeted(greeting);
    }
}

}  // namespace binder
