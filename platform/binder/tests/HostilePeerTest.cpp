#include "binder/src/Class.h"
#include "binder/src/Frame.h"
#include "binder/src/FrameBuffer.h"
#include "binder/src/Socket.h"
#include "binder/tests/Peer.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"

#include <android/binder_process.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <new>
#include <optional>
#include <ostream>

namespace {
/** There is no memory for arrays of so many bytes, or more. */
std::atomic<size_t> sTooMuch{SIZE_MAX};

enum Call { NONE, SEND, RECV, RECVMSG, WATCH };
/** What the system refuses the service's threads, once. */
std::atomic<Call> sRefused{NONE};

bool isRefused(Call call) {
    const bool result = gettid() != getpid() && sRefused.compare_exchange_strong(call, NONE);
    if (result) errno = ENOBUFS;
    return result;
}
}  // namespace

#define NEXT(name) reinterpret_cast<decltype(&::name)>(dlsym(RTLD_NEXT, #name))
extern "C" ssize_t send(int fd, const void* bytes, size_t size, int flags) {
    return isRefused(SEND) ? -1 : NEXT(send)(fd, bytes, size, flags);
}
extern "C" ssize_t recv(int fd, void* bytes, size_t size, int flags) {
    return isRefused(RECV) ? -1 : NEXT(recv)(fd, bytes, size, flags);
}
extern "C" ssize_t recvmsg(int fd, msghdr* message, int flags) {
    return isRefused(RECVMSG) ? -1 : NEXT(recvmsg)(fd, message, flags);
}
extern "C" int epoll_ctl(int epoll, int operation, int fd, epoll_event* event) noexcept {
    const bool isWatch = operation == EPOLL_CTL_MOD && event->events == EPOLLIN;
    return isWatch && isRefused(WATCH) ? -1 : NEXT(epoll_ctl)(epoll, operation, fd, event);
}
#undef NEXT

void* operator new[](size_t size) {
    static const auto sNext = reinterpret_cast<void* (*)(size_t)>(dlsym(RTLD_NEXT, "_Znam"));
    return size < sTooMuch ? sNext(size) : throw std::bad_alloc();
}

namespace {

using namespace binder;
using namespace test;
using Bytes = std::vector<uint8_t>;

template <typename T>
Bytes bytesOf(const T& value) {
    const auto* first = reinterpret_cast<const uint8_t*>(&value);
    return Bytes(first, first + sizeof(value));
}

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes frame(FrameKind kind, uint32_t target, uint32_t code, const Bytes& data = {}, uint16_t objects = 0) {
    const auto size = static_cast<uint32_t>(sizeof(FrameHeader) + data.size());
    return bytesOf(FrameHeader{size, kind, objects, target, code}) + data;
}

Bytes byteArray(size_t size) {
    return bytesOf(static_cast<int32_t>(size)) + Bytes((size + 3) / 4 * 4, 7);
}

/** A socket, or any other descriptor. */
class Fd : public UniqueFd {
public:
    using UniqueFd::UniqueFd;
    explicit Fd(UniqueFd&& fd) : UniqueFd(std::move(fd)) {}
    void close() { *this = Fd(); }

    [[nodiscard]] bool send(const Bytes& bytes, const std::vector<int>& passed = {}) const {
        const binder::Bytes view(bytes.data(), bytes.size());
        const ssize_t sent = passed.empty() ? sendSome(*this, view, 0) : sendWith(*this, view, passed, 0);
        return sent == static_cast<ssize_t>(bytes.size());
    }
    template <typename T>
    [[nodiscard]] T receive() const {
        T value{};
        EXPECT_EQ(static_cast<ssize_t>(sizeof(T)), recv(get(), &value, sizeof(T), MSG_WAITALL));
        return value;
    }
    /** Of a reply. */
    [[nodiscard]] Bytes receiveData() const {
        Bytes data(receive<FrameHeader>().dataSize());
        EXPECT_EQ(static_cast<ssize_t>(data.size()), recv(get(), data.data(), data.size(), MSG_WAITALL));
        return data;
    }
    /** The descriptor that comes with the next frame. */
    [[nodiscard]] Fd receivePassed() const {
        pollfd readable{get(), POLLIN, 0};
        EXPECT_EQ(1, poll(&readable, 1, 10'000));
        std::array<uint8_t, sizeof(FrameHeader)> bytes{};
        std::vector<UniqueFd> passed(1);
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), receiveWith(*this, bytes.data(), bytes.size(), passed));
        return Fd(std::move(passed.back()));
    }
    [[nodiscard]] bool isClosed() const {
        std::array<char, 4096> bytes;
        ssize_t received = 0;
        do {
            received = recv(get(), bytes.data(), bytes.size(), 0);
        } while (received > 0);
        return received == 0 || errno == ECONNRESET;
    }
};

/** The socket, which never waits longer than ten seconds for bytes. */
Fd limited(UniqueFd fd) {
    const timeval limit{10, 0};
    EXPECT_EQ(0, setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)));
    return Fd(std::move(fd));
}

