#include "component/Component.h"

#include "component/ModuleManager.h"
#include "component/SubsysComponent.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/Boxes.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

using namespace hal;
using namespace mindroid;
using test::LogLine;

namespace {

// Lets tests reach what component authors reach.
class TestComponent : public Component {
public:
    explicit TestComponent(int32_t voteMode = 0) : Component(voteMode, 42) {}
    static Component* lastInitialised() { return mHandler; }
    using Component::mModuleManager;
    using Component::mRegistrants;
    using Component::mTicket;
};

// Keeps the replies that arrive at a service handler.
class ReplyHandler : public Handler {
public:
    struct Reply {
        int32_t error;
        sp<Object> value;
    };
    test::Recorder<Reply> replies;

    void handleMessage(const sp<Message>& message) override { replies.add({message->arg2, message->obj}); }
};

// Tells of its death.
template <typename Base>
class Obituary : public Base {
public:
    Obituary(std::string name, std::vector<std::string>& calls) : mName(std::move(name)), mCalls(calls) {}
    ~Obituary() override { mCalls.push_back("~" + mName); }

protected:
    const std::string mName;
    std::vector<std::string>& mCalls;
};

class RecordingModule : public Obituary<Module> {
public:
    using Obituary::Obituary;
    void onInit() override {
        mCalls.push_back(mName + std::to_string(mInstanceId));
        onInitAction();
    }
    std::function<void()> onInitAction = [] {};
};

class ComponentTest : public testing::Test {
protected:
    std::vector<std::string> calls;
    test::LogCapture log;
    test::LooperThread looper;
    sp<TestComponent> component = looper.make<TestComponent>();
    sp<ReplyHandler> handler = looper.make<ReplyHandler>();
    sp<Object> before = new Object();

    // A reply message that carries an object already.
    sp<Message> reply() { return handler->obtainMessage(0, before); }
    ReplyHandler::Reply onlyReply() {
        EXPECT_TRUE(handler->replies.await());
        looper.drain();
        EXPECT_EQ(handler->replies.count(), 1u);
        const ReplyHandler::Reply got = handler->replies.all().front();
        handler->replies.clear();
        return got;
    }
};

TEST_F(ComponentTest, HandleMessage_WhenNotAProxyState_ThenLogsAndDropsIt) {
    component->handleMessage(nullptr);
    component->handleMessage(handler->obtainMessage(7));
    component->handleMessage(handler->obtainMessage(2000));
    EXPECT_EQ(log.lines("Component"),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, "Component", "can't handle null msg"},
                                    {ANDROID_LOG_DEBUG, "Component", "handleMessage msg is 7, mType 42"},
                                    {ANDROID_LOG_WARN, "Component", "unknown msg id 7 received"},
                                    {ANDROID_LOG_DEBUG, "Component", "handleMessage msg is 2000, mType 42"}}));
}

TEST_F(ComponentTest, ProxyState_WhenComponentDoesNotVote_ThenOnlyListenersAreTold) {
    const sp<Object> state = new Integer(1);
    component->mRegistrants->add(new Registrant(handler, 5));
    component->handleProxyStateChanged(nullptr);
    component->handleProxyStateChanged(handler->obtainMessage(2000, state));
    EXPECT_EQ(onlyReply().value, state);
    EXPECT_FALSE(component->getTicket());
    EXPECT_TRUE(log.lines("Component").empty());
}

TEST_F(ComponentTest, ProxyState_WhenComponentVotes_ThenTicketFollowsTheState) {
    const sp<TestComponent> voter = looper.make<TestComponent>(1);
    const auto report = [&](int32_t state) {
        voter->handleProxyStateChanged(handler->obtainMessage(2000, new Integer(state)));
        // A vote completes at once when its only ticket is up.
        bool isUp = false;
        VoteBox box;
        box.setCallback(new VoteCallback([&](const sp<Object>&) { isUp = true; }));
        box.AddTicket(voter->getTicket());
        box.startVote();
        return isUp;
    };
    EXPECT_TRUE(report(-3));
    EXPECT_FALSE(report(0));
    EXPECT_EQ(log.lines("Component"),
              (std::vector<LogLine>{
                  {ANDROID_LOG_DEBUG, "Component", "handleProxyStateChanged update tick for type 42 state is -3"},
                  {ANDROID_LOG_DEBUG, "Component", "handleProxyStateChanged update tick for type 42 state is 0"}}));
}

template <typename Box, typename Expected>
auto holds(Expected expected) {
    return [=](const sp<Object>& object) { return object && static_cast<const Box&>(*object).value() == expected; };
}

