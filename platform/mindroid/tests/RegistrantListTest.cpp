#include <mindroid/RegistrantList.h>

#include <gtest/gtest.h>

#include <mindroid/Boxes.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Looper.h>

#include "LoopFixture.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"

namespace mindroid {
namespace {

using test::Probe;
using test::QUIT;

TEST(Registrant, Notify_WhenWithOrWithoutAResult_ThenObjIsTheResultOrItsOwn) {
    const sp<Object> own = new Integer(1), result = new Integer(2);
    std::vector<sp<Object>> objects;
    test::runLoop([&] {
        const sp<Probe> probe = new Probe();
        probe->action = [&](const auto& message) { objects.push_back(message->obj); };
        const sp<Registrant> byWhat = new Registrant(probe, 4, own);
        const sp<Registrant> byCallback = new Registrant(
            probe, new MessageCallback([&](const sp<Message>& message) { objects.push_back(message->obj); }), own);
        for (const auto& registrant : {byWhat, byCallback}) {
            registrant->notify(nullptr);
            registrant->notify(result);
        }
        probe->sendEmptyMessage(QUIT);
    });
    EXPECT_EQ(objects, (std::vector<sp<Object>>{own, result, own, result}));
}

TEST(Registrant, Notify_WhenTheListenerIsGone_ThenNothingLeaks) {
    const test::LogCapture log;
    std::atomic<int> deaths{0};
    const sp<Handler> noLooper = new Handler();
    const sp<MessageCallback> callback = new MessageCallback([](const auto&) {});
    sp<Registrant>(new Registrant(noLooper, callback, new test::Mortal(deaths)))->notify(nullptr);
    sp<Registrant>(new Registrant(nullptr, callback, new test::Mortal(deaths)))->notify(nullptr);
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(callback->strongCount(), 1);
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST(RegistrantList, Notify_WhenListenersWereAddedReplacedAndRemoved_ThenTheOthersAreToldInOrder) {
    test::Recorder<int> told;
    test::runLoop([&] {
        const sp<RegistrantList> list = new RegistrantList();
        const sp<Probe> a = new Probe(), b = new Probe(), c = new Probe();
        for (const sp<Probe>& probe : {a, b, c}) {
            probe->action = [&](const auto& message) { told.add(message->what); };
            list->add(probe, 1);
        }
        list->add(a, 2);
        list->add(nullptr);
        EXPECT_EQ(list->replace(new Registrant(a, 3)), 4u);
        EXPECT_EQ(list->size(), 3u);
        list->remove(b);
        EXPECT_EQ(list->size(), 2u);
        list->notify();
        c->sendEmptyMessage(QUIT);
    });
    EXPECT_EQ(told.all(), (std::vector<int>{1, 3}));
}

TEST(RegistrantList, List_WhenChangedByANotification_ThenOnlyTheNextOneSeesIt) {
    test::Recorder<int> told;
    test::runLoop([&] {
        const sp<RegistrantList> list = new RegistrantList();
        const sp<Probe> first = new Probe(), late = new Probe();
        first->action = [&](const auto&) {
            told.add(1);
            list->remove(first);
            list->add(late, 2);
            if (told.count() == 1) list->notify();
        };
        late->action = [&](const auto&) {
            told.add(2);
            late->sendEmptyMessage(QUIT);
        };
        list->add(first, 1);
        list->notify();
        Looper::loop();
    });
    EXPECT_EQ(told.all(), (std::vector<int>{1, 2}));
}

TEST(RegistrantList, Destructor_WhenARemovedRegistrantCallsTheList_ThenItDoesNotBlock) {
    std::atomic<int> deaths{0};
    const sp<RegistrantList> list = new RegistrantList();
    const sp<Handler> handler = new Handler();
    const auto mortal = [&] { return new test::Mortal(deaths, [&] { (void)list->size(); }); };
    list->add(handler, 1, mortal());
    list->replace(new Registrant(handler, 1, mortal()));
    list->remove(handler);
    EXPECT_EQ(deaths, 2);
}

}  // namespace
}  // namespace mindroid