std::pair<Fd, Fd> pairOfSockets() {
    auto [one, other] = socketPair();
    return {limited(std::move(one)), limited(std::move(other))};
}

/** A process that speaks the protocol by hand: this one, over sockets of its own. It has a session: the control socket,
 * a channel for each direction, a connection for calls, and the id of the service's object. */
class RawPeer {
public:
    explicit RawPeer(const std::filesystem::path& folder, bool withCalls = true) : mFolder(folder) {
        static uint8_t count = 0;
        mKey[0] = ++count;
        control = connect();
        auto [own, services] = pairOfSockets();
        auto [back, servicesBack] = pairOfSockets();
        EXPECT_TRUE(control.send(hello(HelloKind::Open), {services.get(), servicesBack.get()}));
        root = control.receive<HelloReply>().object;
        EXPECT_NE(0u, root);
        channel = std::move(own);
        incoming = std::move(back);
        if (withCalls) calls = openCalls();
    }

    [[nodiscard]] Fd connect(Fd fd = Fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))) const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, (mFolder / "socket@name").c_str(), sizeof(address.sun_path) - 1);
        EXPECT_EQ(0, ::connect(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)));
        return limited(std::move(fd));
    }
    [[nodiscard]] Bytes hello(HelloKind kind) const { return bytesOf(Hello{PROTOCOL, kind, mKey}); }

    [[nodiscard]] Fd openCalls() const {
        auto [own, services] = pairOfSockets();
        EXPECT_TRUE(control.send(frame(FrameKind::Connection, 0, 0), {services.get()}));
        return std::move(own);
    }
    [[nodiscard]] Bytes echoCall(size_t size) const {
        return frame(FrameKind::Call, root, ECHO, token() + byteArray(size));
    }
    [[nodiscard]] Bytes oneway(int32_t value, size_t ballast = 0) const {
        return frame(FrameKind::Oneway, root, NOTE, token() + bytesOf(value) + Bytes(ballast));
    }
    /** The service keeps object 5 of this peer. */
    void lend() const {
        const Bytes object = bytesOf(FlatObject{ObjectKind::Senders, 5, echoClass()->descriptorHash});
        const auto offset = static_cast<uint32_t>(token().size());
        ASSERT_TRUE(calls.send(frame(FrameKind::Call, root, KEEP, token() + object + bytesOf(offset), 1)));
        EXPECT_EQ(0u, calls.receive<FrameHeader>().code);
        (void)calls.receive<int32_t>();
    }
    /** Whether ECHO works. */
    [[nodiscard]] bool isServed() const { return calls.send(echoCall(8)) && calls.receiveData().size() == 12; }

    Fd control;
    Fd channel;
    Fd incoming;
    Fd calls;
    uint32_t root = 0;

private:
    const std::filesystem::path mFolder;
    Key mKey{};
};

class HostilePeerTest : public NamesFixture {
protected:
    explicit HostilePeerTest(uint32_t more = 1) : mObject(published(more)) {}
    [[nodiscard]] ndk::SpAIBinder published(uint32_t more) const {
        ABinderProcess_setThreadPoolMaxThreadCount(more);
        ABinderProcess_startThreadPool();
        ndk::SpAIBinder object = newEcho(mEcho);
        EXPECT_EQ(EX_NONE, AServiceManager_addService(object.get(), "name"));
        return object;
    }

    [[nodiscard]] std::vector<std::string> warnings() const { return mLog.texts("Binder"); }
    [[nodiscard]] bool isTold(const std::string& what) const {
        return mLog.await("Binder", "process " + std::to_string(getpid()) + " " + what);
    }

    const LogCapture mLog;
    Echo* const mEcho = new Echo;
    const ndk::SpAIBinder mObject;
    RawPeer mGood{mFolder};
    RawPeer mBad{mFolder};
};

class OneThreadTest : public HostilePeerTest {
protected:
    OneThreadTest() : HostilePeerTest(0) {}
};