TEST_F(ComponentTest, SendResponse_WhenWithValue_ThenItTravelsAlwaysOrForASubsysComponentOnlyWithSuccess) {
    const auto check = [this](auto isExpected, auto... value) {
        Component::sendResponse(reply(), -7, value...);
        const ReplyHandler::Reply sent = onlyReply();
        EXPECT_EQ(sent.error, -7);
        EXPECT_TRUE(isExpected(sent.value));
        SubsysComponent::sendResponse(reply(), SUBSYS_Errno::SUCCESS, value...);
        EXPECT_TRUE(isExpected(onlyReply().value));
        SubsysComponent::sendResponse(reply(), SUBSYS_Errno(11), value...);
        const ReplyHandler::Reply failed = onlyReply();
        EXPECT_EQ(failed.error, 11);
        EXPECT_EQ(failed.value, before);
    };
    const sp<Object> object = new Object();
    char text[] = "text";
    unsigned char bytes[] = {0, 255, 3};
    int integers[] = {-1, 7};
    check([&](const sp<Object>& got) { return got == object; }, object);
    check(holds<Byte>(0xFF), uint8_t{0xFF});
    check(holds<Short>(0xFFFF), uint16_t{0xFFFF});
    check(holds<Integer>(-1), uint32_t{0xFFFFFFFF});
    check(holds<Long>(int64_t{-1}), uint64_t{0xFFFFFFFFFFFFFFFF});
    check(holds<String>(std::string("text")), &text[0]);
    check(holds<ByteArray>(std::vector<uint8_t>{0, 255, 3}), &bytes[0], 3u);
    const auto holdsIntegers = [&](const sp<Object>& got) {
        const auto& array = static_cast<const IntegerArray&>(*got);
        return std::equal(array.data(), array.data() + array.size(), std::begin(integers), std::end(integers));
    };
    check(holdsIntegers, &integers[0], 2u);
}

TEST_F(ComponentTest, SendResponse_WhenWithoutValue_ThenObjectIsLeftAsItWas) {
    component->sendErrorResponse(reply(), 4);
    SubsysComponent::sendResponse(reply(), SUBSYS_Errno::NOT_SUPPORTED);
    ASSERT_TRUE(handler->replies.await(2));
    const auto got = handler->replies.all();
    EXPECT_EQ(std::pair(got[0].error, got[0].value), std::pair(4, before));
    EXPECT_EQ(std::pair(got[1].error, got[1].value), std::pair(1, before));
}

TEST_F(ComponentTest, SetInstanceId_WhenCalledAgain_ThenComponentAndModulesKeepTheFirst) {
    const sp<Module> module = new RecordingModule("a", calls);
    component->mModuleManager->addModule(module);
    component->setInstanceId(3);
    component->setInstanceId(4);
    component->loadModules();
    EXPECT_EQ(component->getInstanceId(), 3);
    EXPECT_EQ(calls, std::vector<std::string>{"a3"});
}

TEST_F(ComponentTest, Init_WhenSeveralComponents_ThenTheLastOneIsRemembered) {
    const sp<TestComponent> last = new TestComponent();
    component->init(1);
    last->init(2);
    EXPECT_EQ(TestComponent::lastInitialised(), last.get());
    EXPECT_EQ(last->getInstanceId(), 2);
}

TEST_F(ComponentTest, InitModules_WhenTwiceNullOrAddedMeanwhile_ThenEachEntryIsServedOnce) {
    ModuleManager modules;
    const sp<RecordingModule> a = new RecordingModule("a", calls);
    const sp<RecordingModule> b = new RecordingModule("b", calls);
    a->onInitAction = [&] { modules.addModule(new RecordingModule("late", calls)); };
    for (const sp<Module>& module : {sp<Module>(b), sp<Module>(), sp<Module>(a), sp<Module>(b)}) {
        modules.addModule(module);
    }
    modules.setInstanceId(6);
    modules.initModules();
    EXPECT_EQ(calls, (std::vector<std::string>{"b6", "a6", "b6"}));
    ModuleManager().initModules();
}

TEST_F(ComponentTest, Destruction_WhenEverythingIsSet_ThenModulesGoFirstAndTheTicketLast) {
    component->mTicket = new Obituary<Ticket>("ticket", calls);
    component->mRegistrants->add(new Registrant(handler, 1, new Obituary<Object>("registrants", calls)));
    component->mModuleManager->addModule(new RecordingModule("module", calls));
    component.clear();
    EXPECT_EQ(calls, (std::vector<std::string>{"~module", "~registrants", "~ticket"}));
}

}  // namespace
