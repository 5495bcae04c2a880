#include <android/binder_process.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <numeric>

#include "binder/src/Frame.h"
#include "binder/src/UniqueFd.h"
#include "binder/tests/Peer.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"

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

/** What a call of ECHO or NOTE begins with. */
Bytes token() {
    ndk::ScopedAParcel parcel;
    const ndk::SpAIBinder object = newEcho(new Echo);
    AIBinder_prepareTransaction(object.get(), parcel.getR());
    Bytes bytes(static_cast<size_t>(AParcel_getDataSize(parcel.get())));
    const Bytes words = bytesOf(std::array<int32_t, 4>{INT32_MIN, -1, 0x53595354, 10});
    std::copy(words.begin(), words.end(), bytes.begin());
    for (size_t i = 0; i < strlen(ECHO_DESCRIPTOR); ++i) bytes[16 + 2 * i] = static_cast<uint8_t>(ECHO_DESCRIPTOR[i]);
    return bytes;
}

Bytes byteArray(size_t size) {
    return bytesOf(static_cast<int32_t>(size)) + Bytes((size + 3) / 4 * 4, 7);
}

/** A process that speaks the protocol by hand: this one, over sockets of its own. */
class RawPeer {
public:
    explicit RawPeer(const std::filesystem::path& folder) : mFolder(folder) {}

    static UniqueFd newSocket() { return UniqueFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)); }
    [[nodiscard]] UniqueFd connect(UniqueFd fd = newSocket()) const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, (mFolder / "socket@name").c_str(), sizeof(address.sun_path) - 1);
        EXPECT_EQ(0, ::connect(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)));
        const timeval limit{10, 0};
        setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
        return fd;
    }
    static bool send(const UniqueFd& fd, const Bytes& bytes, int flags = 0) {
        return ::send(fd.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | flags) == static_cast<ssize_t>(bytes.size());
    }
    template <typename T>
    static T receive(const UniqueFd& fd) {
        T value{};
        EXPECT_EQ(static_cast<ssize_t>(sizeof(T)), recv(fd.get(), &value, sizeof(T), MSG_WAITALL));
        return value;
    }
    /** Of a reply. */
    static Bytes receiveData(const UniqueFd& fd) {
        Bytes data(receive<FrameHeader>(fd).dataSize());
        EXPECT_EQ(static_cast<ssize_t>(data.size()), recv(fd.get(), data.data(), data.size(), MSG_WAITALL));
        return data;
    }
    static bool isClosed(const UniqueFd& fd) {
        char byte = 0;
        const ssize_t received = recv(fd.get(), &byte, 1, 0);
        return received == 0 || (received < 0 && errno == ECONNRESET);
    }
    [[nodiscard]] Bytes hello(HelloKind kind) const { return bytesOf(Hello{kProtocol, kind, mKey}); }

    /** A session: the control connection, one for calls, and the id of the service's object. */
    void open() {
        HelloReply reply{};
        do {  // again while this process has too many sessions that end
            control = connect();
            ASSERT_TRUE(send(control, hello(HelloKind::Control)));
        } while (recv(control.get(), &reply, sizeof(reply), MSG_WAITALL) != sizeof(reply));
        mKey = reply.key;
        const UniqueFd naming = connect();
        ASSERT_TRUE(send(naming, hello(HelloKind::Root)));
        root = receive<HelloReply>(naming).object;
        ASSERT_NE(0u, root);
        calls = openCalls();
    }
    [[nodiscard]] UniqueFd openCalls() const {
        UniqueFd fd = connect();
        send(fd, hello(HelloKind::Call));
        return fd;
    }
    [[nodiscard]] Bytes echoCall(size_t size) const {
        return frame(FrameKind::Call, root, ECHO, token() + byteArray(size));
    }
    /** Whether ECHO works. */
    [[nodiscard]] bool isServed() const {
        if (!send(calls, echoCall(8))) return false;
        const auto header = receive<FrameHeader>(calls);
        std::array<uint8_t, 12> data{};
        return header.kind == FrameKind::Reply && header.code == STATUS_OK && header.size == 28 &&
               recv(calls.get(), data.data(), data.size(), MSG_WAITALL) == 12;
    }

    UniqueFd control;
    UniqueFd calls;
    uint32_t root = 0;

