#include <mindroid/Message.h>

#include "LoopFixture.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

namespace mindroid {
namespace {

using test::Mortal;
using test::Probe;
using test::QUIT;

// A message whose callback holds the message and something that dies with it, as a reply that waits for its answer.
sp<Message> selfHolding(const sp<Handler>& target, std::atomic<int>& deaths) {
    const sp<Message> message = target->obtainMessage();
    const sp<Object> mortal = new Mortal(deaths);
    message->obj = mortal;
    message->setCallback(new Runnable([message, mortal] {}));
    return message;
}

TEST(Message, SendToTarget_WhenManyThreadsCompete_ThenItRunsOnce) {
    const test::LogCapture log;
    sp<Probe> probe;
    test::runLoop([&] {
        probe = new Probe();
        const sp<Message> message = probe->obtainMessage(7);
        EXPECT_EQ(test::countTrue(4, [&] { return message->sendToTarget(); }), 1);
        test::send(probe, QUIT);
    });
    EXPECT_EQ(probe->seen, std::vector<int32_t>{7});
    EXPECT_EQ(log.count("Message", "a message can be sent only once", ANDROID_LOG_WARN), 3u);
}

TEST(Message, Send_WhenDispatchedBefore_ThenIsRefusedWithOneWarning) {
    const test::LogCapture log;
    test::runLoop([&] {
        const sp<Probe> probe = new Probe();
        const sp<Message> message = probe->obtainMessage(1);
        probe->action = [&](const auto&) {
            EXPECT_FALSE(message->sendToTarget());
            EXPECT_FALSE(test::sendLater(probe, message));
            message->setCallback(nullptr);
        };
        EXPECT_TRUE(message->sendToTarget());
        test::send(probe, QUIT);
        Looper::loop();
    });
    EXPECT_EQ(log.count("Message", "a message can be sent only once"), 2u);
    EXPECT_EQ(log.count("Message", "a message that was sent keeps its callback", ANDROID_LOG_WARN), 1u);
    EXPECT_EQ(log.lines().size(), 3u);
}

TEST(Message, SendToTarget_WhenNoTarget_ThenFailsAndMayBeSentLater) {
    const test::LogCapture log;
    sp<Probe> probe;
    test::runLoop([&] {
        probe = new Probe();
        const sp<Message> message = Message::obtain();
        EXPECT_FALSE(message->sendToTarget());
        EXPECT_TRUE(probe->sendMessageAtTime(message, 0));
        test::send(probe, QUIT);
    });
    EXPECT_EQ(probe->seen.size(), 1u);
    EXPECT_EQ(log.lines("Message").size(), 1u);
}

TEST(Message, Message_WhenDispatchedDroppedOrRefused_ThenLetsGoOfAllItHolds) {
    const std::pair<const char*, std::function<void(const sp<Handler>&)>> cases[] = {
        {"dispatched",
         [](const auto& handler) {
             handler->obtainMessage(new Runnable([] { Looper::myLooper()->quit(); }))->sendToTarget();
             Looper::loop();
         }},
        {"quit", [](const auto&) { Looper::myLooper()->quit(); }},
        {"thread ended", [](const auto&) {}}};
    for (const auto& [how, drop] : cases) {
        std::atomic<int> deaths{0};
        std::thread([&, &drop = drop] {
            Looper::prepare();
            const sp<Handler> handler = new Handler();
            selfHolding(handler, deaths)->sendToTarget();
            test::sendLater(handler, selfHolding(handler, deaths));
            drop(handler);
        }).join();
        EXPECT_EQ(deaths, 2) << how;
    }
    std::atomic<int> deaths{0};
    EXPECT_FALSE(selfHolding(new Handler(), deaths)->sendToTarget());
    EXPECT_EQ(deaths, 1);
}

}  // namespace
}  // namespace mindroid
