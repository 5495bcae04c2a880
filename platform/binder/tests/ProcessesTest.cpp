#include "binder/src/UniqueFd.h"
#include "binder/tests/Peer.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Threads.h"

#include <binder/peer.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <array>
#include <future>
#include <numeric>
#include <set>

namespace {

using namespace test;

constexpr size_t MAX_CALL = (1U << 20) - 2 * 4096;

using ProcessesTest = ServerFixture;

/** With a server of one thread, and none here. */
class SingleServerTest : public ServerFixture {
protected:
    SingleServerTest() : ServerFixture("single", /*hasPool=*/false) {}
};

std::vector<uint8_t> ofSize(size_t size) {
    return std::vector<uint8_t>(size);
}

binder_status_t note(const ndk::SpAIBinder& target, int32_t value, size_t ballast = 0) {
    return call(
        target, NOTE,
        [&](AParcel* in) {
            AParcel_writeInt32(in, value);
            ndk::AParcel_writeVector(in, ofSize(ballast));
        },
        {}, FLAG_ONEWAY);
}

/** In each of so many threads, so many times. */
void inThreads(size_t count, int times, const std::function<void(size_t)>& action) {
    test::inThreads(count, [&](size_t i) {
        for (int n = 0; n < times; ++n) action(i);
    });
}

binder_status_t post(const ndk::SpAIBinder& target, int32_t count) {
    return call(target, POST, int32(count));
}

/** An object that the server keeps, until the end of the scope; its handler has run for the last time then. */
class Lent {
public:
    Lent(const ndk::SpAIBinder& server, std::function<void(int32_t)> onNote) : mServer(server) {
        auto* own = new Echo;
        own->onNote(std::move(onNote));
        own->onDestroy = [this] { mDestroyed.signal(); };
        EXPECT_EQ(STATUS_OK, keep(mServer, newEcho(own)));
    }
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    ~Lent() {
        EXPECT_EQ(STATUS_OK, call(mServer, DROP));
        EXPECT_TRUE(mDestroyed.await());
    }

private:
    const ndk::SpAIBinder& mServer;
    Event mDestroyed;
};

TEST_F(ProcessesTest, Transact_WhenSizesVary_ThenBytesComeBackUpToTheLimit) {
    ndk::ScopedAParcel prepared;
    ASSERT_EQ(STATUS_OK, AIBinder_prepareTransaction(mService.get(), prepared.getR()));
    const size_t most = MAX_CALL - static_cast<size_t>(AParcel_getDataSize(prepared.get())) - sizeof(int32_t);
    for (const size_t size : {size_t{0}, size_t{1}, size_t{300}, size_t{4000}, size_t{4096}, size_t{100'000}, most}) {
        EXPECT_EQ(STATUS_OK, echo(mService, size)) << size;
    }
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, echo(mService, most + 1));
    EXPECT_EQ(STATUS_OK, note(mService, 1, MAX_CALL / 2 - 200));
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, note(mService, 1, MAX_CALL / 2));
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, call(mService, LARGE, int32(MAX_CALL)));
    EXPECT_EQ(STATUS_OK, echo(mService, 1));
}

TEST_F(ProcessesTest, Transact_WhenItFails_ThenTheStatusTellsWhy) {
    EXPECT_EQ(STATUS_BAD_INDEX, call(mService, STATUS, int32(STATUS_BAD_INDEX)));
    EXPECT_EQ(STATUS_UNKNOWN_ERROR, call(mService, STATUS, int32(-7777))) << "no status of the API";
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, call(mService, UNKNOWN));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, call(mService, 0));
    EXPECT_EQ(STATUS_UNKNOWN_TRANSACTION, call(mService, LAST_CALL_TRANSACTION + 1));
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, call(mService, ECHO));
    EXPECT_EQ(STATUS_BAD_TYPE, call(mService, KEEP));
    const auto overwriteToken = [](AParcel* in) {
        AParcel_setDataPosition(in, 16);
        AParcel_writeInt32(in, 0);
    };
    for (const transaction_code_t code : {transaction_code_t{ECHO}, transaction_code_t{UNKNOWN}}) {
        EXPECT_EQ(STATUS_BAD_TYPE, call(mService, code, overwriteToken));
    }
    EXPECT_EQ(STATUS_OK, AIBinder_ping(mService.get()));
    EXPECT_EQ(STATUS_OK, call(mService, UNKNOWN, {}, {}, FLAG_ONEWAY)) << "a oneway call's status is lost";

    AParcel* foreign = AParcel_create();
    ndk::ScopedAParcel out;
    EXPECT_EQ(STATUS_BAD_VALUE, AIBinder_transact(mService.get(), ECHO, &foreign, out.getR(), 0));
    EXPECT_EQ(nullptr, foreign);
}

