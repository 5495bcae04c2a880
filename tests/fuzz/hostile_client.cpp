// Whatever a client sends, on whichever of its sockets: the process that serves it ends the session and lives on.

#include "tests/fuzz/support/Peer.h"
#include "tests/fuzz/support/Require.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stubs/Sinks.h>

#include <array>

namespace {

using namespace fuzz;
using namespace subsys_stubs::interface;
using binder::UniqueFd;

// Calls back whatever callback it is given.
class Service : public subsys_stubs::Sink<ISubsys, Service> {
public:
    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method&, const Args&... arguments) {
        (meet(arguments), ...);
        return ndk::ScopedAStatus::ok();
    }

private:
    static void meet(const auto&) {}
    template <class I>
    void meet(const std::shared_ptr<I>& callback) {
        if (callback == nullptr) return;
        (void)AIBinder_linkToDeath(callback->asBinder().get(), mRecipient.get(), this);
        subsys_stubs::forEachMethod<I>([&]<class Method>(const Method& method) {
            const auto call = [&](const auto&... each) { return ((*callback).*method.call)(each...); };
            (void)std::apply(call, typename Method::Arguments());
        });
        std::string hash;
        (void)callback->getInterfaceHash(&hash);
        ndk::SpAIBinder extension;
        (void)AIBinder_getExtension(callback->asBinder().get(), extension.getR());
    }

    const ndk::ScopedAIBinder_DeathRecipient mRecipient{AIBinder_DeathRecipient_new([](void*) {})};
};

class Client {
public:
    explicit Client(const sockaddr_un& address) {
        require(connect(mControl.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0);
    }
    void open(FuzzedDataProvider& input) {
        constexpr timeval TIME{10, 0};
        setsockopt(mControl.get(), SOL_SOCKET, SO_RCVTIMEO, &TIME, sizeof(TIME));
        const auto kind = static_cast<binder::HelloKind>(2 ^ input.ConsumeIntegralInRange<uint32_t>(0, 3));
        const auto passed = input.ConsumeBool() ? std::vector<int>{mTheirs.first.get()}
                                                : std::vector{mTheirs.first.get(), mTheirs.second.get()};
        const bool isSound = input.ConsumeIntegral<uint8_t>() != UINT8_MAX;
        const binder::Hello hello{binder::PROTOCOL, kind, nextKey()};
        send(mControl, isSound ? bytesOf(hello) : input.ConsumeRandomLengthString(), passed);
        mTheirs = {};
    }
    void say(std::span<const std::string> tokens, FuzzedDataProvider& input) {
        const bool isFrame = !input.ConsumeBool();
        const auto socket = input.ConsumeIntegralInRange<uint8_t>(0, 4);
        const std::string bytes = isFrame ? nextFrame(tokens, input) : input.ConsumeRandomLengthString();
        if (socket == 0) return send(mChannel, bytes);
        if (socket == 1) return send(mControl, bytes, {mBack.get()});
        send(callsOf(mCalls[socket - 2U]), bytes);
    }
    // Returns when the session is at its end.
    void end() {
        mChannel = UniqueFd();
        mBack = UniqueFd();
        for (const UniqueFd& each : mCalls) shutdown(each.get(), SHUT_WR);
        shutdown(mControl.get(), SHUT_WR);
        awaitEnd(mControl);  // and drops connections that came
        for (const UniqueFd& each : mCalls) awaitEnd(each);
    }

private:
    const UniqueFd& callsOf(UniqueFd& calls) {
        if (calls.isValid()) return calls;
        auto [own, theirs] = binder::socketPair();
        send(mControl, bytesOf(binder::FrameHeader{16, binder::FrameKind::Connection, 0, 0, 0}), {theirs.get()});
        return calls = std::move(own);
    }
    static void awaitEnd(const UniqueFd& fd) {
        std::array<uint8_t, 4096> bytes;
        ssize_t received = 1;
        while (fd.isValid() && received > 0) received = binder::receiveSome(fd, bytes.data(), bytes.size(), 0);
        require(received >= 0 || errno == ECONNRESET);
    }

    const UniqueFd mControl{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    UniqueFd mChannel;
    UniqueFd mBack;
    std::pair<UniqueFd, UniqueFd> mTheirs = [this] {
        auto [own, theirs] = binder::socketPair();
        auto [back, theirsBack] = binder::socketPair();
        mChannel = std::move(own);
        mBack = std::move(back);
        return std::pair(std::move(theirs), std::move(theirsBack));
    }();
    std::array<UniqueFd, 3> mCalls;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::NamesFolder NAMES;
    static const bool IS_STARTED = [] {
        ABinderProcess_setThreadPoolMaxThreadCount(2);
        ABinderProcess_startThreadPool();
        return true;
    }();
    require(IS_STARTED);
    const auto service = ndk::SharedRefBase::make<Service>();
    require(AServiceManager_addService(service->asBinder().get(), NAME) == EX_NONE);
    static const std::array TOKENS{tokenOf(service->asBinder())};
    FuzzedDataProvider input(data, size);
    Client client(addressIn(NAMES));
    client.open(input);
    while (input.remaining_bytes() != 0) client.say(TOKENS, input);
    client.end();
    return 0;
}