TEST_F(HostilePeerTest, Hello_WhenItIsWrong_ThenThatConnectionIsClosedWithALine) {
    const Key unknown{99};
    const Fd file(::open("/dev/zero", O_RDWR | O_CLOEXEC));
    auto [own, services] = pairOfSockets();
    const struct {
        Bytes hello;
        std::vector<int> passed;
        const char* reason;
    } cases[] = {
        {bytesOf(Hello{PROTOCOL + 1, HelloKind::Open, unknown}), {}, "speaks another protocol"},
        {Bytes(24, 0xff), {}, "speaks another protocol"},
        {bytesOf(Hello{PROTOCOL, static_cast<HelloKind>(99), unknown}), {}, "said a hello that makes no sense"},
        {bytesOf(Hello{PROTOCOL, HelloKind::Root, unknown}), {}, "has no session"},
        {bytesOf(Hello{PROTOCOL, HelloKind::Open, unknown}), {}, "opens a session without channels"},
        {bytesOf(Hello{PROTOCOL, HelloKind::Open, unknown}),
         {file.get(), own.get()},
         "opens a session without channels"},
        {bytesOf(Hello{PROTOCOL, HelloKind::Identify, unknown}),
         {own.get(), own.get(), own.get()},
         "passes more descriptors than a session has"},
        {mGood.hello(HelloKind::Open), {own.get(), services.get()}, "has a session already"},
    };
    for (const auto& [hello, passed, reason] : cases) {
        const Fd fd = mBad.connect();
        ASSERT_TRUE(fd.send(hello, passed));
        EXPECT_TRUE(fd.isClosed()) << reason;
        EXPECT_TRUE(isTold(std::string(reason) + ": such connections are closed"));
    }
    EXPECT_EQ(6u, warnings().size()) << "the same line not twice a second";
    EXPECT_TRUE(mGood.isServed());
}