TEST_F(ProcessesTest, GetCallingPid_WhenCalled_ThenTheKernelsAnswerAndNobodyInAOnewayCall) {
    const auto pairOf = [this](transaction_code_t code) {
        std::pair<int32_t, int32_t> pair{-1, -1};
        call(mService, code, {}, [&](const AParcel* out) {
            AParcel_readInt32(out, &pair.first);
            AParcel_readInt32(out, &pair.second);
        });
        return pair;
    };
    EXPECT_EQ(std::pair(getpid(), static_cast<int32_t>(getuid())), pairOf(CALLER));
    EXPECT_EQ(getpid(), AIBinder_getCallingPid());

    Event noted;
    const Lent own(mService, [&](int32_t) {
        EXPECT_EQ(0, AIBinder_getCallingPid());
        EXPECT_EQ(getuid(), AIBinder_getCallingUid());
        noted.signal();
    });
    ASSERT_EQ(STATUS_OK, post(mService, 1));
    EXPECT_TRUE(noted.await());
}

TEST_F(ProcessesTest, WriteStrongBinder_WhenAnObjectTravels_ThenItStaysOneAndTheSame) {
    EXPECT_EQ(mService, service(NAME));
    const ndk::SpAIBinder own = newEcho(new Echo);
    const auto keepOwn = [&] {
        return callForInt(mService, KEEP, [&](AParcel* in) { AParcel_writeStrongBinder(in, own.get()); });
    };
    EXPECT_EQ(0, keepOwn());
    EXPECT_EQ(1, keepOwn()) << "the same proxy";
    EXPECT_EQ(own, callForObject(mService, GIVE));
    EXPECT_EQ(STATUS_OK, keep(mService, mService)) << "its own object";
    EXPECT_EQ(mService, callForObject(mService, GIVE));
    EXPECT_EQ(STATUS_OK, keep(mService, nullptr));
}

TEST_F(ProcessesTest, WriteStrongBinder_WhenThereAreMany_ThenTheyTravelUpToTheLimit) {
    const ndk::SpAIBinder own = newEcho(new Echo);
    const auto sending = [&](int count) {
        return call(mService, ECHO, [&](AParcel* in) {
            ndk::AParcel_writeVector(in, ofSize(4));
            for (int i = 0; i < count; ++i) AParcel_writeStrongBinder(in, own.get());
        });
    };
    EXPECT_EQ(STATUS_OK, sending(4096));
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, sending(4097));
    EXPECT_EQ(STATUS_OK, echo(mService, 1));
}

TEST_F(ProcessesTest, DecStrong_WhenThePeerLetsGo_ThenTheObjectIsDestroyed) {
    Event destroyed;
    for (size_t round = 1; round <= 3; ++round) {
        auto* own = new Echo;
        own->onDestroy = [&] { destroyed.signal(); };
        {
            const ndk::SpAIBinder object = newEcho(own);
            for (int i = 0; i < 3; ++i) ASSERT_EQ(STATUS_OK, keep(mService, object));
        }
        EXPECT_EQ(round - 1, destroyed.count());
        EXPECT_EQ(STATUS_OK, echo(mService, 1));
        ASSERT_EQ(STATUS_OK, call(mService, DROP));
        EXPECT_TRUE(destroyed.await(round));
    }
}

TEST_F(ProcessesTest, DecStrong_WhenAnObjectIsGivenBackAndSentAtOnce_ThenItIsNotLostAndManyCanCallIt) {
    const ndk::SpAIBinder own = newEcho(new Echo);
    inThreads(4, 200, [&](size_t) {
        EXPECT_EQ(STATUS_OK, call(mService, ECHO, [&](AParcel* in) {
                      ndk::AParcel_writeVector(in, ofSize(4));
                      AParcel_writeStrongBinder(in, own.get());  // arrives, and is dropped with the parcel
                  }));
    });
    ASSERT_EQ(STATUS_OK, keep(mService, own));
    inThreads(3, 50, [&](size_t) {
        EXPECT_EQ(STATUS_OK, call(mService, CALLBACK, [](AParcel* in) { ndk::AParcel_writeVector(in, ofSize(100)); }));
    });
}

