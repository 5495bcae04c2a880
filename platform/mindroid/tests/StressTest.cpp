// Many threads on one looper: what is accepted either runs once or is dropped once, in each sender's order, and all
// that messages held is let go.

#include "LoopFixture.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/Boxes.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/RegistrantList.h>

#include <gtest/gtest.h>

#include <array>

namespace mindroid {
namespace {

constexpr int SENDERS = 4;
constexpr int MESSAGES = 2000;

// Checks the order of each sender's messages: arg1 is the sender, arg2 its count.
class OrderChecker : public Handler {
public:
    using Handler::Handler;
    void handleMessage(const sp<Message>& message) override {
        int& last = mLast[static_cast<size_t>(message->arg1)];
        EXPECT_LT(last, message->arg2);
        last = message->arg2;
        ++ran;
    }
    std::atomic<int> ran{0};

private:
    std::array<int, SENDERS> mLast{-1, -1, -1, -1};
};

// Every third message is a run of the task.
void sendAll(const sp<Handler>& handler, int sender, const sp<Runnable>& task, std::atomic<int>& accepted,
             std::atomic<int>& deaths) {
    for (int i = 0; i < MESSAGES; ++i) {
        const sp<Message> message = handler->obtainMessage(0, sender, i);
        if (i % 3 == 1) message->setCallback(task);
        message->obj = new test::Mortal(deaths);
        accepted += message->sendToTarget();
    }
}

TEST(Stress, Senders_WhenManyAndSomeoneRemovesAndQuits_ThenEachMessageIsSpentOnce) {
    const test::LogCapture log;
    for (int round = 0; round < 4; ++round) {
        sp<HandlerThread> thread = new HandlerThread();
        thread->start();
        const sp<OrderChecker> checker = new OrderChecker(thread->getLooper());
        std::atomic<int> accepted{0}, deaths{0}, taskRuns{0};
        const sp<Runnable> task = new Runnable([&] { ++taskRuns; });
        std::vector<std::thread> threads;
        for (int sender = 0; sender < SENDERS; ++sender) {
            threads.emplace_back([&, sender] { sendAll(checker, sender, task, accepted, deaths); });
        }
        while (accepted < 1000) checker->removeCallbacks(task);
        if (round % 2 == 1) thread->getLooper()->quit();
        for (std::thread& sender : threads) sender.join();
        thread.clear();
        EXPECT_LE(checker->ran + taskRuns, accepted);
        EXPECT_EQ(deaths, SENDERS * MESSAGES);
    }
}

TEST(Stress, TasksAndList_WhenUsedByMany_ThenOnlyATaskUnderWayGoesOnAndTheListStaysWhole) {
    const test::LooperThread looper;
    const sp<RegistrantList> list = new RegistrantList();
    std::atomic<int> told{0};
    const sp<MessageCallback> callback = new MessageCallback([&](const auto&) { ++told; });
    test::inThreads(SENDERS, [&](size_t) {
        const sp<Handler> handler = new Handler(looper.looper());
        for (int i = 0; i < 200; ++i) {
            std::atomic<int> runs{0};
            const sp<Runnable> task = new Runnable([&] { ++runs; });
            for (const uint64_t due : {0U, 1U, 0U, 0U}) handler->sendMessageAtTime(handler->obtainMessage(task), due);
            test::sendLater(handler, handler->obtainMessage(task));
            handler->removeCallbacks(task);
            const int before = runs;
            list->remove(handler);
            list->add(new Registrant(handler, callback, nullptr));
            list->notify(new Integer(i));
            test::runOn(handler, [] {});
            EXPECT_LE(runs - before, 1);
        }
        list->remove(handler);
    });
    EXPECT_EQ(list->size(), 0u);
    EXPECT_GE(told, SENDERS * 200);
}

}  // namespace
}  // namespace mindroid
