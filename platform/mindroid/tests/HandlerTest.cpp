#include <mindroid/Handler.h>

#include "LoopFixture.h"
#include "mindroid/testing/ManualClock.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/HandlerThread.h>
#include <mindroid/SystemClock.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace mindroid {
namespace {

using test::Probe;
using test::QUIT;

TEST(Handler, Send_WhenItsThreadHadNoLooper_ThenFailsWithAWarning) {
    const test::LogCapture log;
    const sp<Handler> handler = new Handler();
    const sp<Runnable> task = new Runnable([] {});
    EXPECT_FALSE(test::send(handler, 1));
    EXPECT_FALSE(handler->sendEmptyMessageDelayed(1, 5));
    EXPECT_FALSE(test::sendLater(handler, handler->obtainMessage(1)));
    EXPECT_FALSE(handler->obtainMessage(task)->sendToTarget());
    EXPECT_EQ(log.count("Handler", "the handler has no live looper: message dropped", ANDROID_LOG_WARN), 4u);
    handler->removeCallbacks(task);
    EXPECT_FALSE(test::sendLater(handler, nullptr));
    EXPECT_EQ(log.count("Handler", "no message to send", ANDROID_LOG_WARN), 1u);
}

TEST(Handler, SendMessageAtTime_WhenTheMessageHasAnotherTarget_ThenThisHandlerGetsIt) {
    sp<Probe> first, second;
    test::runLoop([&] {
        first = new Probe();
        second = new Probe();
        EXPECT_TRUE(second->sendMessageAtTime(first->obtainMessage(3), 0));
        second->obtainMessage(new Runnable(nullptr))->sendToTarget();
        test::send(second, QUIT);
    });
    EXPECT_TRUE(first->seen.empty());
    EXPECT_EQ(second->seen, std::vector<int32_t>{3});
}

// ---- Order. ----

struct Step {
    enum Kind { NOW, DELAYED, AT, ADVANCE } kind;
    int32_t what;
    int64_t millis = 0;

    void perform(const sp<Handler>& handler, ManualClock& clock, uint64_t start) const {
        const auto later = static_cast<uint64_t>(millis);
        if (kind == NOW) test::send(handler, what);
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
        test::send(probe, QUIT);
        Looper::loop();
    });
    return probe->seen;
}

TEST(Handler, Messages_WhenSent_ThenRunByDueTimeThenBySending) {
    using enum Step::Kind;
    constexpr int64_t FOREVER = std::numeric_limits<int64_t>::max(), LONG_AGO = std::numeric_limits<int64_t>::min();
    const struct {
        const char* rule;
        std::vector<Step> steps;
        std::vector<int32_t> order;
    } cases[] = {
        {"now", {{NOW, 1}, {NOW, 2}, {DELAYED, 3, LONG_AGO}, {NOW, 4}}, {1, 2, 3, 4}},
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

// ---- The clock. ----

TEST(ManualClock, Clock_WhenALooperSleepsOnIt_ThenItRunsWhatIsDueAndNoMore) {
    test::LooperThread looper;
    test::Recorder<uint64_t> ran;
    const auto runAt = [&](uint64_t due) {
        const sp<Runnable> task = new Runnable([&ran, due] { ran.add(due - SystemClock::uptimeMillis()); });
        looper.handler()->sendMessageAtTime(looper.handler()->obtainMessage(task), due);
    };
    {
        ManualClock clock;
        const uint64_t start = SystemClock::uptimeMillis();
        for (const uint64_t delay : {200U, 199U, 400U}) runAt(start + delay);
        clock.advance(198);
        looper.drain();
        EXPECT_EQ(ran.count(), 0u);
        clock.advance(2);
        ASSERT_TRUE(ran.await(2));
    }
    // Real time goes on, and is behind.
    runAt(SystemClock::uptimeMillis() + 20);
    ASSERT_TRUE(ran.await(3));
    EXPECT_EQ(ran.all()[0] + 1, ran.all()[1]) << "199, then 200";
    EXPECT_LE(static_cast<int64_t>(ran.all()[2]), 0) << "not before it is due";
}

TEST(ManualClockDeathTest, Construction_WhenThereIsOne_ThenTheProcessEnds) {
    ManualClock clock;
    EXPECT_DEATH(ManualClock(), "there is a ManualClock already");
}

}  // namespace
}  // namespace mindroid