TEST_F(HostilePeerTest, Hello_WhenItsAnswersAreNotRead_ThenThatConnectionIsClosedWithALine) {
    for (const HelloKind kind : {HelloKind::Identify, HelloKind::Root}) {
        const Fd fd = mBad.connect();
        int sent = 0;
        while (sent < 10'000 && fd.send(mBad.hello(kind))) ++sent;
        EXPECT_LT(sent, 10'000);
    }
    EXPECT_TRUE(isTold("does not read the answer to its hello: such connections are closed"));
    EXPECT_TRUE(mBad.isServed());
}

TEST_F(HostilePeerTest, Frame_WhenItMakesNoSense_ThenThePeersConnectionsAreClosed) {
    const auto header = [](uint32_t size, uint16_t objects) {
        return bytesOf(FrameHeader{size, FrameKind::Call, objects, 1, ECHO});
    };
    const auto object = [](ObjectKind kind, uint32_t id, uint32_t offset) {
        return frame(FrameKind::Call, 1, ECHO, bytesOf(FlatObject{kind, id, 0}) + bytesOf(offset), 1);
    };
    using enum ObjectKind;
    const struct {
        const char* name;
        bool onChannel;
        Bytes bytes;
    } cases[] = {
        {"size below the header", false, header(15, 0)},
        {"a byte over the limit", false, header(static_cast<uint32_t>(MAX_CALL) + 17, 0)},
        {"more offsets than bytes", false, header(16 + 8, 3)},
        {"too many objects", false, header(1 << 19, UINT16_MAX)},
        {"an unknown kind", false, frame(static_cast<FrameKind>(77), 1, ECHO)},
        {"a reply that nobody waits for", false, frame(FrameKind::Reply, 1, 0)},
        {"a oneway call between calls", false, frame(FrameKind::Oneway, 1, NOTE)},
        {"an object it does not have", false, frame(FrameKind::Call, 77, ECHO)},
        {"an offset past the end", false, object(Senders, 5, 4)},
        {"an odd offset", false, object(Senders, 5, 1)},
        {"an object without a kind", false, object(static_cast<ObjectKind>(7), 5, 0)},
        {"a null object with an offset", false, object(Null, 0, 0)},
        {"an object of ours that it never had", false, object(Receivers, 99, 0)},
        {"overlapping objects", false,
         frame(FrameKind::Call, 1, ECHO, Bytes(24, 1) + bytesOf(std::array<uint32_t, 2>{0, 4}), 2)},
        {"a call on the channel", true, frame(FrameKind::Call, 1, ECHO)},
        {"a oneway call to nothing", true, frame(FrameKind::Oneway, 77, NOTE)},
        {"a release of nothing", true, frame(FrameKind::Release, 77, 1)},
        {"a release of too much", true, frame(FrameKind::Release, 1, 1000)},
    };
    for (const auto& [name, onChannel, bytes] : cases) {
        SCOPED_TRACE(name);
        const RawPeer bad(mFolder);
        (void)bad.openCalls();  // which is closed at once
        ASSERT_TRUE((onChannel ? bad.channel : bad.calls).send(bytes + bad.oneway(1)));
        for (const Fd* each : {&bad.calls, &bad.channel, &bad.incoming, &bad.control}) EXPECT_TRUE(each->isClosed());
        ASSERT_TRUE(mGood.isServed());
    }
    EXPECT_TRUE(isTold("sent a frame that makes no sense: its connections are closed"));
    EXPECT_TRUE(isTold("called an object it does not have: its connections are closed"));
}

void callBack(const RawPeer& peer) {
    ASSERT_TRUE(peer.calls.send(frame(FrameKind::Call, peer.root, BOUNCE, token() + bytesOf(1))));
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, static_cast<binder_status_t>(peer.calls.receive<FrameHeader>().code));
}
void callOneway(const RawPeer& peer) {
    ASSERT_TRUE(peer.calls.send(frame(FrameKind::Call, peer.root, POST, token() + bytesOf(1))));
    EXPECT_TRUE(peer.incoming.isClosed());
}
void sendCall(const RawPeer& peer) {
    ASSERT_TRUE(peer.calls.send(peer.echoCall(8)));
    EXPECT_TRUE(peer.calls.isClosed());
}
void sendOneway(const RawPeer& peer) {
    ASSERT_TRUE(peer.channel.send(peer.oneway(1)));
    EXPECT_TRUE(peer.calls.isClosed());
}
void openCalls(const RawPeer& peer) {
    const Fd connection = peer.openCalls();
    EXPECT_TRUE(peer.incoming.isClosed());
}
void sayHello(const RawPeer& peer) {
    const Fd fd = peer.connect();
    ASSERT_TRUE(fd.send(peer.hello(HelloKind::Identify)));
    EXPECT_TRUE(fd.isClosed());
}

/** What the peer does, and which of the calls that this needs is refused. */
struct Refusal {
    const char* name;
    void (*act)(const RawPeer&);
    Call call;

    friend std::ostream& operator<<(std::ostream& out, const Refusal& refusal) { return out << refusal.name; }
};
class RefusalTest : public HostilePeerTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusalTest, Connection_WhenTheSystemRefuses_ThenOneLineSaysWhyItIsLostAndOthersAreServed) {
    mBad.lend();
    sRefused = GetParam().call;
    GetParam().act(mBad);
    EXPECT_TRUE(mGood.isServed());
    const std::string process = std::to_string(getpid());
    EXPECT_EQ(std::vector{"a connection of process " + process + " is lost: No buffer space available"}, warnings());
    mEcho->keep(nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Each, RefusalTest,
    testing::Values(Refusal{"send of a call back", callBack, SEND}, Refusal{"send of a oneway call", callOneway, SEND},
                    Refusal{"send of a reply", sendCall, SEND}, Refusal{"recv of a call", sendCall, RECV},
                    Refusal{"recv of a oneway call", sendOneway, RECV},
                    Refusal{"recv of a connection", openCalls, RECVMSG}, Refusal{"recv of a hello", sayHello, RECVMSG},
                    Refusal{"send of a hello's answer", sayHello, SEND}));

TEST_F(HostilePeerTest, Connection_WhenItIsNone_ThenThePeerIsCutOffOrTheConnectionLost) {
    ASSERT_TRUE(mGood.control.send(frame(FrameKind::Connection, 0, 0)));
    const std::string lost = "a connection of process " + std::to_string(getpid()) + " is lost: no descriptors";
    EXPECT_TRUE(mLog.await("Binder", lost));
    EXPECT_TRUE(mGood.isServed());
    const Fd file(::open("/dev/zero", O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(mBad.control.send(frame(FrameKind::Connection, 0, 0), {file.get()}));
    EXPECT_TRUE(mBad.channel.isClosed());
    EXPECT_TRUE(isTold("passed something else than a connection: its connections are closed"));
    EXPECT_TRUE(mGood.isServed());
}

TEST_F(HostilePeerTest, Frame_WhenThePeerDiesInTheMiddle_ThenNothingIsLoggedAndOthersAreServed) {
    const Bytes call = mGood.echoCall(100);
    for (const ptrdiff_t length : {1, 15, 20, 100}) {
        RawPeer bad(mFolder);
        for (Fd* each : {&bad.calls, &bad.channel}) {
            ASSERT_TRUE(each->send(Bytes(call.begin(), call.begin() + length)));
            each->close();
        }
        EXPECT_TRUE(bad.incoming.isClosed());
    }
    ASSERT_TRUE(mBad.connect().send(Bytes(1, 1)));
    EXPECT_TRUE(mGood.isServed());
    EXPECT_EQ(std::vector<std::string>(), warnings());
}

TEST_F(OneThreadTest, Control_WhenItEndsAndTheChannelsDoNot_ThenWhatWasSentRunsAndTheSessionEnds) {
    auto& gate = *new Event;  // for ever: the handler's last look at them is not the test's to see
    auto& begun = *new Event;
    mEcho->onNote([&](int32_t) {
        begun.signal();
        EXPECT_TRUE(gate.await());
    });
    ASSERT_TRUE(mGood.channel.send(mGood.oneway(1)));
    ASSERT_TRUE(begun.await());
    ASSERT_TRUE(mBad.channel.send(mBad.oneway(2)));
    mBad.control.close();
    EXPECT_TRUE(mBad.channel.isClosed());
    gate.signal();
    EXPECT_TRUE(mBad.calls.isClosed()) << "nothing of the session is left";
    EXPECT_EQ(2, mEcho->last);
    EXPECT_TRUE(mGood.isServed());
}

TEST_F(OneThreadTest, Frame_WhenItComesByteByByte_ThenItIsServedAndHoldsNoThread) {
    std::vector<Fd> slow;
    slow.reserve(6);
    for (int i = 0; i < 6; ++i) slow.push_back(mBad.openCalls());
    const Bytes call = mBad.echoCall(8);
    for (size_t i = 0; i < call.size(); ++i) {
        for (const Fd& each : slow) ASSERT_TRUE(each.send({call[i]}));
        if (i % 16 == 0) {
            ASSERT_TRUE(mGood.isServed());
        }
    }
    for (const Fd& each : slow) EXPECT_EQ(12u, each.receiveData().size());
    const Fd greeting = mBad.connect();
    const Bytes hello = mBad.hello(HelloKind::Identify);
    ASSERT_TRUE(greeting.send({hello.front()}));
    const RawPeer other(mFolder, /*withCalls=*/false);  // after that byte is read
    ASSERT_TRUE(greeting.send(Bytes(hello.begin() + 1, hello.end())));
    EXPECT_EQ(PROTOCOL, greeting.receive<HelloReply>().protocol);
}

TEST_F(OneThreadTest, Frame_WhenTooMuchIsHalfSent_ThenTheOldestConnectionsEndAndTheLatestIsServed) {
    const Bytes call = mBad.echoCall(900'000);
    const auto middle = call.begin() + 700'000;
    std::vector<Fd> connections;
    for (int i = 0; i < 6; ++i) {
        connections.push_back(mBad.openCalls());
        ASSERT_TRUE(connections.back().send(Bytes(call.begin(), middle)));
        ASSERT_TRUE(mGood.isServed()) << "after what was sent is read";
        if (i == 1) {
            ASSERT_TRUE(connections.front().send({*middle}));  // which makes it no younger
        } else if (i == 2) {
            EXPECT_TRUE(connections.front().isClosed());
            uint8_t byte = 0;
            EXPECT_EQ(-1, recv(connections[1].get(), &byte, sizeof(byte), MSG_DONTWAIT)) << "it is open";
        }
    }
    EXPECT_TRUE(isTold("sends too much half: a connection of it is closed"));
    ASSERT_TRUE(connections.back().send(Bytes(middle, call.end())));
    EXPECT_EQ(900'004u, connections.back().receiveData().size());
    EXPECT_TRUE(mGood.isServed());
    EXPECT_TRUE(mBad.isServed()) << "only connections were lost";
}

TEST_F(OneThreadTest, Call_WhenItWaitsForABusyThread_ThenOneLineEachTime) {
    const char* const line = "all 1 binder threads are busy: calls wait";
    auto& begin = *new Event;  // for ever, as above
    auto& end = *new Event;
    mEcho->onNote([&](int32_t time) {
        begin.signal();
        EXPECT_TRUE(end.await(static_cast<size_t>(time)));
    });
    for (int32_t time = 1; time <= 2; ++time) {
        ASSERT_TRUE(mBad.calls.send(frame(FrameKind::Call, mBad.root, NOTE, token() + bytesOf(time))));
        ASSERT_TRUE(begin.await(static_cast<size_t>(time)));
        ASSERT_TRUE(mGood.calls.send(mGood.echoCall(8)));
        EXPECT_TRUE(mLog.await("Binder", line, static_cast<size_t>(time)));
        pollfd reply{mGood.calls.get(), POLLIN, 0};
        EXPECT_EQ(0, poll(&reply, 1, 0)) << "it waits on";
        end.signal();
        EXPECT_EQ(12u, mGood.calls.receiveData().size());
        EXPECT_EQ(16u, mBad.calls.receive<FrameHeader>().size);
        EXPECT_TRUE(mGood.isServed());
    }
}

TEST_F(HostilePeerTest, Transact_WhenThePeerDropsTheConnectionOrAnswersNonsense_ThenTheCallFails) {
    const auto ping = [this] { return AIBinder_ping(mEcho->kept().get()); };
    mBad.lend();
    // The calls of the second round need connections in the place of those that were lost.
    for (int round = 0; round < 2; ++round) {
        std::vector<std::future<binder_status_t>> pings;
        for (size_t i = 0; i < MAX_CALLS; ++i) pings.push_back(std::async(std::launch::async, ping));
        for (size_t i = 0; i < MAX_CALLS; ++i) mBad.control.receivePassed().close();
        for (auto& each : pings) EXPECT_EQ(STATUS_FAILED_TRANSACTION, each.get());
    }
    EXPECT_TRUE(mBad.isServed());
    const Bytes object = bytesOf(FlatObject{ObjectKind::Receivers, 99, 0}) + bytesOf(uint32_t{0});
    for (const Bytes& nonsense :
         {frame(FrameKind::Oneway, 0, 0), frame(FrameKind::Reply, 0, 0, object, 1), Bytes(16, 0xff)}) {
        for (const bool isAnswer : {true, false}) {
            RawPeer bad(mFolder);
            bad.lend();
            auto call = std::async(std::launch::async, ping);
            const Fd connection = bad.control.receivePassed();
            EXPECT_EQ(PING_CODE, connection.receive<FrameHeader>().code);
            ASSERT_TRUE((isAnswer ? connection : bad.channel).send(nonsense));
            EXPECT_EQ(STATUS_DEAD_OBJECT, call.get());
            EXPECT_TRUE(bad.channel.isClosed());
        }
    }
    mEcho->keep(nullptr);
}

TEST_F(HostilePeerTest, Transact_WhenThereIsNoMemoryForTheReplies_ThenEachCallFailsAndTheNextWorks) {
    mBad.lend();
    const auto answered = [this](const Bytes& reply) {
        auto call = std::async(std::launch::async, [&] { return AIBinder_ping(mEcho->kept().get()); });
        const Fd connection = mBad.control.receivePassed();
        (void)connection.receive<FrameHeader>();
        EXPECT_TRUE(connection.send(reply));
        return call.get();
    };
    const Bytes reply = frame(FrameKind::Reply, 0, STATUS_OK);
    const Bytes half(reply.begin(), reply.end() - 1);
    sTooMuch = sizeof(FrameBuffer::Scratch);
    for (size_t i = 0; i < MAX_CALLS; ++i) ASSERT_EQ(STATUS_NO_MEMORY, answered(half));
    ASSERT_TRUE(mBad.calls.send(frame(FrameKind::Call, mBad.root, BOUNCE, token() + bytesOf(1))));
    (void)mBad.calls.receiveData();
    ASSERT_TRUE(mBad.calls.send(half));
    EXPECT_TRUE(mBad.calls.isClosed()) << "the rest would be taken for the reply to BOUNCE";
    sTooMuch = SIZE_MAX;
    EXPECT_TRUE(mLog.has("Binder", "a call " + std::to_string(PING_CODE) + " to test.IEcho fails: no memory"));
    EXPECT_EQ(STATUS_OK, answered(reply));
    mEcho->keep(nullptr);
}

TEST_F(HostilePeerTest, Reply_WhenNobodyReadsIt_ThenItHoldsNoThreadAndComesLater) {
    std::vector<Fd> calls;
    for (int i = 0; i < 6; ++i) {  // more than there are threads
        calls.push_back(mBad.openCalls());
        ASSERT_TRUE(calls.back().send(mBad.echoCall(900'000)));
    }
    EXPECT_TRUE(mGood.isServed());
    for (const Fd& each : calls) EXPECT_EQ(900'004u, each.receiveData().size());
    ASSERT_TRUE(calls.front().send(mBad.echoCall(900'000)));
    (void)calls.front().receive<FrameHeader>();
    ASSERT_TRUE(calls.front().send(mBad.echoCall(8)));
    EXPECT_TRUE(isTold("calls before it has read its reply: its connections are closed"));
    EXPECT_TRUE(mGood.isServed());
}

TEST_F(HostilePeerTest, Reply_WhenALoopHoldsOnewayCallsBack_ThenItIsWrittenAfterThem) {
    mBad.lend();
    mEcho->onNote([this](int32_t) {
        thread_local const BusyLoop tLoop;  // outlives the call
        EXPECT_EQ(STATUS_OK, call(mEcho->kept(), NOTE, {}, {}, FLAG_ONEWAY));
    });
    auto ping = std::async(std::launch::async, [this] { return AIBinder_ping(mEcho->kept().get()); });
    const Fd waiting = mBad.control.receivePassed();
    EXPECT_EQ(PING_CODE, waiting.receive<FrameHeader>().code);
    for (int i = 0; i < 20; ++i) {
        for (const Fd* const each : std::array<const Fd*, 2>{&mBad.calls, &waiting}) {
            ASSERT_TRUE(each->send(frame(FrameKind::Call, mBad.root, NOTE, token() + bytesOf(i))));
            EXPECT_EQ(FrameKind::Reply, each->receive<FrameHeader>().kind);
            EXPECT_TRUE(hasUnread(mBad.incoming.get()));
            (void)mBad.incoming.receiveData();
        }
    }
    ASSERT_TRUE(waiting.send(frame(FrameKind::Reply, 0, STATUS_OK)));
    EXPECT_EQ(STATUS_OK, ping.get());
    mEcho->keep(nullptr);
}

TEST_F(OneThreadTest, Reply_WhenItBringsThePeersObject_ThenThatIsGivenBackAfterTheNextCallAndNotBefore) {
    mBad.lend();
    ASSERT_TRUE(mBad.calls.send(frame(FrameKind::Call, mBad.root, GIVE, token())));
    EXPECT_EQ(sizeof(FlatObject), mBad.calls.receiveData().size());
    (void)mBad.calls.receive<uint32_t>();
    mEcho->keep(nullptr);
    EXPECT_TRUE(mGood.isServed()) << "after the reply is forgotten";
    EXPECT_FALSE(hasUnread(mBad.incoming.get()));
    EXPECT_TRUE(mBad.isServed());
    EXPECT_EQ(FrameKind::Release, mBad.incoming.receive<FrameHeader>().kind);
}

class SlowPeerTest : public HostilePeerTest {
protected:
    SlowPeerTest() { mBad.lend(); }

    [[nodiscard]] binder_status_t note() const {
        return call(
            mEcho->kept(), NOTE, [](AParcel* in) { ndk::AParcel_writeVector(in, Bytes(100'000)); }, {}, FLAG_ONEWAY);
    }
    /** What the next call costs the sender; 0 when no more comes whole. */
    [[nodiscard]] Ack readNext() const {
        FrameHeader header{};
        if (recv(mBad.incoming.get(), &header, sizeof(header), MSG_WAITALL) != sizeof(header)) return 0;
        Bytes data(header.dataSize());
        const ssize_t received = recv(mBad.incoming.get(), data.data(), data.size(), MSG_WAITALL);
        return received == static_cast<ssize_t>(data.size()) ? header.size + ONEWAY_OVERHEAD : 0;
    }
    /** That calls were not delivered. */
    [[nodiscard]] std::vector<std::string> reports() const {
        auto lines = warnings();
        std::erase_if(lines, [](const std::string& line) { return !line.ends_with("were not delivered so far"); });
        return lines;
    }
    [[nodiscard]] static std::string report(int lost) {
        return std::to_string(lost) + " oneway calls to process " + std::to_string(getpid()) +
               " were not delivered so far";
    }
};

TEST_F(SlowPeerTest, Oneway_WhenThePeerEndsWithoutReading_ThenALineCountsThoseThatDidNotGetThere) {
    int lost = 0;
    while (lost < 5 && note() == STATUS_OK) ++lost;
    EXPECT_EQ(5, lost);
    mBad.channel.close();
    EXPECT_TRUE(mBad.calls.isClosed());
    while (readNext() != 0) --lost;
    EXPECT_TRUE(mLog.await("Binder", report(lost)));
}

TEST_F(SlowPeerTest, Oneway_WhenThePeerIsSlowAgainAndAgain_ThenOneLineASecondCountsThoseThatFailed) {
    constexpr int ROUNDS = 20;
    const auto begin = std::chrono::steady_clock::now();
    Ack run = 0;
    for (int i = 0; i < ROUNDS; ++i) {
        int sent = 0;
        while (note() == STATUS_OK) ++sent;
        for (; sent > 0; --sent) run += readNext();
        ASSERT_TRUE(mBad.incoming.send(bytesOf(run)));
    }
    const auto seconds = std::chrono::floor<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
    EXPECT_EQ(report(1), reports().at(0)) << "at once";
    EXPECT_LE(reports().size(), 1u + static_cast<size_t>(seconds.count()));
    mBad.channel.close();
    EXPECT_TRUE(mLog.await("Binder", report(ROUNDS)));
}

TEST_F(HostilePeerTest, Oneway_WhenThePeerSendsMoreThanItMay_ThenItIsCutOff) {
    std::promise<void> gate;
    mEcho->onNote([opened = gate.get_future().share()](int32_t) { opened.wait(); });
    int sent = 0;
    while (sent < 1000 && mBad.channel.send(mBad.oneway(sent, 2000))) ++sent;
    EXPECT_LT(sent, 1000);
    EXPECT_TRUE(isTold("sends too many oneway calls: its connections are closed"));
    EXPECT_TRUE(mGood.isServed());
    gate.set_value();
}

TEST_F(HostilePeerTest, Oneway_WhenThereIsNoMemoryForTheNext_ThenItRunsAndOthersAreServed) {
    Recorder<int32_t> notes;
    mEcho->onNote([&](int32_t value) { notes.add(value); });
    const Bytes next = mBad.oneway(2);
    sTooMuch = sizeof(FrameBuffer::Scratch);
    ASSERT_TRUE(mBad.channel.send(mBad.oneway(1) + Bytes(next.begin(), next.end() - 1)));
    EXPECT_TRUE(mBad.calls.isClosed());
    sTooMuch = SIZE_MAX;
    EXPECT_TRUE(isTold("lost a oneway call, for which there is no memory: its connections are closed"));
    ASSERT_TRUE(mGood.channel.send(mGood.oneway(3)));
    EXPECT_TRUE(notes.await(2));
    EXPECT_EQ((std::vector<int32_t>{1, 3}), notes.all());
}

TEST_F(HostilePeerTest, Connect_WhenAThousandSayNothing_ThenThoseTooManyAreClosedAndOthersServed) {
    const auto sayNonsenseTwice = [this] {
        for (int i = 0; i < 2; ++i) {
            const Fd fd = mBad.connect();
            EXPECT_TRUE(fd.send(Bytes(24, 0xff)) && fd.isClosed());
        }
    };
    sayNonsenseTwice();
    std::vector<Fd> silent;
    silent.reserve(1000);
    for (int i = 0; i < 1000; ++i) silent.push_back(mBad.connect());
    EXPECT_TRUE(silent.back().isClosed());
    EXPECT_TRUE(mGood.isServed());
    EXPECT_TRUE(isTold("has too many silent connections: such connections are closed"));
    EXPECT_TRUE(isTold("connected and did not say in time what for: such connections are closed"));
    EXPECT_TRUE(silent.front().isClosed());
    sayNonsenseTwice();
    const std::string line =
        "process " + std::to_string(getpid()) + " speaks another protocol: such connections are closed";
    EXPECT_EQ(2u, mLog.count("Binder", line)) << "one for each time";
    const Fd again = mBad.connect();
    ASSERT_TRUE(again.send(mBad.hello(HelloKind::Identify)));
    EXPECT_EQ(PROTOCOL, again.receive<HelloReply>().protocol);
}

TEST_F(HostilePeerTest, Connect_WhenAProcessHasTooManyCallsOrSessions_ThenTheRestIsRefused) {
    std::vector<Fd> calls;
    calls.reserve(MAX_SERVED);
    for (int i = 0; i < MAX_SERVED; ++i) calls.push_back(mGood.openCalls());
    EXPECT_TRUE(calls.back().isClosed());
    EXPECT_TRUE(isTold("has too many connections: such connections are closed"));
    std::vector<RawPeer> sessions;
    for (int i = 2; i < MAX_SESSIONS; ++i) sessions.emplace_back(mFolder, /*withCalls=*/false);
    EXPECT_TRUE(mGood.isServed());
    const Fd more = mBad.connect();
    auto [own, services] = pairOfSockets();
    ASSERT_TRUE(more.send(bytesOf(Hello{PROTOCOL, HelloKind::Open, Key{99}}), {own.get(), services.get()}));
    EXPECT_TRUE(more.isClosed());
    EXPECT_TRUE(isTold("has too many sessions: such connections are closed"));
}

TEST_F(HostilePeerTest, Accept_WhenDescriptorsRunOut_ThenConnectionsWaitAndNothingSpins) {
    const char* const line = "no connection can be taken for name: Too many open files";
    EXPECT_TRUE(mGood.isServed());
    Fd unconnected(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    std::optional<NoDescriptors> none(std::in_place);
    const Fd fd = mBad.connect(std::move(unconnected));
    EXPECT_TRUE(mLog.await("Binder", line));
    EXPECT_TRUE(mGood.isServed());
    sRefused = WATCH;
    none.reset();
    ASSERT_TRUE(fd.send(mBad.hello(HelloKind::Identify)));
    EXPECT_EQ(PROTOCOL, fd.receive<HelloReply>().protocol);
    EXPECT_EQ(NONE, sRefused) << "it was tried again after that";
    EXPECT_LE(mLog.count("Binder", line), 3u);
}

TEST_F(HostilePeerTest, Transact_WhenDescriptorsRunOut_ThenTheCallFailsAndKeepsNoObject) {
    mBad.lend();
    Event destroyed;
    auto* const echo = new Echo;
    echo->onDestroy = [&] { destroyed.signal(); };
    {
        const NoDescriptors none;
        EXPECT_EQ(STATUS_FAILED_TRANSACTION, keep(mEcho->kept(), newEcho(echo)));
    }
    EXPECT_EQ(1U, destroyed.count());
    mEcho->keep(nullptr);
}

TEST_F(HostilePeerTest, Reply_WhenReceived_ThenItsBytesAreThese) {
    ASSERT_TRUE(mGood.calls.send(mGood.echoCall(1)));
    using Reply = std::array<uint8_t, 24>;
    const Reply expected{24, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0};
    EXPECT_EQ(expected, mGood.calls.receive<Reply>());
}

}  // namespace
