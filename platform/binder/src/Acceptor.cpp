#include "Acceptor.h"

#include "Frame.h"
#include "IBinder.h"
#include "IoThread.h"
#include "Log.h"
#include "PeerCosts.h"
#include "Process.h"
#include "ServiceManager.h"
#include "Session.h"
#include "Socket.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace binder {

using Clock = std::chrono::steady_clock;

// A connection whose hellos are being answered.
class Greeting final : public Pollable, public std::enable_shared_from_this<Greeting> {
public:
    Greeting(UniqueFd fd, const ucred& peer, std::string name, Charge charge)
        : mFd(std::move(fd)), mPeer(peer), mName(std::move(name)), mCharge(std::move(charge)) {}

    [[nodiscard]] bool start() { return IoThread::instance().poller().add(shared_from_this(), EPOLLIN, mKey); }
    [[nodiscard]] int fd() const override { return mFd.get(); }
    // One piece for each event, so that a peer that never stops holds nobody up.
    void onReady(uint32_t) override {
        auto* const bytes = reinterpret_cast<uint8_t*>(&mHello);
        const ssize_t received = receiveWith(mFd, bytes + mReceived, sizeof(mHello) - mReceived, mPassed);
        if (received < 0 && errno == EAGAIN) return;
        if (received < 0) return lose();
        if (received == 0) return close();
        if (mPassed.size() > 2) return refuse("passes more descriptors than a session has");
        mReceived += static_cast<size_t>(received);
        if (mReceived < sizeof(mHello)) return;
        mReceived = 0;
        answer();
    }
    void onNoMemory() override {
        warn("a connection of process %d is lost: no memory", mPeer.pid);
        close();
    }
    [[nodiscard]] Clock::time_point since() const { return mSince; }

    void refuse(const char* reason) {
        warn("process %d %s: such connections are closed", mPeer.pid, reason);
        close();
    }

private:
    void answer() {
        if (mHello.protocol != PROTOCOL) return refuse("speaks another protocol");
        switch (mHello.kind) {
            case HelloKind::Identify:
                return (void)reply(mFd, {PROTOCOL, 0, 0, processKey()});
            case HelloKind::Open:
                return open();
            case HelloKind::Root:
                return sendRoot();
        }
        refuse("said a hello that makes no sense");
    }

    void open() {
        auto passed = std::exchange(mPassed, {});
        const auto isSound = [this](const UniqueFd& each) { return isStreamOf(each, mPeer.pid); };
        if (passed.size() != 2 || !std::all_of(passed.begin(), passed.end(), isSound))
            return refuse("opens a session without channels");
        if (Session::find(mHello.process, mPeer.pid) != nullptr) return refuse("has a session already");
        const Session::Peer peer{mHello.process, mPeer.pid, mPeer.uid};
        const auto keepsThis = shared_from_this();
        close();  // here; what was accepted becomes the control socket
        const auto session = Session::open(peer, std::move(mFd), std::move(passed[0]), std::move(passed[1]));
        if (session == nullptr) return errno == EUSERS ? refuse("has too many sessions") : lose();
        if (!reply(session->control().socket(), rootIn(*session))) session->end();
    }

    void sendRoot() {
        const auto session = Session::find(mHello.process, mPeer.pid);
        if (session == nullptr) return refuse("has no session");
        (void)reply(mFd, rootIn(*session));
    }

    [[nodiscard]] HelloReply rootIn(Session& session) const {
        const ndk::SpAIBinder root = registeredHere(mName);
        return {PROTOCOL, session.objects().send(root.get()), root.get()->clazz()->descriptorHash, processKey()};
    }

    // False when the greeting has ended.
    bool reply(const UniqueFd& fd, const HelloReply& reply) {
        const Bytes bytes(reinterpret_cast<const uint8_t*>(&reply), sizeof(reply));
        const ssize_t sent = sendSome(fd, bytes, MSG_DONTWAIT);
        if (sent == static_cast<ssize_t>(bytes.size())) return true;
        sent < 0 ? lose() : refuse("does not read the answer to its hello");
        return false;
    }

    void lose() {
        warnLost(mPeer.pid);
        close();
    }

    void close() {
        IoThread::instance().poller().remove(mKey);
        Acceptor::instance().remove(*this);
    }

    UniqueFd mFd;
    const ucred mPeer;
    const std::string mName;
    const Charge mCharge;
    const Clock::time_point mSince = Clock::now();
    PollKey mKey = 0;
    Hello mHello{};
    size_t mReceived = 0;
    std::vector<UniqueFd> mPassed;
};

namespace {

class Listener final : public Pollable {
public:
    Listener(UniqueFd fd, std::string name) : mFd(std::move(fd)), mName(std::move(name)) {}

    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t) override {
        UniqueFd fd(accept4(mFd.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (fd.isValid()) return greet(std::move(fd));
        if (errno == EAGAIN || errno == EINTR || errno == ECONNABORTED) return;
        warn("no connection can be taken for %s: %s", mName.c_str(), strerror(errno));
        Acceptor::instance().pause(key);
    }
    void onNoMemory() override { warn("a connection to %s is lost: no memory", mName.c_str()); }

    PollKey key = 0;

private:
    void greet(UniqueFd fd) {
        const ucred peer = peerOf(fd);
        auto charge = Charge::take(peer.pid, Cost::Greeting);
        if (!charge) return warn("process %d has too many silent connections: such connections are closed", peer.pid);
        const auto greeting = std::make_shared<Greeting>(std::move(fd), peer, mName, std::move(*charge));
        if (greeting->start()) return Acceptor::instance().add(greeting);
        warn("a connection to %s is lost: %s", mName.c_str(), strerror(errno));
    }

    const UniqueFd mFd;
    const std::string mName;
};

}  // namespace

Acceptor& Acceptor::instance() {
    static auto* const instance = new Acceptor;  // outlives the threads that still use it at exit
    return *instance;
}

bool Acceptor::listen(UniqueFd listener, const std::string& name) {
    IoThread::instance().addTicker([] { return Acceptor::instance().tick(); });
    Poller& poller = IoThread::instance().poller();
    const auto added = std::make_shared<Listener>(std::move(listener), name);
    if (!poller.add(added, EPOLLIN, added->key)) return false;
    poller.remove(std::exchange(mListening[name], added->key));
    return true;
}

void Acceptor::pause(PollKey listener) {
    mPaused.push_back(listener);
    // Where that is refused, the next event comes at once.
    if (!IoThread::instance().poller().arm(listener, 0)) mPaused.pop_back();
    mPausedUntil = Clock::now() + RETRY_TIME;
}

void Acceptor::add(const std::shared_ptr<Greeting>& greeting) {
    mGreetings.push_back(greeting);
}

void Acceptor::remove(const Greeting& greeting) {
    std::erase_if(mGreetings, [&](const auto& each) { return each.get() == &greeting; });
}

int Acceptor::tick() {
    const auto now = Clock::now();
    if (now >= mPausedUntil) {
        // One that was replaced is gone; one that the system refuses is tried again.
        std::erase_if(mPaused,
                      [](PollKey each) { return IoThread::instance().poller().arm(each, EPOLLIN) || errno == ENOENT; });
    }
    while (!mGreetings.empty() && now - mGreetings.front()->since() >= GREETING_TIME) {
        const auto silent = mGreetings.front();
        silent->refuse("connected and did not say in time what for");
    }
    const bool waits = !mPaused.empty() || !mGreetings.empty();
    return waits ? static_cast<int>(RETRY_TIME.count()) : -1;
}

}  // namespace binder