private:
    const std::filesystem::path mFolder;
    Key mKey{1};
};

class HostilePeerTest : public NamesFixture {
protected:
    explicit HostilePeerTest(uint32_t threads = 2) {
        ABinderProcess_setThreadPoolMaxThreadCount(threads);
        ABinderProcess_startThreadPool();
        EXPECT_EQ(EX_NONE, AServiceManager_addService(mObject.get(), "name"));
        mGood.open();
    }

    [[nodiscard]] std::vector<std::string> warnings() const { return mLog.texts("Binder"); }
    static std::string told(const char* what) { return "process " + std::to_string(getpid()) + " " + what; }

    const LogCapture mLog;
    Echo* const mEcho = new Echo;
    const ndk::SpAIBinder mObject = newEcho(mEcho);
    RawPeer mGood{mFolder};
    RawPeer mBad{mFolder};
};

class OneThreadTest : public HostilePeerTest {
protected:
    OneThreadTest() : HostilePeerTest(1) {}
};

TEST_F(HostilePeerTest, Hello_WhenItIsWrong_ThenThatConnectionIsClosedWithOneLineForEachReason) {
    Key unknown{9};
    const struct {
        Bytes hello;
        const char* reason;
    } cases[] = {
        {bytesOf(Hello{kProtocol + 1, HelloKind::Control, unknown}), "speaks another protocol"},
        {bytesOf(Hello{kProtocol, static_cast<HelloKind>(99), unknown}), "said a hello that makes no sense"},
        {bytesOf(Hello{kProtocol, HelloKind::Call, unknown}), "has no session"},
        {bytesOf(Hello{kProtocol, HelloKind::Reverse, unknown}), "has no session"},
        {bytesOf(Hello{kProtocol, HelloKind::Root, unknown}), "has no session"},
        {mGood.hello(HelloKind::Reverse), "opened a connection that nobody asked for"},
        {Bytes(24, 0xff), "speaks another protocol"},
    };
    for (const auto& [hello, reason] : cases) {
        const UniqueFd fd = mBad.connect();
        ASSERT_TRUE(RawPeer::send(fd, hello));
        EXPECT_TRUE(RawPeer::isClosed(fd)) << reason;
        const std::string line = told(reason) + ": such connections are closed";
        EXPECT_EQ(1u, mLog.count("Binder", line, ANDROID_LOG_WARN)) << reason;
    }
    EXPECT_EQ(4u, warnings().size());
    const UniqueFd endless = mBad.connect();
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(RawPeer::send(endless, mBad.hello(HelloKind::Identify)));
        EXPECT_EQ(kProtocol, RawPeer::receive<HelloReply>(endless).protocol);
    }
    EXPECT_TRUE(RawPeer::isClosed(endless));
    EXPECT_TRUE(mGood.isServed());
}

