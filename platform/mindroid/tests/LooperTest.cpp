#include <mindroid/Looper.h>

#include "LoopFixture.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <device/LoopState.h>
#include <device/LoopThread.h>
#include <mindroid/HandlerThread.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

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
        EXPECT_TRUE(Looper::myLooper() == looper);
    }).join();
    EXPECT_EQ(log.count("Looper", "the thread has no looper to run", ANDROID_LOG_ERROR), 1u);
    EXPECT_EQ(log.count("Looper", "the thread has a looper already", ANDROID_LOG_ERROR), 1u);
}

TEST(Looper, State_WhenAMessageRuns_ThenOthersSeeTheThreadTheHandlerAndWhatWaits) {
    const auto stateOf = [](pid_t thread) {
        return std::find_if(device::loopStates().begin(), device::loopStates().end(),
                            [thread](const auto& each) { return each.isTaken && each.thread == thread; });
    };
    for (size_t i = 0; i < device::loopStates().size(); ++i) const test::LooperThread ended;
    const test::LooperThread loop;
    const pid_t thread = test::runOn(loop.handler(), gettid);
    const auto state = stateOf(thread);
    ASSERT_NE(state, device::loopStates().end());
    test::runOn(loop.handler(), [&] {
        loop.handler()->sendEmptyMessageDelayed(1, 0);
        loop.handler()->sendEmptyMessageDelayed(2, 1'000'000);
        EXPECT_EQ(state->waiting, 1u) << "the other one is not due";
        const void* table = state->handler;
        Dl_info info{};
        ASSERT_NE(dladdr(table, &info), 0);
        EXPECT_STREQ(info.dli_sname, "_ZTVN8mindroid7HandlerE");
        EXPECT_LE(state->since, device::coarseNanos());
        EXPECT_GT(state->since, 0);
    });
    while (state->handler != nullptr) std::this_thread::yield();  // it sleeps
    EXPECT_EQ(state->waiting, 0u);
    loop.looper()->quit();
    while (state->thread == thread) std::this_thread::yield();
}

TEST(Looper, Loop_WhenOutputWaits_ThenItIsWrittenBeforeTheLoopSleepsAndBeforeItEnds) {
    static constexpr int32_t FLUSH = 99;
    class Output final : public device::LoopOutput {
    public:
        explicit Output(Probe& probe) : mProbe(probe) {}
        void flush() override {
            isWaiting = false;
            mProbe.seen.push_back(FLUSH);
            test::send(&mProbe, ++mFlushes == 1 ? 3 : 4);
        }

    private:
        Probe& mProbe;
        int mFlushes = 0;
    };
    sp<Probe> probe;
    EXPECT_EQ(nullptr, device::LoopThread::current()) << "no loop runs here";
    test::runLoop([&] {
        probe = new Probe();
        probe->action = [&](const sp<Message>& message) {
            device::LoopThread& loop = *device::LoopThread::current();
            EXPECT_EQ(message->what == 1, loop.hasMore) << message->what;
            if (loop.output == nullptr) loop.output = std::make_unique<Output>(*probe);
            loop.output->isWaiting = message->what == 2 || message->what == 3;
            if (message->what == 4) {
                loop.output->isWaiting = true;
                Looper::myLooper()->quit();
            }
        };
        for (const int32_t what : {1, 2}) test::send(probe, what);
    });
    EXPECT_EQ(probe->seen, (Seen{1, 2, FLUSH, 3, FLUSH, 4, FLUSH}));
}

// ---- During a dispatch. Each probe has 1, 2 and 3 pending; the action runs with 1, and QUIT is sent after it. ----

Seen dispatch(const std::function<void(const sp<Probe>&)>& atFirst) {
    sp<Probe> probe;
    test::runLoop([&] {
        probe = new Probe();
        probe->action = [&](const sp<Message>& message) {
            if (message->what != 1) return;
            atFirst(probe);
            test::send(probe, QUIT);
        };
        for (const int32_t what : {1, 2, 3}) test::send(probe, what);
    });
    return probe->seen;
}

TEST(LooperDispatch, Quit_WhenDuringADispatch_ThenItIsTheLastAndSendsFail) {
    const test::LogCapture log;
    const Seen seen = dispatch([](const sp<Probe>& probe) {
        Looper::myLooper()->quit();
        EXPECT_FALSE(test::send(probe, 4));
        Looper::myLooper()->quit();
    });
    EXPECT_EQ(seen, Seen{1});
}

TEST(LooperDispatch, RemoveCallbacks_WhenDuringADispatch_ThenOnlyThatTaskOfThatHandlerDoesNotRun) {
    std::vector<std::string> ran;
    const auto task = [&](const char* name) {
        return sp<Runnable>(new Runnable([&ran, name] { ran.emplace_back(name); }));
    };
    const Seen seen = dispatch([&](const sp<Probe>& probe) {
        const sp<Probe> peer = new Probe();  // on the same looper
        const sp<Runnable> removed = task("removed"), kept = task("kept");
        for (const auto& [handler, each] : {std::pair(probe, removed), {probe, kept}, {probe, removed}}) {
            handler->obtainMessage(each)->sendToTarget();
        }
        test::sendLater(probe, probe->obtainMessage(removed));
        probe->removeCallbacks(removed);
        probe->removeCallbacks(nullptr);
        peer->obtainMessage(task("peer's"))->sendToTarget();
        peer->removeCallbacks(kept);
    });
    EXPECT_EQ(seen, (Seen{1, 2, 3}));
    EXPECT_EQ(ran, (std::vector<std::string>{"kept", "peer's"}));
}

