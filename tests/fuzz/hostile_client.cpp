// Whatever a client sends, on whichever of its sockets: the process that serves it ends the session and lives on.

#include "tests/fuzz/support/Peer.h"
#include "tests/fuzz/support/Require.h"
#include "tests/support/LooperThread.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stubs/Sinks.h>

#include <poll.h>

#include <array>

namespace {

using namespace fuzz;
using namespace subsys_stubs::interface;
using binder::UniqueFd;

// Calls every method of the callbacks that it is given.
class Service : public subsys_stubs::Sink<ISubsys, Service> {
public:
    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method&, const Args&... arguments) {
        (meet(arguments), ...);
        return ndk::ScopedAStatus::ok();
    }
    // More than the client may leave unread, on a message loop.
    ndk::ScopedAStatus getNvramData(int32_t, int32_t, int32_t count) override {
        static const auto& INFO = *new IccIndInfo{0, std::vector<uint8_t>(4096)};  // as the looper below
        looper().run([&] {
            for (; mIndication != nullptr && count % 256 > 0; --count) (void)mIndication->notifyIccInfoChanged(INFO);
        });
        return ndk::ScopedAStatus::ok();
    }
    // More than a socket holds.
    binder_status_t dump(int fd, const char**, uint32_t count) override {
        dprintf(fd, "%*s", static_cast<int>(count % 8 * 100'000), "");
        return STATUS_OK;
    }

private:
    static test::LooperThread& looper() {
        static auto& sLooper = *new test::LooperThread;  // outlives the threads that still use it at exit
        return sLooper;
    }
    static void meet(const auto&) {}
    void meet(const std::shared_ptr<ISubsysIndication>& callback) {
        looper().run([&] { mIndication = callback; });
        callAll(callback);
    }
    template <class I>
    void meet(const std::shared_ptr<I>& callback) {
        callAll(callback);
    }
    template <class I>
    void callAll(const std::shared_ptr<I>& callback) {
        if (callback == nullptr) return;
        AIBinder* const object = callback->asBinder().get();
        (void)AIBinder_linkToDeath(object, mRecipient.get(), this);
        subsys_stubs::forEachMethod<I>([&]<class Method>(const Method& method) {
            const auto call = [&](const auto&... each) { return ((*callback).*method.call)(each...); };
            (void)std::apply(call, typename Method::Arguments());
        });
        std::string hash;
        (void)callback->getInterfaceHash(&hash);
        ndk::SpAIBinder extension;
        (void)AIBinder_getExtension(object, extension.getR());
        (void)AIBinder_unlinkToDeath(object, mRecipient.get(), this);
    }

    std::shared_ptr<ISubsysIndication> mIndication;  // the looper's
    const ndk::ScopedAIBinder_DeathRecipient mRecipient{AIBinder_DeathRecipient_new([](void*) {})};
};

class Client {
public:
    // Opens a session, or says something else.
    Client(const sockaddr_un& address, FuzzedDataProvider& input) {
        require(connect(mControl.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0);
        auto [channel, service] = binder::socketPair();
        auto [back, serviceBack] = binder::socketPair();
        const auto kind = static_cast<binder::HelloKind>(2 ^ input.ConsumeIntegralInRange<uint32_t>(0, 3));
        const binder::Hello hello{binder::PROTOCOL, kind, nextKey()};
        const bool isSound = input.ConsumeIntegral<uint8_t>() != UINT8_MAX;
        send(mControl, isSound ? bytesOf(hello) : input.ConsumeRandomLengthString(),
             {service.get(), serviceBack.get()});
        if (isSound) await(mControl);
        mIsAnswered = isSound && kind == binder::HelloKind::Open;
        mSockets[CHANNEL] = std::move(channel);
        mSockets[BACK] = std::move(back);
    }
    void say(std::span<const std::string> tokens, FuzzedDataProvider& input) {
        const bool isFrame = !input.ConsumeBool();
        const auto socket = input.ConsumeIntegralInRange<size_t>(0, SOCKETS);
        const std::string bytes = isFrame ? nextFrame(tokens, input) : input.ConsumeRandomLengthString();
        if (socket == SOCKETS) return send(mControl, bytes, {mSockets[BACK].get()});
        if (!mSockets[socket].isValid()) mSockets[socket] = openCalls();
        send(mSockets[socket], bytes);
        // Whole frames are answered, or the session ends.
        mIsAnswered &= isFrame || socket == BACK;
        if (mIsAnswered && socket >= CALLS) await(mSockets[socket]);
    }
    // Returns when the session is at its end.
    void end() {
        for (UniqueFd& each : mSockets) each = UniqueFd();
        shutdown(mControl.get(), SHUT_WR);
        while (await(mControl)) {
        }  // and drops connections that came
    }

private:
    enum Socket { CHANNEL, BACK, CALLS, SOCKETS = CALLS + 3 };

    [[nodiscard]] UniqueFd openCalls() const {
        auto [own, service] = binder::socketPair();
        send(mControl, bytesOf(binder::FrameHeader{16, binder::FrameKind::Connection, 0, 0, 0}), {service.get()});
        return std::move(own);
    }
    // Returns when something comes, false at the end: then what lies in the control socket is not taken any more.
    bool await(const UniqueFd& fd) const {
        static std::array<uint8_t, size_t{1} << 20> sBytes;
        std::array<pollfd, 2> sources{{{fd.get(), POLLIN, 0}, {mControl.get(), POLLRDHUP, 0}}};
        poll(sources.data(), sources.size(), -1);
        return binder::receiveSome(fd, sBytes.data(), sBytes.size(), MSG_DONTWAIT) > 0;
    }

    const UniqueFd mControl{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::array<UniqueFd, SOCKETS> mSockets;
    bool mIsAnswered = false;
};

test::NamesFolder& start() {
    static test::NamesFolder sNames;
    ABinderProcess_setThreadPoolMaxThreadCount(5);  // one for each connection of calls, and for oneway calls
    ABinderProcess_startThreadPool();
    return sNames;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const sockaddr_un ADDRESS = addressIn(start());
    const auto service = ndk::SharedRefBase::make<Service>();
    require(AServiceManager_addService(service->asBinder().get(), NAME) == EX_NONE);
    static const std::array TOKENS{tokenOf(service->asBinder())};
    FuzzedDataProvider input(data, size);
    Client client(ADDRESS, input);
    while (input.remaining_bytes() != 0) client.say(TOKENS, input);
    client.end();
    return 0;
}