TEST_F(HostilePeerTest, Frame_WhenItMakesNoSense_ThenThePeersConnectionsAreClosedWithOneLine) {
    const auto header = [](uint32_t size, uint16_t objects) {
        return bytesOf(FrameHeader{size, FrameKind::Call, objects, 1, ECHO});
    };
    const auto object = [](ObjectKind kind, uint32_t id, uint32_t offset) {
        return frame(FrameKind::Call, 1, ECHO, bytesOf(FlatObject{kind, id, 0}) + bytesOf(offset), 1);
    };
    using enum ObjectKind;
    struct Case {
        const char* name;
        bool onControl;
        Bytes bytes;
    };
    const Case cases[] = {
        {"size below the header", false, header(15, 0)},
        {"size of all bits", false, header(UINT32_MAX, 0)},
        {"a byte over the limit", false, header(static_cast<uint32_t>(kMaxCall) + 17, 0)},
        {"more offsets than bytes", false, header(16 + 8, 3)},
        {"too many objects", false, header(1 << 19, UINT16_MAX)},
        {"an unknown kind", false, frame(static_cast<FrameKind>(77), 1, ECHO)},
        {"a reply that nobody waits for", false, frame(FrameKind::Reply, 1, 0)},
        {"a oneway call between calls", false, frame(FrameKind::Oneway, 1, NOTE)},
        {"an object it does not have", false, frame(FrameKind::Call, 77, ECHO)},
        {"an offset past the end", false, object(Senders, 5, 4)},
        {"an offset of all bits", false, object(Senders, 5, UINT32_MAX)},
        {"an odd offset", false, object(Senders, 5, 1)},
        {"an object without a kind", false, object(static_cast<ObjectKind>(7), 5, 0)},
        {"a null object with an offset", false, object(Null, 0, 0)},
        {"an object of ours that it never had", false, object(Receivers, 99, 0)},
        {"overlapping objects", false,
         frame(FrameKind::Call, 1, ECHO, Bytes(24, 1) + bytesOf(std::array<uint32_t, 2>{0, 4}), 2)},
        {"a call on the control connection", true, frame(FrameKind::Call, 1, ECHO)},
        {"a oneway call to nothing", true, frame(FrameKind::Oneway, 77, NOTE)},
        {"a connection that it must open itself", true, frame(FrameKind::OpenReverse, 0, 0)},
        {"a release of nothing", true, frame(FrameKind::Release, 77, 1)},
        {"a release of too much", true, frame(FrameKind::Release, 1, 1000)},
        {"a size below the header", true, header(0, 0)},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        RawPeer bad(mFolder);
        bad.open();
        const size_t before = warnings().size();
        ASSERT_TRUE(RawPeer::send(each.onControl ? bad.control : bad.calls, each.bytes));
        EXPECT_TRUE(RawPeer::isClosed(bad.calls));
        EXPECT_TRUE(RawPeer::isClosed(bad.control));
        EXPECT_EQ(before + 1, warnings().size());
        ASSERT_TRUE(mGood.isServed());
    }
}

TEST_F(HostilePeerTest, Frame_WhenThePeerDiesAtAnyByte_ThenNobodyElseNotices) {
    RawPeer whole(mFolder);
    whole.open();
    const Bytes call = whole.echoCall(100);
    for (size_t length = 1; length < call.size(); length += 7) {
        const UniqueFd calls = whole.openCalls();
        ASSERT_TRUE(RawPeer::send(calls, Bytes(call.begin(), call.begin() + static_cast<ptrdiff_t>(length))));
    }
    for (const size_t length : {0U, 1U, 15U, 20U}) {
        RawPeer bad(mFolder);
        bad.open();
        RawPeer::send(bad.control, Bytes(call.begin(), call.begin() + static_cast<ptrdiff_t>(length)));
    }
    for (size_t length = 0; length < sizeof(Hello); ++length) {
        const UniqueFd fd = mBad.connect();
        if (length != 0) RawPeer::send(fd, Bytes(length, 1));
    }
    EXPECT_TRUE(mGood.isServed());
    EXPECT_TRUE(whole.isServed());
    const std::string mayBe = told("has too many sessions: such connections are closed");
    for (const std::string& line : warnings()) EXPECT_EQ(mayBe, line);
}

TEST_F(HostilePeerTest, Frame_WhenItComesByteByByte_ThenItIsServedAndHoldsNoThread) {
    mBad.open();
    std::vector<UniqueFd> slow;
    for (int i = 0; i < 6; ++i) slow.push_back(mBad.openCalls());  // more than there are threads
    const Bytes call = mBad.echoCall(8);
    for (size_t i = 0; i < call.size(); ++i) {
        for (const UniqueFd& each : slow) ASSERT_TRUE(RawPeer::send(each, {call[i]}));
        if (i % 16 == 0) {
            ASSERT_TRUE(mGood.isServed());
        }
    }
    for (const UniqueFd& each : slow) EXPECT_EQ(28u, RawPeer::receive<FrameHeader>(each).size);
}

