#include "binder/tests/Peer.h"
#include "tests/support/Await.h"

#include <array>
#include <chrono>
#include <future>
#include <thread>

namespace {

using namespace test;

/** One link's events: 'd' for died, 'u' for unlinked. */
struct Cookie {
    Recorder<char> events;
    std::function<void()> onDied = [] {};

    [[nodiscard]] std::string all() const {
        const auto values = events.all();
        return {values.begin(), values.end()};
    }
};

void onDied(void* cookie) {
    static_cast<Cookie*>(cookie)->events.add('d');
    static_cast<Cookie*>(cookie)->onDied();
}
void onUnlinked(void* cookie) {
    static_cast<Cookie*>(cookie)->events.add('u');
}

class DeathTest : public ServerFixture {
protected:
    DeathTest() { AIBinder_DeathRecipient_setOnUnlinked(mRecipient.get(), onUnlinked); }

    binder_status_t link(Cookie& cookie) { return AIBinder_linkToDeath(mService.get(), mRecipient.get(), &cookie); }
    binder_status_t unlink(Cookie& cookie) { return AIBinder_unlinkToDeath(mService.get(), mRecipient.get(), &cookie); }

    Cookie mFirst;
    Cookie mSecond;
    ndk::ScopedAIBinder_DeathRecipient mRecipient{AIBinder_DeathRecipient_new(onDied)};
};

TEST_F(DeathTest, LinkToDeath_WhenTheProcessIsKilled_ThenEachLinkHearsItOnceAndIsUnlinkedOnce) {
    ASSERT_EQ(STATUS_OK, link(mFirst));
    ASSERT_EQ(STATUS_OK, link(mFirst)) << "a duplicate";
    ASSERT_EQ(STATUS_OK, link(mSecond));
    mServer.end();
    ASSERT_TRUE(mFirst.events.await(4));
    ASSERT_TRUE(mSecond.events.await(2));
    EXPECT_EQ("dudu", mFirst.all());
    EXPECT_EQ("du", mSecond.all());
    EXPECT_FALSE(AIBinder_isAlive(mService.get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, unlink(mFirst));
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_ping(mService.get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, echo(mService, 1));
    EXPECT_EQ(STATUS_DEAD_OBJECT, call(mService, NOTE, {}, {}, FLAG_ONEWAY));

    Cookie late;
    EXPECT_EQ(STATUS_DEAD_OBJECT, link(late));
    EXPECT_EQ("u", late.all());
}

TEST_F(DeathTest, UnlinkToDeath_WhenLinkedAndNot_ThenOneLinkEndsAndTheRestWithTheRecipientSilently) {
    ASSERT_EQ(STATUS_OK, link(mFirst));
    ASSERT_EQ(STATUS_OK, link(mFirst));
    EXPECT_EQ(STATUS_NAME_NOT_FOUND, unlink(mSecond));
    ASSERT_EQ(STATUS_OK, unlink(mFirst));
    EXPECT_EQ("u", mFirst.all());
    ASSERT_EQ(STATUS_OK, unlink(mFirst));
    EXPECT_EQ(STATUS_NAME_NOT_FOUND, unlink(mFirst));
    EXPECT_EQ("uu", mFirst.all());
    ASSERT_EQ(STATUS_OK, link(mFirst));
    ASSERT_EQ(STATUS_OK, link(mSecond));
    mRecipient.set(nullptr);
    EXPECT_EQ("uuu", mFirst.all());
    EXPECT_EQ("u", mSecond.all());
}

TEST_F(DeathTest, LinkToDeath_WhenTheObjectIsLocal_ThenInvalidOperationAndUnlinked) {
    const ndk::SpAIBinder local = newEcho(new Echo);
    EXPECT_EQ(STATUS_INVALID_OPERATION, AIBinder_linkToDeath(local.get(), mRecipient.get(), &mFirst));
    EXPECT_EQ("u", mFirst.all());
    EXPECT_EQ(STATUS_INVALID_OPERATION, AIBinder_unlinkToDeath(local.get(), mRecipient.get(), &mFirst));
    EXPECT_TRUE(AIBinder_isAlive(local.get()));
}

TEST_F(DeathTest, DecStrong_WhenItDropsTheLastReference_ThenItsLinksEndSilently) {
    ASSERT_EQ(STATUS_OK, link(mFirst));
    mService = nullptr;
    EXPECT_EQ("u", mFirst.all());
    mServer.end();
    EXPECT_EQ("u", mFirst.all());
}

TEST_F(DeathTest, OnBinderDied_WhenItUnlinksAndDeletesTheRecipient_ThenTheOthersAreUnlinkedToo) {
    mFirst.onDied = [this] {
        mFirst.events.add(unlink(mFirst) == STATUS_DEAD_OBJECT ? 'x' : '?');
        mRecipient.set(nullptr);
    };
    ASSERT_EQ(STATUS_OK, link(mFirst));
    ASSERT_EQ(STATUS_OK, link(mSecond));
    mServer.end();
    ASSERT_TRUE(mFirst.events.await(3));
    EXPECT_EQ("dxu", mFirst.all());
    EXPECT_EQ("u", mSecond.all());
}

TEST_F(DeathTest, Delete_WhenAnObituaryIsRunning_ThenItIsFinishedFirst) {
    Event began;
    Event end;
    mFirst.onDied = [&] {
        began.signal();
        EXPECT_TRUE(end.await());
    };
    ASSERT_EQ(STATUS_OK, link(mFirst));
    mServer.end();
    ASSERT_TRUE(began.await());
    auto deletion = std::async(std::launch::async, [this] { mRecipient.set(nullptr); });
    EXPECT_EQ(std::future_status::timeout, deletion.wait_for(std::chrono::milliseconds(20)));
    end.signal();
    deletion.get();
    EXPECT_EQ("du", mFirst.all());
}

TEST_F(DeathTest, Delete_WhenTwoObituariesDeleteEachOthersRecipient_ThenNeitherWaits) {
    Peer other("serve", "other");
    const ndk::SpAIBinder otherService = service("other");
    ndk::ScopedAIBinder_DeathRecipient otherRecipient(AIBinder_DeathRecipient_new(onDied));
    Event running;
    Event done;
    const auto deleting = [&](ndk::ScopedAIBinder_DeathRecipient& recipient) {
        running.signal();
        EXPECT_TRUE(running.await(2));
        recipient.set(nullptr);
        done.signal();
    };
    mFirst.onDied = [&] { deleting(otherRecipient); };
    mSecond.onDied = [&] { deleting(mRecipient); };
    ASSERT_EQ(STATUS_OK, link(mFirst));
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(otherService.get(), otherRecipient.get(), &mSecond));
    mServer.end();
    other.end();
    EXPECT_TRUE(done.await(2));
    EXPECT_TRUE(mFirst.events.await(2)) << "died and unlinked";
}

TEST_F(DeathTest, Transact_WhenTheProcessDiesMeanwhile_ThenDeadObjectAndNotAliveAgain) {
    ASSERT_EQ(STATUS_OK, echo(mService, 1));
    mServer.stop();
    Recorder<binder_status_t> statuses;
    std::array<std::thread, 3> callers;
    for (auto& caller : callers) caller = std::thread([&] { statuses.add(echo(mService, 1)); });
    mServer.end();
    for (auto& caller : callers) caller.join();
    EXPECT_EQ(std::vector<binder_status_t>(3, STATUS_DEAD_OBJECT), statuses.all());
    EXPECT_FALSE(AIBinder_isAlive(mService.get()));

    Peer next("serve", NAME);
    ASSERT_TRUE(next.isReady());
    EXPECT_FALSE(AIBinder_isAlive(mService.get()));
    EXPECT_EQ(STATUS_OK, echo(service(NAME), 1));
}

TEST_F(DeathTest, LinkToDeath_WhenAClientDies_ThenTheServiceHearsOfItsCallback) {
    auto* own = new Echo;
    const ndk::SpAIBinder object = newEcho(own);
    ASSERT_EQ(EX_NONE, AServiceManager_addService(object.get(), "lender"));
    for (int32_t round = 1; round <= 3; ++round) {
        Peer client("lend", "lender");
        ASSERT_TRUE(client.isReady());
        Cookie cookie;
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(own->kept().get(), mRecipient.get(), &cookie));
        EXPECT_EQ(STATUS_OK, echo(own->kept(), 10));
        client.end();
        ASSERT_TRUE(cookie.events.await(2));
        EXPECT_EQ("du", cookie.all());
    }
    own->keep(nullptr);
}

}  // namespace