TEST(LooperDispatch, Handler_WhenItsLastReferenceGoesInADispatch_ThenItDiesAfterIt) {
    std::atomic<int> deaths{0};
    test::runLoop([&] {
        auto* const holder = new sp<Probe>(new Probe());
        (*holder)->action = [&, holder, mortal = sp<Object>(new Mortal(deaths))](const auto&) {
            delete holder;
            EXPECT_EQ(deaths, 0);
            test::send(sp<Probe>(new Probe()), QUIT);
        };
        test::send(*holder, 1);
    });
    EXPECT_EQ(deaths, 1);
}

TEST(LooperDispatch, Loop_WhenNested_ThenQuitEndsBoth) {
    const Seen seen = dispatch([](const sp<Probe>& probe) {
        test::send(probe, QUIT);
        const test::LogCapture log;
        Looper::loop();
    });
    EXPECT_EQ(seen, (Seen{1, 2, 3}));
}

TEST(LooperDrop, Drop_WhenADestructorCallsTheLooper_ThenItDoesNotBlock) {
    const sp<Runnable> task = new Runnable([] {});
    const std::function<void(const sp<Handler>&)> drops[] = {
        [&](const auto& handler) { handler->removeCallbacks(task); }, [](const auto&) { Looper::myLooper()->quit(); }};
    for (const auto& drop : drops) {
        const test::LogCapture log;
        std::atomic<int> deaths{0};
        test::runLoop([&] {
            const sp<Handler> handler = new Handler();
            const auto mortalMessage = [&, raw = handler.get()] {
                sp<Message> message = handler->obtainMessage(task);
                message->obj = new Mortal(deaths, [&task, raw] {
                    raw->sendEmptyMessageDelayed(2, 0);
                    raw->removeCallbacks(task);
                    Looper::myLooper()->quit();
                });
                return message;
            };
            mortalMessage()->sendToTarget();
            test::sendLater(handler, mortalMessage());
            drop(handler);
        });
        EXPECT_EQ(deaths, 2);
    }
}

TEST(Looper, Sleep_WhenALaterMessageIsSent_ThenGoesOnUntilAnEarlierOneIsDue) {
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
    test::Event ran;
    const sp<Message> earlier = looper.handler()->obtainMessage(new Runnable([&] { ran.signal(); }));
    looper.handler()->sendMessageAtTime(earlier, SystemClock::uptimeMillis() + 1);
    EXPECT_TRUE(ran.await());
}

// ---- A thread with a looper. ----

TEST(HandlerThread, Name_WhenAnyLength_ThenIsCutTo15) {
    const std::pair<sp<HandlerThread>, const char*> cases[] = {
        {new HandlerThread(), "HandlerThread"}, {new HandlerThread("a-name-of-sixteen"), "a-name-of-sixte"}};
    for (const auto& [thread, name] : cases) {
        ASSERT_TRUE(thread->start());
        char given[16] = {};
        test::runOn(new Handler(thread->getLooper()), [&] { pthread_getname_np(pthread_self(), given, sizeof given); });
        EXPECT_STREQ(given, name);
    }
}

TEST(HandlerThread, Start_WhenSentBefore_ThenItRunsThatAndCanNotBeStartedAgain) {
    const sp<HandlerThread> thread = new HandlerThread();
    const sp<Handler> handler = new Handler(thread->getLooper());
    test::Recorder<sp<Looper>> ranOn;
    handler->obtainMessage(new Runnable([&] { ranOn.add(Looper::myLooper()); }))->sendToTarget();
    EXPECT_TRUE(thread->start());
    ASSERT_TRUE(ranOn.await());
    EXPECT_TRUE(ranOn.all().front() == thread->getLooper());
    EXPECT_FALSE(thread->start());
}

TEST(HandlerThread, Start_WhenTheSystemHasNoThread_ThenAnErrorAndSendsFail) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, size_t{1} << 50);  // more than there is room for
    ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);
    pthread_attr_destroy(&attributes);

    const test::LogCapture log;
    const sp<HandlerThread> thread = new HandlerThread("none");
    const sp<Handler> handler = new Handler(thread->getLooper());
    EXPECT_FALSE(thread->start());
    EXPECT_TRUE(
        log.has("HandlerThread", "thread none can't be started: Resource temporarily unavailable", ANDROID_LOG_ERROR));
    EXPECT_FALSE(test::send(handler, 1));
}

TEST(HandlerThread, Start_WhenALibraryThatIsBeingLoadedWaitsForIt_ThenItRuns) {
    void* const library = dlopen(LOOPER_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(*static_cast<bool*>(dlsym(library, "hasRun")));
}

TEST(HandlerThread, LastReference_WhenLetGoElsewhere_ThenTheThreadIsJoined) {
    const test::LogCapture log;
    sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const sp<Handler> handler = new Handler(thread->getLooper());
    std::atomic<int> deaths{0};
    test::sendLater(handler, handler->obtainMessage(1, new Mortal(deaths)));
    thread.clear();
    EXPECT_EQ(deaths, 1);
    EXPECT_FALSE(test::send(handler, 1));
}

TEST(HandlerThread, LastReference_WhenLetGoOnTheThreadItself_ThenTheThreadEnds) {
    test::Event ended;
    std::atomic<int> deaths{0};
    sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const sp<Handler> handler = new Handler(thread->getLooper());
    // Dies with the thread's own storage, after the loop.
    const auto letGo = [&, owned = std::make_shared<sp<HandlerThread>>(std::move(thread))] {
        static thread_local sp<Object> sLast;
        sLast = new Mortal(deaths, [&] { ended.signal(); });
        owned->clear();
    };
    handler->obtainMessage(new Runnable(letGo))->sendToTarget();
    EXPECT_TRUE(ended.await());
}

}  // namespace
}  // namespace mindroid