TEST_F(HostilePeerTest, Frame_WhenEveryConnectionHoldsHalfALargeOne_ThenOthersAreServedAndNoneIsLost) {
    mBad.open();
    const Bytes call = mBad.echoCall(900'000);
    const auto middle = call.begin() + 700'000;
    std::vector<UniqueFd> connections;
    for (int i = 0; i < 63; ++i) {
        connections.push_back(mBad.openCalls());
        ASSERT_TRUE(RawPeer::send(connections.back(), Bytes(call.begin(), middle)));
    }
    EXPECT_TRUE(mGood.isServed());
    for (const UniqueFd& each : connections) {
        ASSERT_TRUE(RawPeer::send(each, Bytes(middle, call.end())));
        EXPECT_EQ(900'004u, RawPeer::receiveData(each).size());
    }
}

TEST_F(OneThreadTest, Frame_WhenItDrips_ThenOthersAreServedMeanwhile) {
    mBad.open();
    ASSERT_TRUE(RawPeer::send(mBad.calls, bytesOf(FrameHeader{1'000'000, FrameKind::Call, 0, mBad.root, ECHO})));
    pollfd reply{mGood.calls.get(), POLLIN, 0};
    int drips = 0;
    for (; drips < 1000 && poll(&reply, 1, 8) == 0; ++drips) {
        ASSERT_TRUE(RawPeer::send(mBad.calls, {1}));
        if (drips == 10) {
            ASSERT_TRUE(RawPeer::send(mGood.calls, mGood.echoCall(8)));
        }
    }
    EXPECT_LT(drips, 1000);
}

TEST_F(OneThreadTest, Call_WhenItWaitsForABusyThread_ThenOneLineEachTime) {
    const char* const line = "all 1 binder threads are busy: calls wait";
    mBad.open();
    Event begin;
    Event end;
    mEcho->onNote = [&](int32_t time) {
        begin.signal();
        EXPECT_TRUE(end.await(static_cast<size_t>(time)));
    };
    for (int32_t time = 1; time <= 2; ++time) {
        ASSERT_TRUE(RawPeer::send(mBad.calls, frame(FrameKind::Call, mBad.root, NOTE, token() + bytesOf(time))));
        ASSERT_TRUE(begin.await(static_cast<size_t>(time)));
        ASSERT_TRUE(RawPeer::send(mGood.calls, mGood.echoCall(8)));
        EXPECT_TRUE(mLog.await("Binder", line, static_cast<size_t>(time)));
        pollfd reply{mGood.calls.get(), POLLIN, 0};
        EXPECT_EQ(0, poll(&reply, 1, 100)) << "it waits on";
        end.signal();
        EXPECT_EQ(12u, RawPeer::receiveData(mGood.calls).size());
        EXPECT_EQ(16u, RawPeer::receive<FrameHeader>(mBad.calls).size);
        EXPECT_TRUE(mGood.isServed());
    }
    EXPECT_EQ(2u, mLog.count("Binder", line, ANDROID_LOG_WARN));
}

TEST_F(HostilePeerTest, Transact_WhenThePeerOpensNoConnectionForIt_ThenFailedTransactionAfterAWhile) {
    mBad.open();
    const Bytes object = bytesOf(FlatObject{ObjectKind::Senders, 5, 0});
    const auto offset = static_cast<uint32_t>(token().size());
    ASSERT_TRUE(
        RawPeer::send(mBad.calls, frame(FrameKind::Call, mBad.root, KEEP, token() + object + bytesOf(offset), 1)));
    EXPECT_EQ(0u, RawPeer::receive<FrameHeader>(mBad.calls).code);
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, AIBinder_ping(mEcho->kept().get()));
    mEcho->keep(nullptr);
}

TEST_F(HostilePeerTest, Reply_WhenNobodyReadsIt_ThenItHoldsNoThreadAndComesLater) {
    RawPeer deaf(mFolder);
    deaf.open();
    std::vector<UniqueFd> calls;
    for (int i = 0; i < 6; ++i) {  // more than there are threads
        calls.push_back(deaf.openCalls());
        ASSERT_TRUE(RawPeer::send(calls.back(), deaf.echoCall(900'000)));
    }
    EXPECT_TRUE(mGood.isServed());
    for (const UniqueFd& each : calls) {
        EXPECT_EQ(900'004u, RawPeer::receiveData(each).size());
    }
}

TEST_F(HostilePeerTest, Connect_WhenAThousandSayNothing_ThenThoseTooManyAreClosedAndOthersServed) {
    std::vector<UniqueFd> silent;
    for (int i = 0; i < 1000; ++i) silent.push_back(mBad.connect());
    EXPECT_TRUE(RawPeer::isClosed(silent.back()));
    EXPECT_TRUE(mGood.isServed());
    RawPeer late(mFolder);
    EXPECT_TRUE(mLog.await("Binder", told("has too many silent connections: such connections are closed")));
    EXPECT_EQ(1u, warnings().size());
    silent.clear();
    UniqueFd again = late.connect();
    while (!RawPeer::send(again, late.hello(HelloKind::Identify)) || RawPeer::isClosed(again)) again = late.connect();
}

TEST_F(HostilePeerTest, Connect_WhenAProcessHasTooManyCallsOrSessions_ThenTheRestIsRefused) {
    std::vector<UniqueFd> calls;
    for (int i = 0; i < 70; ++i) calls.push_back(mGood.openCalls());
    EXPECT_TRUE(RawPeer::isClosed(calls.back()));
    std::vector<RawPeer> sessions;
    for (int i = 0; i < 3; ++i) {
        sessions.emplace_back(mFolder);
        sessions.back().open();
    }
    const UniqueFd more = mBad.connect();
    ASSERT_TRUE(RawPeer::send(more, mBad.hello(HelloKind::Control)));
    EXPECT_TRUE(RawPeer::isClosed(more));
    EXPECT_TRUE(mGood.isServed());
}

TEST_F(HostilePeerTest, Accept_WhenDescriptorsRunOut_ThenConnectionsWaitAndNothingSpins) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    RawPeer late(mFolder);
    std::vector<UniqueFd> connections;
    for (int i = 0; i < 3; ++i) connections.push_back(late.connect());
    EXPECT_TRUE(mGood.isServed());
    UniqueFd unconnected = RawPeer::newSocket();
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const UniqueFd fd = late.connect(std::move(unconnected));
    EXPECT_TRUE(mLog.await("Binder", "no connection can be taken for name: Too many open files"));
    EXPECT_TRUE(mGood.isServed());
    setrlimit(RLIMIT_NOFILE, &limit);
    ASSERT_TRUE(RawPeer::send(fd, late.hello(HelloKind::Identify)));
    EXPECT_EQ(kProtocol, RawPeer::receive<HelloReply>(fd).protocol);
    EXPECT_LE(mLog.count("Binder", "no connection can be taken for name: Too many open files"), 20u);
}

TEST_F(HostilePeerTest, Reply_WhenReceived_ThenItsBytesAreThese) {
    ASSERT_TRUE(RawPeer::send(mGood.calls, mGood.echoCall(1)));
    using Reply = std::array<uint8_t, 24>;
    const Reply expected{24, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0};
    EXPECT_EQ(expected, RawPeer::receive<Reply>(mGood.calls));
    ASSERT_TRUE(RawPeer::send(mGood.calls, frame(FrameKind::Call, mGood.root, UNKNOWN, token())));
    EXPECT_EQ(static_cast<uint32_t>(STATUS_UNKNOWN_TRANSACTION), RawPeer::receive<FrameHeader>(mGood.calls).code);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(RawPeer::send(mGood.calls, frame(FrameKind::Call, mGood.root, ECHO, Bytes(8))));
        EXPECT_EQ(static_cast<uint32_t>(STATUS_BAD_TYPE), RawPeer::receive<FrameHeader>(mGood.calls).code);
    }
    EXPECT_EQ(1u, warnings().size());
    ASSERT_TRUE(RawPeer::send(mGood.calls, frame(FrameKind::Call, mGood.root, 0x01000000, token())));
    EXPECT_EQ(static_cast<uint32_t>(STATUS_UNKNOWN_TRANSACTION), RawPeer::receive<FrameHeader>(mGood.calls).code);
}

}  // namespace
