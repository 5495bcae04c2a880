#include <mindroid/RegistrantList.h>

#include "LoopFixture.h"
#include "tests/support/LogCapture.h"

#include <mindroid/Boxes.h>
#include <mindroid/Looper.h>

#include <gtest/gtest.h>

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
        test::send(probe, QUIT);
        Looper::loop();
        EXPECT_EQ(probe->seen.size(), 2u);
    });
    EXPECT_EQ(objects, (std::vector<sp<Object>>{own, result, own, result}));
}

TEST(Registrant, Notify_WhenTheListenerIsGone_ThenNothingLeaks) {
    const test::LogCapture log;
    std::atomic<int> deaths{0};
    const sp<MessageCallback> callback = new MessageCallback([](const auto&) {});
    for (const sp<Handler>& gone : {sp<Handler>(new Handler()), sp<Handler>()}) {
        sp<Registrant>(new Registrant(gone, callback, new test::Mortal(deaths)))->notify(nullptr);
    }
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST(RegistrantList, Notify_WhenListenersWereAddedAndRemoved_ThenTheOthersAreToldInOrder) {
    std::vector<int> told;
    test::runLoop([&] {
        const sp<RegistrantList> list = new RegistrantList();
        const sp<Probe> a = new Probe(), b = new Probe(), c = new Probe();
        for (const sp<Probe>& probe : {a, b, c}) {
            probe->action = [&](const auto& message) { told.push_back(message->what); };
        }
        list->add(new Registrant(b, 1));
        list->add(new Registrant(a, 2));
        list->add(new Registrant(b, 3));
        list->add(new Registrant(c, 4));
        list->add(nullptr);
        EXPECT_EQ(list->size(), 4u);
        list->remove(b);
        EXPECT_EQ(list->size(), 2u);
        list->notify();
        test::send(c, QUIT);
    });
    EXPECT_EQ(told, (std::vector<int>{2, 4}));
}

TEST(RegistrantList, List_WhenChangedByANotification_ThenOnlyTheNextOneSeesIt) {
    std::vector<int> told;
    test::runLoop([&] {
        const sp<RegistrantList> list = new RegistrantList();
        const sp<Probe> first = new Probe(), late = new Probe();
        first->action = [&](const auto&) {
            told.push_back(1);
            list->remove(first);
            list->add(new Registrant(late, 2));
            if (told.size() == 1) list->notify();
        };
        late->action = [&](const auto&) {
            told.push_back(2);
            test::send(late, QUIT);
        };
        list->add(new Registrant(first, 1));
        list->notify();
        Looper::loop();
    });
    EXPECT_EQ(told, (std::vector<int>{1, 2}));
}

TEST(RegistrantList, Remove_WhenTheRegistrantsDeathCallsTheList_ThenItDoesNotBlock) {
    std::atomic<int> deaths{0};
    const sp<RegistrantList> list = new RegistrantList();
    const sp<Handler> handler = new Handler();
    list->add(new Registrant(handler, 1, new test::Mortal(deaths, [&] { (void)list->size(); })));
    list->remove(handler);
    EXPECT_EQ(deaths, 1);
}

}  // namespace
}  // namespace mindroid
