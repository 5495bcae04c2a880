#include <utils/DeathMonitor.h>

#include "tests/support/Await.h"
#include "tests/support/ClientProcess.h"
#include "tests/support/LooperThread.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/SubsysClient.h"
#include "tests/support/Threads.h"

#include <mindroid/Boxes.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using mindroid::sp;
using subsys_utils::DeathMonitor;
using testing::ElementsAre;

using Response = test::interface::ISubsysResponse;

constexpr int32_t WHAT = 7;

struct Death {
    int32_t what;
    const mindroid::Object* obj;
    bool operator==(const Death&) const = default;
};

class DeathHandler : public mindroid::Handler {
public:
    DeathHandler() = default;
    explicit DeathHandler(const sp<mindroid::Looper>& looper) : Handler(looper) {}
    void handleMessage(const sp<mindroid::Message>& message) override {
        deaths.add({message->what, message->obj.get()});
    }

    test::Recorder<Death> deaths;
};

class DeathMonitors : public testing::Test {
protected:
    using Client = test::ClientProcess<test::SubsysResponseClient>;

    DeathMonitors() { ABinderProcess_startThreadPool(); }

    [[nodiscard]] sp<DeathMonitor> monitor() const {
        sp<DeathMonitor> result = new DeathMonitor();
        result->registerClientDeathEvent(handler, WHAT, nullptr);
        return result;
    }

    const test::NamesFolder names;
    Client first{"first"};
    Client second{"second"};
    test::LooperThread looper;
    const sp<DeathHandler> handler = new DeathHandler(looper.looper());
};

TEST_F(DeathMonitors, Death_WhenTheClientIsKilled_ThenOneMessageWithWhatAndObject) {
    const sp<mindroid::Object> obj = new mindroid::Integer(1);
    const sp<DeathMonitor> watched = new DeathMonitor();
    watched->registerClientDeathEvent(handler, 3, nullptr);
    watched->init(first.callback<Response>());
    watched->registerClientDeathEvent(handler, WHAT, obj);
    first.kill();
    ASSERT_TRUE(handler->deaths.await());

    const sp<DeathMonitor> later = monitor();
    later->init(second.callback<Response>());
    second.kill();
    ASSERT_TRUE(handler->deaths.await(2));
    EXPECT_THAT(handler->deaths.all(), ElementsAre(Death{WHAT, obj.get()}, Death{WHAT, nullptr}));
}

TEST_F(DeathMonitors, Init_WhenTheCallbackIsDeadAlready_ThenTold) {
    const auto callback = first.killed<Response>();
    const auto watched = monitor();
    watched->init(callback);
    EXPECT_TRUE(handler->deaths.await());
    watched->init(callback);
    EXPECT_TRUE(handler->deaths.await(2));
}

TEST_F(DeathMonitors, Init_WhenThereIsANewCallback_ThenTheOldOnesDeathIsSilent) {
    const auto watched = monitor();
    watched->init(first.callback<Response>());
    watched->init(second.callback<Response>());
    ASSERT_TRUE(first.killed<Response>());
    looper.drain();
    EXPECT_EQ(handler->deaths.count(), 0u);
    second.kill();
    EXPECT_TRUE(handler->deaths.await());
}

TEST_F(DeathMonitors, Monitor_WhenADeathIsQueued_ThenItIsDroppedForTheReplacedAndTheDestroyedAlone) {
    const auto dead = first.killed<Response>();
    const auto replaced = monitor(), other = monitor();
    auto destroyed = monitor();
    const sp<mindroid::Object> obj = new mindroid::Integer(1);
    other->registerClientDeathEvent(handler, WHAT, obj);
    looper.run([&] {  // The deaths wait in the queue.
        for (DeathMonitor* each : {replaced.get(), destroyed.get(), other.get()}) each->init(dead);
        replaced->init(second.callback<Response>());
        destroyed.clear();
    });
    looper.drain();
    EXPECT_THAT(handler->deaths.all(), ElementsAre(Death{WHAT, obj.get()}));
    second.kill();
    EXPECT_TRUE(handler->deaths.await(2));
}

TEST_F(DeathMonitors, Init_WhenTheCallbackIsNullOrLocal_ThenNothingIsWatched) {
    const auto watched = monitor();
    for (const std::shared_ptr<ndk::ICInterface>& callback :
         {std::shared_ptr<ndk::ICInterface>(ndk::SharedRefBase::make<test::SubsysResponseClient>()),
          std::shared_ptr<ndk::ICInterface>(ndk::SharedRefBase::make<test::interface::ISubsysResponseDefault>()),
          std::shared_ptr<ndk::ICInterface>()}) {
        const auto before = first.callback<Response>();
        const long holders = before.use_count();
        watched->init(before);
        EXPECT_EQ(before.use_count(), holders + 1) << "the monitor holds what it watches";
        watched->init(callback);
        EXPECT_EQ(before.use_count(), holders);
    }
    ASSERT_TRUE(first.killed<Response>());
    looper.drain();
    EXPECT_EQ(handler->deaths.count(), 0u);
}

TEST_F(DeathMonitors, Death_WhenTheHandlerIsMissingOrHasNoLooper_ThenItIsDropped) {
    const sp<DeathMonitor> unregistered = new DeathMonitor(), loose = new DeathMonitor();
    loose->registerClientDeathEvent(new DeathHandler(), WHAT, nullptr);
    const auto watched = monitor();
    for (const auto& each : {unregistered, loose, watched}) each->init(first.callback<Response>());
    first.kill();
    EXPECT_TRUE(handler->deaths.await());
}

TEST_F(DeathMonitors, Init_WhenThreadsRaceWithADeath_ThenTheLastCallbackIsWatched) {
    const auto a = first.callback<Response>(), b = second.callback<Response>();
    const auto watched = monitor();
    test::inThreads(5, [&](size_t i) {
        if (i == 4) return first.kill();
        for (size_t round = 0; round < 100; ++round) watched->init((round + i) % 2 == 0 ? a : nullptr);
    });
    watched->init(b);
    looper.drain();
    handler->deaths.clear();
    second.kill();
    ASSERT_TRUE(handler->deaths.await());
    looper.drain();
    EXPECT_EQ(handler->deaths.count(), 1u);
}

}  // namespace
