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
    enum { NOW, DELAYED, AT, ADVANCE } kind;
    int32_t what;
    int64_t millis;
};

struct OrderCase {
    const char* name;
    std::vector<Step> steps;
    std::vector<int32_t> order;
};

void perform(const Step& step, const sp<Handler>& handler, ManualClock& clock, uint64_t start) {
    const auto millis = static_cast<uint64_t>(step.millis);
    if (step.kind == Step::NOW) handler->sendEmptyMessage(step.what);
    if (step.kind == Step::DELAYED) handler->sendEmptyMessageDelayed(step.what, step.millis);
    if (step.kind == Step::AT) handler->sendMessageAtTime(handler->obtainMessage(step.what), start + millis);
    if (step.kind == Step::ADVANCE) clock.advance(millis);
}

class HandlerOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(HandlerOrder, Messages_WhenSent_ThenRunByDueTimeThenBySending) {
    sp<Probe> probe;
    test::runLoop([&] {
        ManualClock clock;
        probe = new Probe();
        const uint64_t start = SystemClock::uptimeMillis();
        for (const Step& step : GetParam().steps) perform(step, probe, clock, start);
        probe->sendEmptyMessage(QUIT);
        Looper::loop();
    });
    EXPECT_EQ(probe->seen, GetParam().order);
}

constexpr int64_t FOREVER = std::numeric_limits<int64_t>::max();

INSTANTIATE_TEST_SUITE_P(
    Cases, HandlerOrder,
    testing::Values(
        OrderCase{
            "Now", {{Step::NOW, 1, 0}, {Step::NOW, 2, 0}, {Step::DELAYED, 3, -5}, {Step::NOW, 4, 0}}, {1, 2, 3, 4}},
        OrderCase{"EarlierDueFirst",
                  {{Step::DELAYED, 1, 9}, {Step::DELAYED, 2, 3}, {Step::AT, 3, 6}, {Step::ADVANCE, 0, 9}},
                  {2, 3, 1}},
        OrderCase{"EqualDueFirstSentFirst",
                  {{Step::DELAYED, 1, 5},
                   {Step::ADVANCE, 0, 1},
                   {Step::DELAYED, 2, 4},
                   {Step::AT, 3, 5},
                   {Step::ADVANCE, 0, 4}},
                  {1, 2, 3}},
        OrderCase{"NowDoesNotOvertakeWhatIsDue",
                  {{Step::NOW, 1, 0}, {Step::DELAYED, 2, 5}, {Step::ADVANCE, 0, 5}, {Step::NOW, 3, 0}},
                  {1, 2, 3}},
        OrderCase{"NowRunsBeforeWhatIsNotDue",
                  {{Step::DELAYED, 1, 5}, {Step::ADVANCE, 0, 4}, {Step::NOW, 2, 0}, {Step::ADVANCE, 0, 1}},
                  {2, 1}},
        OrderCase{"ThePastCountsAsNow",
                  {{Step::ADVANCE, 0, 9}, {Step::AT, 1, 4}, {Step::AT, 2, 3}, {Step::NOW, 3, 0}, {Step::AT, 4, -9}},
                  {1, 2, 3, 4}},
        OrderCase{"TheFarFutureNeverComes",
                  {{Step::DELAYED, 1, FOREVER}, {Step::AT, 2, FOREVER}, {Step::DELAYED, 3, 7}, {Step::ADVANCE, 0, 7}},
                  {3}}),
    [](const auto& tested) { return tested.param.name; });

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
    const sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const sp<Handler> handler = new Handler(thread->getLooper());
    test::Recorder<int> ran;
    for (const int delay : {200, 199, 400}) {
        handler->postDelayed(new Runnable([&ran, delay] { ran.add(delay); }), delay);
    }
    clock.advance(198);
    handler->post(new Runnable([&] { ran.add(0); }));
    ASSERT_TRUE(ran.await(1));
    clock.advance(2);
    ASSERT_TRUE(ran.await(3));
    handler->removeCallbacksAndMessages();
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
