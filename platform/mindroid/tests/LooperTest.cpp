#include <mindroid/Looper.h>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <mindroid/HandlerThread.h>

#include "LoopFixture.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

namespace mindroid {
namespace {

using test::Mortal;
using test::Probe;
using test::QUIT;
using Seen = std::vector<int32_t>;

TEST(Looper, PrepareAndLoop_WhenThereIsALooperOrNone_ThenFailWithAnError) {
    const test::LogCapture log;
    std::thread([] {
        EXPECT_TRUE(Looper::myLooper() == nullptr);
        Looper::loop();
        EXPECT_TRUE(Looper::prepare());
        const sp<Looper> looper = Looper::myLooper();
        EXPECT_FALSE(Looper::prepare());
        EXPECT_TRUE(Looper::myLooper() == looper && looper->isCurrentThread());
    }).join();
    EXPECT_EQ(log.count("Looper", "the thread has no looper to run", ANDROID_LOG_ERROR), 1u);
    EXPECT_EQ(log.count("Looper", "the thread has a looper already", ANDROID_LOG_ERROR), 1u);
}

// ---- During a dispatch. Each probe has 1, 2 and 3 pending; its action runs with 1. ----

Seen dispatch(const std::function<void(const sp<Probe>&)>& atFirst) {
    sp<Probe> probe;
    test::runLoop([&] {
        probe = new Probe();
        probe->action = [&](const sp<Message>& message) {
            if (message->what == 1) atFirst(probe);
        };
        for (const int32_t what : {1, 2, 3, QUIT}) probe->sendEmptyMessage(what);
    });
    return probe->seen;
}

TEST(LooperDispatch, Quit_WhenDuringADispatch_ThenItIsTheLastAndSendsFail) {
    const test::LogCapture log;
    const Seen seen = dispatch([](const sp<Probe>& probe) {
        probe->getLooper()->quit();
        EXPECT_FALSE(probe->sendEmptyMessage(4));
        probe->getLooper()->quit();
    });
    EXPECT_EQ(seen, Seen{1});
}

TEST(LooperDispatch, Removal_WhenDuringADispatch_ThenOnlyTheRemovedDoNotRun) {
    int runs = 0;
    Seen others;
    const Seen seen = dispatch([&](const sp<Probe>& probe) {
        const sp<Runnable> removed = new Runnable([] { ADD_FAILURE() << "a removed task ran"; });
        probe->removeMessages(QUIT);
        probe->post(removed);
        probe->post(new Runnable([&] { ++runs; }));
        probe->postDelayed(removed, 1);
        probe->removeCallbacks(removed);
        probe->removeCallbacks(nullptr);
        probe->removeMessages(2);
        const sp<Probe> peer = new Probe(), quiet = new Probe();  // on the same looper
        peer->action = [&](const auto& message) { others.push_back(message->what); };
        for (const int32_t what : {2, 3}) peer->sendEmptyMessage(what);
        quiet->sendEmptyMessage(9);
        quiet->removeCallbacksAndMessages();
        probe->removeMessages(0);  // the tasks' `what`, but they have callbacks
        probe->sendEmptyMessageDelayed(QUIT, 2);
    });
    EXPECT_EQ(seen, (Seen{1, 3}));
    EXPECT_EQ(others, (Seen{2, 3}));
    EXPECT_EQ(runs, 1);
}

TEST(LooperDispatch, Handler_WhenItsLastReferenceGoesInADispatch_ThenItDiesAfterIt) {
    std::atomic<int> deaths{0};
    test::runLoop([&] {
        auto* const holder = new sp<Probe>(new Probe());
        (*holder)->action = [&, holder, mortal = sp<Object>(new Mortal(deaths))](const auto&) {
            delete holder;
            EXPECT_EQ(deaths, 0);
            sp<Probe>(new Probe())->sendEmptyMessage(QUIT);
        };
        (*holder)->sendEmptyMessage(1);
    });
    EXPECT_EQ(deaths, 1);
}

TEST(LooperDispatch, Loop_WhenNested_ThenQuitEndsBoth) {
    const Seen seen = dispatch([](const sp<Probe>&) { Looper::loop(); });
    EXPECT_EQ(seen, (Seen{1, 2, 3}));
}

// ---- What a dropped message held may call back: no lock is held. ----

TEST(LooperDrop, Drop_WhenADestructorCallsTheLooper_ThenItDoesNotBlock) {
    const std::function<void(const sp<Handler>&)> drops[] = {[](const auto& handler) { handler->removeMessages(1); },
                                                             [](const auto& handler) { handler->getLooper()->quit(); }};
    for (const auto& drop : drops) {
        const test::LogCapture log;
        std::atomic<int> deaths{0};
        test::runLoop([&] {
            const sp<Handler> handler = new Handler();
            Handler* const raw = handler.get();
            const auto callBack = [raw] {
                raw->sendEmptyMessage(2);
                raw->removeMessages(2);
                raw->getLooper()->quit();
            };
            handler->sendMessage(handler->obtainMessage(1, new Mortal(deaths, callBack)));
            handler->sendMessageDelayed(handler->obtainMessage(1, new Mortal(deaths, callBack)), 60'000);
            drop(handler);
        });
        EXPECT_EQ(deaths, 2);
    }
}

TEST(Looper, Sleep_WhenALaterMessageIsSent_ThenGoesOn) {
    test::LooperThread looper;
    const auto switches = [&] {
        return looper.run([] {
            rusage usage{};
            getrusage(RUSAGE_THREAD, &usage);
            return usage.ru_nvcsw;
        });
    };
    looper.handler()->sendEmptyMessageDelayed(1, 60'000);
    const long before = switches();
    for (int i = 0; i < 1000; ++i) looper.handler()->sendEmptyMessageDelayed(1, 120'000);
    EXPECT_LT(switches() - before, 100);
}

// ---- A thread with a looper. ----

TEST(HandlerThread, Name_WhenAnyLength_ThenIsCutTo15) {
    const struct {
        sp<HandlerThread> thread;
        const char* name;
    } cases[] = {{new HandlerThread(), "HandlerThread"}, {new HandlerThread("a-name-of-sixteen"), "a-name-of-sixte"}};
    for (const auto& [thread, name] : cases) {
        ASSERT_TRUE(thread->start());
        char given[16] = {};
        test::runOn(new Handler(thread->getLooper()), [&] { pthread_getname_np(pthread_self(), given, sizeof given); });
        EXPECT_STREQ(given, name);
    }
}

TEST(HandlerThread, Start_WhenStartedBefore_ThenIsFalse) {
    const sp<HandlerThread> thread = new HandlerThread();
    EXPECT_TRUE(thread->getLooper() == nullptr);
    thread->quit();
    EXPECT_TRUE(thread->start());
    EXPECT_FALSE(thread->start());
    EXPECT_FALSE(thread->getLooper()->isCurrentThread());
    thread->quit();
    thread->join();
    EXPECT_FALSE(thread->start());
}

TEST(HandlerThread, LastReference_WhenLetGoElsewhere_ThenTheThreadIsJoined) {
    const test::LogCapture log;
    sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const sp<Handler> handler = new Handler(thread->getLooper());
    std::atomic<int> deaths{0};
    handler->sendMessageDelayed(handler->obtainMessage(1, new Mortal(deaths)), 60'000);
    thread.clear();
    EXPECT_EQ(deaths, 1);
    EXPECT_FALSE(handler->sendEmptyMessage(1));
}

TEST(HandlerThread, LastReference_WhenLetGoOnTheThreadItself_ThenTheThreadEnds) {
    std::atomic<int> deaths{0};
    test::Event ended;
    sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const sp<Handler> handler = new Handler(thread->getLooper());
    // Dies with the thread's own storage, after the loop.
    handler->post(new Runnable([&, owned = std::make_shared<sp<HandlerThread>>(std::move(thread))] {
        static thread_local sp<Object> sLast;
        sLast = new Mortal(deaths, [&] { ended.signal(); });
        owned->clear();
    }));
    EXPECT_TRUE(ended.await());
    EXPECT_EQ(deaths, 1);
}

}  // namespace
}  // namespace mindroid
