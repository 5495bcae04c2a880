#include "service/SubsysServiceStateTracker.h"

#include "service/channel/SubsysServiceIndication.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"
#include "tests/support/SubsysClient.h"

#include <mindroid/Boxes.h>
#include <mindroid/Message.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace test::interface;
using test::Indication;

namespace {

class SubsysServiceStateTrackerTest : public testing::Test {
protected:
    test::LogCapture log;
    test::LooperThread looper;
    mindroid::sp<SubsysServiceStateTracker> tracker = looper.make<SubsysServiceStateTracker>();
    std::shared_ptr<test::SubsysIndicationClient> client = ndk::SharedRefBase::make<test::SubsysIndicationClient>();

    void SetUp() override { SubsysServiceIndication::getInstance()->setCallback(client); }

    void subsysState(bool up) {
        tracker->obtainMessage(2, new mindroid::Boolean(up))->sendToTarget();
        looper.drain();
    }
    void hidlState(uint8_t state) {
        tracker->setHidlState(state);
        looper.drain();
    }
    // The states that the client was told, in order.
    std::vector<bool> told() {
        looper.drain();
        std::vector<bool> states;
        for (const Indication& indication : client->indications.all())
            states.push_back(std::get<bool>(indication.value));
        return states;
    }
    bool pending() {
        return looper.run([&] { return tracker->voteOnNotify(); });
    }
};

TEST_F(SubsysServiceStateTrackerTest, Init_WhenNoClientIsConnected_ThenStateIsUpAndWaitsForOne) {
    tracker->init();
    EXPECT_EQ(told(), std::vector<bool>{});
    EXPECT_EQ(looper.run([&] { return tracker->checkServiceState(); }), 1);
    EXPECT_FALSE(pending());
    EXPECT_EQ(log.lines(), (std::vector<test::LogLine>{
                               {ANDROID_LOG_DEBUG, "SubsysServiceStateTracker", "SubsysServiceStateTracker init"},
                               {ANDROID_LOG_DEBUG, "SubsysServiceStateTracker", "onSubsysStateChanged state : 1"},
                               {ANDROID_LOG_DEBUG, "SubsysServiceStateTracker", "onSubsysStateChanged changed."}}));
}

TEST_F(SubsysServiceStateTrackerTest, Transitions_WhenClientAndSubsystemComeAndGo_ThenEachNewsIsToldOnce) {
    const std::vector<std::pair<std::function<void()>, std::vector<bool>>> steps = {
        {[&] { hidlState(1); }, {false}},  // Told even though nothing is pending.
        {[&] { subsysState(true); }, {true}}, {[&] { subsysState(true); }, {}},
        {[&] { hidlState(0); }, {}},          {[&] { subsysState(false); }, {}},  // Nobody to tell.
        {[&] { hidlState(1); }, {false}},                     // Told now,
        {[&] { subsysState(false); }, {}},                          // and only once.
        {[&] { hidlState(0); }, {}},          {[&] { hidlState(1); }, {false}},
    };
    for (size_t i = 0; i < steps.size(); ++i) {
        client->indications.clear();
        steps[i].first();
        EXPECT_EQ(told(), steps[i].second) << "step " << i;
        EXPECT_FALSE(pending());
    }
}

TEST_F(SubsysServiceStateTrackerTest, HandleMessage_WhenUnknownOrWithoutItsObject_ThenNothingHappens) {
    for (const int32_t what : {0, 1, 2, 3}) tracker->obtainMessage(what)->sendToTarget();
    EXPECT_EQ(told(), std::vector<bool>{});
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(SubsysServiceStateTrackerTest, SetHidlState_WhenANewerTrackerExists_ThenThatOneActs) {
    const auto newer = looper.make<SubsysServiceStateTracker>();
    tracker->init();
    looper.drain();
    EXPECT_EQ(looper.run([&] { return tracker->checkServiceState(); }), 0);
    EXPECT_EQ(looper.run([&] { return newer->checkServiceState(); }), 1);
}

}  // namespace