TEST_F(SingleServerTest, Transact_WhenCallsGoToAndFroTenDeep_ThenOneThreadOnEachSideIsEnough) {
    std::set<std::thread::id> threads;
    auto* const own = new Echo;
    own->onNote([&, own](int32_t left) {
        threads.insert(std::this_thread::get_id());
        if (left > 0) {
            EXPECT_EQ(STATUS_OK, call(own->kept(), BOUNCE, int32(left - 1)));
        }
    });
    own->keep(mService);
    ASSERT_EQ(STATUS_OK, keep(mService, newEcho(own)));
    ASSERT_EQ(STATUS_OK, call(mService, BOUNCE, int32(10)));
    own->keep(nullptr);
    EXPECT_EQ(std::set{std::this_thread::get_id()}, threads) << "and here it is the one that waits";
    EXPECT_EQ(STATUS_OK, echo(mService, 1));
}

TEST_F(SingleServerTest, Transact_WhenItFollowsOnewayCalls_ThenTheyRunInThatOrderThoughALoopHoldsThemBack) {
    const auto noteThenAsk = [this](int32_t i, const auto& ask) {
        for (int n = 0; n < i % 5; ++n) ASSERT_EQ(STATUS_OK, note(mService, -1));
        ASSERT_EQ(STATUS_OK, note(mService, i));
        ask([&] { ASSERT_EQ(i, callForInt(mService, LAST)); });
    };
    for (int32_t i = 0; i < 2000; ++i) noteThenAsk(i, [](const auto& asking) { asking(); });
    const BusyLoop loop;
    for (int32_t i = 0; i < 500; ++i) noteThenAsk(i, [](const auto& asking) { std::thread(asking).join(); });
}

TEST_F(SingleServerTest, Oneway_WhenItFollowsOneToAnotherObject_ThenTheyRunInThatOrderBeforeTheNextCall) {
    const ndk::SpAIBinder second = callForObject(mService, MAKE);
    ASSERT_TRUE(second);
    for (int32_t i = 0; i < 500; ++i) {
        ASSERT_EQ(STATUS_OK, note(mService, i));
        ASSERT_EQ(STATUS_OK, note(second, i));
        ASSERT_EQ(i, callForInt(second, LAST));
        ASSERT_EQ(i, callForInt(mService, LAST));
    }
}

