#include <mindroid/Handler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include <mindroid/HandlerThread.h>
#include <mindroid/SystemClock.h>

#include "LoopFixture.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

namespace mindroid {
namespace {

using test::Probe;
using test::QUIT;

TEST(Handler, Send_WhenItsThreadHadNoLooper_ThenFailsWithAWarning) {
    const test::LogCapture log;
    const sp<Handler> handler = new Handler();
    EXPECT_TRUE(handler->getLooper() == nullptr);
    EXPECT_FALSE(handler->sendEmptyMessage(1));
    EXPECT_FALSE(handler->sendEmptyMessageDelayed(1, 5));
    EXPECT_FALSE(handler->post(new Runnable([] {})));
    EXPECT_FALSE(handler->obtainMessage(1)->sendToTarget());
    EXPECT_EQ(log.count("Handler", "the handler has no live looper: message dropped", ANDROID_LOG_WARN), 4u);
    handler->removeMessages(1);
    handler->removeCallbacksAndMessages();
    EXPECT_FALSE(handler->sendMessage(nullptr));
    EXPECT_EQ(log.count("Handler", "no message to send", ANDROID_LOG_WARN), 1u);
}

TEST(Handler, SendMessage_WhenItHasAnotherTargetOrACallback_ThenThisHandlerOrTheCallbackGetsIt) {
    sp<Probe> first, second;
    int runs = 0;
    test::runLoop([&] {
        first = new Probe();
        second = new Probe();
        EXPECT_TRUE(second->sendMessage(first->obtainMessage(3)));
        second->post(new Runnable([&] { ++runs; }));
        second->post(new Runnable(nullptr));
        second->sendEmptyMessage(QUIT);
    });
    EXPECT_TRUE(first->seen.empty());
    EXPECT_EQ(second->seen, std::vector<int32_t>{3});
    EXPECT_EQ(runs, 1);
}

// ---- Order. ----

struct Step {
    enum Kind { NOW, DELAYED, AT, ADVANCE } kind;
    int32_t what;
    int64_t millis = 0;

    void perform(const sp<Handler>& handler, ManualClock& clock, uint64_t start) const {
        const auto later = static_cast<uint64_t>(millis);
        if (kind == NOW) handler->sendEmptyMessage(what);
        if (kind == DELAYED) handler->sendEmptyMessageDelayed(what, millis);
        if (kind == AT) handler->sendMessageAtTime(handler->obtainMessage(what), start + later);
        if (kind == ADVANCE) clock.advance(later);
    }
};

std::vector<int32_t> orderOf(const std::vector<Step>& steps) {
    sp<Probe> probe;
    test::runLoop([&] {
        ManualClock clock;
        probe = new Probe();
        const uint64_t start = SystemClock::uptimeMillis();
        for (const Step& step : steps) step.perform(probe, clock, start);
        probe->sendEmptyMessage(QUIT);
        Looper::loop();
    });
    return probe->seen;
}

TEST(Handler, Messages_WhenSent_ThenRunByDueTimeThenBySending) {
    using enum Step::Kind;
    constexpr int64_t FOREVER = std::numeric_limits<int64_t>::max();
    const struct {
        const char* rule;
        std::vector<Step> steps;
        std::vector<int32_t> order;
    } cases[] = {
        {"now", {{NOW, 1}, {NOW, 2}, {DELAYED, 3, -5}, {NOW, 4}}, {1, 2, 3, 4}},
        {"the earlier due first", {{DELAYED, 1, 9}, {DELAYED, 2, 3}, {AT, 3, 6}, {ADVANCE, 0, 9}}, {2, 3, 1}},
        {"of those equally due the first sent first",
         {{DELAYED, 1, 5}, {ADVANCE, 0, 1}, {DELAYED, 2, 4}, {AT, 3, 5}, {ADVANCE, 0, 4}},
         {1, 2, 3}},
        {"now does not overtake what is due", {{NOW, 1}, {DELAYED, 2, 5}, {ADVANCE, 0, 5}, {NOW, 3}}, {1, 2, 3}},
        {"now runs before what is not due", {{DELAYED, 1, 5}, {ADVANCE, 0, 4}, {NOW, 2}, {ADVANCE, 0, 1}}, {2, 1}},
        {"the past counts as now", {{ADVANCE, 0, 9}, {AT, 1, 4}, {AT, 2, 3}, {NOW, 3}, {AT, 4, -9}}, {1, 2, 3, 4}},
        {"the far future never comes",
         {{DELAYED, 1, FOREVER}, {AT, 2, FOREVER}, {DELAYED, 3, 7}, {ADVANCE, 0, 7}},
         {3}},
    };
    for (const auto& [rule, steps, order] : cases) EXPECT_EQ(orderOf(steps), order) << rule;
}

TEST(Handler, Delayed_WhenManyInAnyOrder_ThenRunByDueTimeThenBySending) {
    constexpr int32_t COUNT = 1000, TIMES = 50;
    sp<Probe> probe;
    const auto delay = [](int32_t what) { return what * 37 % TIMES; };
    test::runLoop([&] {
        ManualClock clock;
        probe = new Probe();
        for (int32_t what = 0; what < COUNT; ++what) probe->sendEmptyMessageDelayed(what, 1 + delay(what));
        probe->sendEmptyMessageDelayed(COUNT, 7);
        probe->removeMessages(COUNT);
        clock.advance(TIMES);
        probe->sendEmptyMessage(QUIT);
        Looper::loop();
    });
    std::vector<int32_t> expected(COUNT);
    for (int32_t what = 0; what < COUNT; ++what) expected[static_cast<size_t>(what)] = what;
    std::stable_sort(expected.begin(), expected.end(), [&](int32_t a, int32_t b) { return delay(a) < delay(b); });
    EXPECT_EQ(probe->seen, expected);
}

// ---- The clock. ----

TEST(ManualClock, Advance_WhenALooperSleeps_ThenItRunsWhatIsDueAndNoMore) {
    ManualClock clock;
    const test::LooperThread looper;
    test::Recorder<int> ran;
    for (const int delay : {200, 199, 400}) {
        looper.handler()->postDelayed(new Runnable([&ran, delay] { ran.add(delay); }), delay);
    }
    clock.advance(198);
    looper.handler()->post(new Runnable([&] { ran.add(0); }));
    ASSERT_TRUE(ran.await(1));
    clock.advance(2);
    ASSERT_TRUE(ran.await(3));
    looper.handler()->removeCallbacksAndMessages();
    EXPECT_EQ(ran.all(), (std::vector<int>{0, 199, 200}));
}

TEST(ManualClock, Destruction_WhenALooperSleepsOnIt_ThenRealTimeGoesOnAndNothingRunsBeforeItIsDue) {
    const sp<HandlerThread> thread = new HandlerThread();
    const auto due = SystemClock::uptimeMillis() + 30;
    test::Recorder<uint64_t> ran;
    {
        ManualClock clock;
        thread->start();
        const sp<Handler> handler = new Handler(thread->getLooper());
        handler->postDelayed(new Runnable([&] { ran.add(SystemClock::uptimeMillis()); }), 30);
    }
    ASSERT_TRUE(ran.await());
    EXPECT_GE(ran.all().front(), due);
}

TEST(ManualClockDeathTest, Construction_WhenThereIsOne_ThenTheProcessEnds) {
    ManualClock clock;
    EXPECT_DEATH(ManualClock(), "there is a ManualClock already");
}

}  // namespace
}  // namespace mindroid
