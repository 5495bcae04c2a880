// Whatever a server answers, and whatever it sends to a client's callbacks: each call of the client returns, and it
// hears of the server's death.

#include "tests/fuzz/support/Callbacks.h"
#include "tests/fuzz/support/Peer.h"
#include "tests/support/Await.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <binder/peer.h>

#include <fcntl.h>
#include <poll.h>

#include <array>
#include <thread>

namespace {

using namespace fuzz;
using binder::UniqueFd;

// Answers hellos, then each call by the next frame of the input; frames for the channel go in between.
class Server {
public:
    // Returns when the client is done or the input at its end; the client then sees the server dead.
    void serve(const UniqueFd& listener, std::span<const std::string> tokens, FuzzedDataProvider& input) {
        const binder::Key key = nextKey();
        mControl = UniqueFd(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (greet({binder::PROTOCOL, 0, 0, key}, input) &&
            greet({binder::PROTOCOL, 1, hashOf(ISubsys::descriptor), key}, input)) {
            converse(tokens, input);
        }
        for (UniqueFd* each : {&mToClient, &mFromClient, &mCalls, &mControl}) *each = UniqueFd();
    }
    // The client is done. Thread: any.
    void stop() const { send(mStop.first, "stop"); }

private:
    // False when the answer was any bytes: the client may wait for more of it.
    bool greet(const binder::HelloReply& reply, FuzzedDataProvider& input) {
        std::vector<UniqueFd> passed;
        (void)receive(mControl, passed);
        if (passed.size() == 2) {
            mFromClient = std::move(passed[0]);
            mToClient = std::move(passed[1]);
        }
        const bool isSound = input.ConsumeIntegral<uint8_t>() != UINT8_MAX;
        send(mControl, isSound ? bytesOf(reply) : input.ConsumeRandomLengthString(sizeof(reply)));
        return isSound;
    }
    void converse(std::span<const std::string> tokens, FuzzedDataProvider& input) {
        while (input.remaining_bytes() != 0) {
            const bool isAnswer = !input.ConsumeBool();
            if (isAnswer && !awaitCall()) break;
            // Only a whole frame lets the client go on: other bytes are the last.
            const bool isLast = input.ConsumeIntegral<uint8_t>() == UINT8_MAX;
            send(isAnswer ? mCalls : mToClient,
                 isLast ? input.ConsumeRemainingBytesAsString() : nextFrame(tokens, input));
        }
    }
    // Takes the connections that come meanwhile. False when there is no call any more.
    bool awaitCall() {
        for (;;) {
            std::array<pollfd, 3> sources{
                {{mStop.second.get(), POLLIN, 0}, {mCalls.get(), POLLIN, 0}, {mControl.get(), POLLIN, 0}}};
            poll(sources.data(), sources.size(), -1);
            std::vector<UniqueFd> passed;
            if (sources[1].revents != 0) return receive(mCalls, passed);
            if (sources[0].revents != 0 || !receive(mControl, passed)) return false;
            if (!passed.empty()) mCalls = std::move(passed.front());
        }
    }
    static bool receive(const UniqueFd& fd, std::vector<UniqueFd>& passed) {
        pollfd source{fd.get(), POLLIN, 0};
        poll(&source, 1, -1);
        std::array<uint8_t, 4096> bytes;
        return binder::receiveWith(fd, bytes.data(), bytes.size(), passed) > 0;
    }

    const std::pair<UniqueFd, UniqueFd> mStop = binder::socketPair();
    UniqueFd mControl;
    UniqueFd mToClient;
    UniqueFd mFromClient;
    UniqueFd mCalls;
};

UniqueFd listenIn(const test::NamesFolder& names) {
    UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = addressIn(names);
    require(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0);
    require(listen(listener.get(), 1) == 0);
    ABinderProcess_startThreadPool();
    require(ISubsys::setDefaultImpl(ndk::SharedRefBase::make<ISubsysDefault>()));
    return listener;
}

// Strings make the call a large one.
template <class T>
T argument() {
    if constexpr (subsys_stubs::isInterfacePointer<T>) return callback<typename T::element_type>();
    if constexpr (std::is_same_v<T, std::string>) return std::string(40'000, 'x');
    return T{};
}

std::vector<std::string> tokens() {
    std::vector<std::string> result;
    for (const ndk::SpAIBinder& each : callbacks()) result.push_back(tokenOf(each));
    return result;
}

void callAll(ISubsys& service) {
    subsys_stubs::forEachMethod<ISubsys>([&]<class Method>(const Method& method) {
        const auto call = [&]<class... Args>(std::tuple<Args...>) {
            (void)(service.*method.call)(argument<Args>()...);
        };
        call(typename Method::Arguments());
    });
    int32_t version = 0;
    std::string hash;
    (void)service.getInterfaceVersion(&version);
    (void)service.getInterfaceHash(&hash);
}

void callAny(AIBinder* object) {
    static const UniqueFd NOWHERE(open("/dev/null", O_WRONLY | O_CLOEXEC));
    ndk::SpAIBinder extension;
    const char* arguments[] = {"argument"};
    (void)AIBinder_ping(object);
    require(AIBinder_getServerPid(object) == getpid());
    (void)AIBinder_getExtension(object, extension.getR());
    (void)AIBinder_dump(object, NOWHERE.get(), arguments, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::NamesFolder NAMES;
    static const UniqueFd LISTENER = listenIn(NAMES);
    static const std::vector<std::string> TOKENS = tokens();
    static const ndk::ScopedAIBinder_DeathRecipient RECIPIENT(
        AIBinder_DeathRecipient_new([](void* death) { static_cast<test::Event*>(death)->signal(); }));
    FuzzedDataProvider input(data, size);
    Server server;
    std::thread thread([&] { server.serve(LISTENER, TOKENS, input); });
    const ndk::SpAIBinder object(AServiceManager_checkService(NAME));
    test::Event death;
    const bool isLinked = object && AIBinder_linkToDeath(object.get(), RECIPIENT.get(), &death) == STATUS_OK;
    require(!AServiceManager_isDeclared(NAME));  // It has a socket, and no lock.
    if (object) callAny(object.get());
    if (const auto service = ISubsys::fromBinder(object)) callAll(*service);
    server.stop();
    thread.join();
    if (isLinked) require(death.await());
    return 0;
}