TEST_F(ProcessesTest, Transact_WhenThereAreMoreThreadsThanConnections_ThenEachGetsItsOwnReply) {
    std::filesystem::remove_all(mFolder);  // The session makes its connections without the name.
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit fewer{static_cast<rlim_t>(dup(0)) + 20, limit.rlim_max};
    // UBSan needs a pipe to look at a class for the first time; without descriptors it calls a sound object invalid.
    inThreads(1, 1, [&](size_t i) { EXPECT_EQ(STATUS_OK, echo(mService, i)); });
    for (const rlimit& each : {fewer, limit}) {
        setrlimit(RLIMIT_NOFILE, &each);
        inThreads(100, 20, [&](size_t i) { EXPECT_EQ(STATUS_OK, echo(mService, 10 + i)); });
    }
    inThreads(24, 2, [&](size_t) { EXPECT_EQ(STATUS_OK, echo(mService, 900'000)); });
}

TEST_F(ProcessesTest, Transact_WhenNoThreadCanOpenAConnection_ThenNoneWaitsForAnother) {
    EXPECT_EQ(STATUS_OK, note(mService, 1));  // UBSan looks at the classes while it can.
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    inThreads(4, 20'000, [&](size_t) { EXPECT_EQ(STATUS_FAILED_TRANSACTION, AIBinder_ping(mService.get())); });
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(STATUS_OK, echo(mService, 1));
}

TEST_F(ProcessesTest, Dump_WhenTheObjectIsRemote_ThenArgumentsGoThereAndTheTextComesBack) {
    const auto dump = [this](std::vector<const char*> arguments) {
        std::array<int, 2> ends{};
        EXPECT_EQ(0, pipe2(ends.data(), O_NONBLOCK));
        EXPECT_EQ(STATUS_OK,
                  AIBinder_dump(mService.get(), ends[1], arguments.data(), static_cast<uint32_t>(arguments.size())));
        std::array<char, 100> text{};
        const ssize_t size = read(ends[0], text.data(), text.size());
        for (const int each : ends) close(each);
        return std::string(text.data(), size < 0 ? 0 : static_cast<size_t>(size));
    };
    EXPECT_EQ("", dump({}));
    EXPECT_EQ("a\n\nb c\n", dump({"a", "", "b c"}));
    const char* const fails = "fail";
    EXPECT_EQ(STATUS_BAD_VALUE, AIBinder_dump(mService.get(), 1, const_cast<const char**>(&fails), 1));
    const binder::UniqueFd file(memfd_create("dump", MFD_CLOEXEC));
    const char* const large = "large";
    EXPECT_EQ(STATUS_OK, AIBinder_dump(mService.get(), file.get(), const_cast<const char**>(&large), 1));
    EXPECT_GT(lseek(file.get(), 0, SEEK_END), 1'000'000) << "as much as a reply holds";
    EXPECT_EQ(STATUS_UNKNOWN_ERROR, AIBinder_dump(mService.get(), -1, const_cast<const char**>(&ECHO_DESCRIPTOR), 1));
}

TEST_F(ProcessesTest, Proxy_WhenAskedForClassAndExtension_ThenTheFirstClassAndWhatWasSetThere) {
    EXPECT_EQ(echoClass(), AIBinder_getClass(mService.get()));
    EXPECT_TRUE(AIBinder_isRemote(mService.get()));
    EXPECT_FALSE(AIBinder_associateClass(mService.get(), otherClass()));
    EXPECT_TRUE(AIBinder_associateClass(mService.get(), echoClass()));
    EXPECT_EQ(nullptr, AIBinder_getUserData(mService.get()));
    ndk::SpAIBinder extension;
    EXPECT_EQ(STATUS_INVALID_OPERATION, AIBinder_setExtension(mService.get(), mService.get()));
    ASSERT_EQ(STATUS_OK, AIBinder_getExtension(mService.get(), extension.getR()));
    EXPECT_EQ(nullptr, extension.get());
    const ndk::SpAIBinder own = newEcho(new Echo);
    ASSERT_EQ(STATUS_OK, AIBinder_setExtension(own.get(), mService.get()));
    ASSERT_EQ(STATUS_OK, AIBinder_getExtension(own.get(), extension.getR()));
    EXPECT_EQ(mService, extension);
}

TEST_F(ProcessesTest, Transact_WhenAThirdProcesssObjectIsPassedOn_ThenInvalidOperation) {
    Peer other("serve", "other");
    EXPECT_EQ(STATUS_INVALID_OPERATION, keep(mService, service("other")));
    EXPECT_EQ(STATUS_OK, echo(mService, 1));
}

TEST_F(ProcessesTest, Oneway_WhenAHandlerBlocks_ThenOthersAreServedAndItsOwnCallsRunInOrderOneAtATime) {
    constexpr size_t CALLS = 1000;
    std::promise<void> gate;
    std::atomic<int> running{0};
    Recorder<int32_t> blocked;
    Event other;
    const Lent first(mService, [&, opened = gate.get_future().share()](int32_t value) {
        EXPECT_EQ(1, ++running);
        opened.wait();
        blocked.add(value);
        --running;
    });
    ASSERT_EQ(STATUS_OK, post(mService, CALLS));
    const Lent second(mService, [&](int32_t) { other.signal(); });
    ASSERT_EQ(STATUS_OK, post(mService, 1));
    EXPECT_TRUE(other.await());
    EXPECT_EQ(STATUS_OK, echo(mService, 10)) << "synchronous calls go on too";
    EXPECT_EQ(0u, blocked.count());
    gate.set_value();
    ASSERT_TRUE(blocked.await(CALLS));
    std::vector<int32_t> inOrder(CALLS);
    std::iota(inOrder.begin(), inOrder.end(), 0);
    EXPECT_EQ(inOrder, blocked.all());
}

ABinderProcess_Peer onlyPeer() {
    Recorder<ABinderProcess_Peer> peers;
    const auto add = [](const ABinderProcess_Peer* each, void* to) { static_cast<decltype(peers)*>(to)->add(*each); };
    ABinderProcess_forEachPeer(add, &peers);
    return peers.all().at(0);
}

void fillUp(const Peer& server, const ndk::SpAIBinder& service) {
    const LogCapture log;
    constexpr size_t BALLAST = 1000;
    ASSERT_EQ(STATUS_OK, echo(service, 1));
    server.stop();
    size_t sent = 0;
    while (sent < 10'000 && note(service, 0, BALLAST) == STATUS_OK) ++sent;
    EXPECT_GT(sent * BALLAST, 350u * 1024);
    EXPECT_LT(sent * BALLAST, 640u * 1024);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(STATUS_FAILED_TRANSACTION, note(service, 0, BALLAST));
    auto* const unsent = new Echo;
    bool destroyed = false;
    unsent->onDestroy = [&] { destroyed = true; };
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, call(
                                             service, KEEP,
                                             [&](AParcel* in) {
                                                 AParcel_writeStrongBinder(in, newEcho(unsent).get());
                                                 ndk::AParcel_writeVector(in, ofSize(BALLAST));
                                             },
                                             {}, FLAG_ONEWAY));
    EXPECT_TRUE(destroyed);
    const std::string line = "too much waits for process " + std::to_string(server.pid()) +
                             ": oneway calls to it fail until it has run some";
    EXPECT_EQ(1u, log.count("Binder", line, ANDROID_LOG_WARN));
    EXPECT_TRUE(AIBinder_isAlive(service.get()));
    EXPECT_EQ(onlyPeer().pid, server.pid());
    EXPECT_GT(onlyPeer().unreadBytes, 350u * 1024);
    EXPECT_EQ(onlyPeer().undelivered, 11u);
    server.resume();
    EXPECT_EQ(STATUS_OK, echo(service, 1));
    while (note(service, 0) != STATUS_OK) ASSERT_EQ(STATUS_OK, AIBinder_ping(service.get()));
    const auto lines = log.texts("Binder");
    EXPECT_THAT(lines.back(), testing::MatchesRegex("[0-9]+ oneway calls to process [0-9]+ were not delivered so far"));
    EXPECT_GE(std::stoi(lines.back()), 11) << "all that failed";
}

TEST_F(ProcessesTest, Oneway_WhenTheReceiverIsTooSlow_ThenHalfAMegabyteWaitsAndMoreFailsOnce) {
    fillUp(mServer, mService);
}

TEST_F(ProcessesTest, Oneway_WhenTheReceiverOfALoopIsTooSlow_ThenItIsTheSame) {
    const BusyLoop loop;
    fillUp(mServer, mService);
}

TEST_F(ProcessesTest, Oneway_WhenALoopMakesMany_ThenNoneWaitsForAHandlerThatBlocks) {
    Recorder<int32_t> notes;
    const Lent own(mService, [&](int32_t value) { notes.add(value); });
    const BusyLoop loop;
    for (size_t i = 1; i <= 20; ++i) {
        ASSERT_EQ(STATUS_OK, call(mService, POST, int32(1), {}, FLAG_ONEWAY));
        ASSERT_TRUE(notes.await(i)) << "though this thread does not sleep";
    }
}

TEST_F(SingleServerTest, Oneway_WhenTheReceiverOfALoopIsDead_ThenTheNextCallThatWouldWaitFindsOut) {
    BusyLoop loop;
    ASSERT_EQ(STATUS_OK, note(mService, 1));
    ASSERT_TRUE(loop.hasOutput());
    loop.output->flush();
    EXPECT_FALSE(loop.hasOutput());
    mServer.end();
    EXPECT_EQ(STATUS_DEAD_OBJECT, note(mService, 1));
    EXPECT_EQ(STATUS_DEAD_OBJECT, note(mService, 1));
    EXPECT_FALSE(AIBinder_isAlive(mService.get()));
}

TEST_F(SingleServerTest, DecStrong_WhenALoopsCallToTheObjectWaits_ThenTheCallRunsBeforeTheObjectGoes) {
    const BusyLoop loop;
    for (int32_t i = 0; i < 20; ++i) {
        ASSERT_EQ(STATUS_OK, note(callForObject(mService, MAKE), i));
        ASSERT_EQ(STATUS_OK, echo(mService, 1)) << "or the session has ended";
    }
}

TEST_F(ProcessesTest, Oneway_WhenAnObjectsHandlerIsSlow_ThenTheSenderFailsInsteadOfThisProcessGrowing) {
    std::promise<void> gate;
    Recorder<int32_t> notes;
    const Lent own(mService, [&, opened = gate.get_future().share()](int32_t value) {
        opened.wait();
        notes.add(value);
    });
    binder_status_t status = STATUS_OK;
    int rounds = 0;
    while (status == STATUS_OK && ++rounds < 100) status = post(mService, 500);
    EXPECT_EQ(STATUS_FAILED_TRANSACTION, status);
    gate.set_value();
    EXPECT_TRUE(notes.await(500));
    while (post(mService, 1) != STATUS_OK) ASSERT_EQ(STATUS_OK, AIBinder_ping(mService.get()));
}

}  // namespace
