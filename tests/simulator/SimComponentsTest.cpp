#include "component/ComponentManager.h"
#include "component/SubsysInterfaceData.h"
#include "ims/ImsOrtcComponent.h"
#include "mindroid/testing/ManualClock.h"
#include "rf/VsComponent.h"
#include "tests/simulator/ScenarioFolder.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/Boxes.h>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>

namespace simulator {
namespace {

using namespace mindroid;
using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;

// What came back to the test: a reply's error or an event's name, and the object.
struct Came {
    std::string what;
    sp<Object> obj;
};

// A component library, loaded and started as the daemon does it, on a clock that stands still.
class Loaded {
public:
    Loaded(const char* library, const std::string& scenario) : mDevice(scenario) {
        mLooper.run([library] { ASSERT_NE(dlopen(library, RTLD_NOW), nullptr) << dlerror(); });
    }

    void start() {
        mLooper.run([] { hal::ComponentManager::getInstance()->init(0); });
    }
    // Runs what is due in so many milliseconds, and what that causes.
    void advance(uint64_t millis) {
        mClock.advance(millis);
        for (int hop = 0; hop < 8; ++hop) mLooper.drain();
    }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const Came& one : came.all()) names.push_back(one.what);
        return names;
    }
    template <typename T>
    T record(size_t index) const {
        return static_cast<hal::SubsysInterfaceData<T>*>(came.all().at(index).obj.get())->mData;
    }

    const sp<mindroid::Handler>& handler() { return mLooper.handler(); }
    sp<MessageCallback> listener(const std::string& name) {
        return new MessageCallback([this, name](const sp<Message>& message) { came.add({name, message->obj}); });
    }
    // The closure does not own its message, so that one that is never answered is no leak.
    sp<Message> reply() {
        sp<Message> message = handler()->obtainMessage();
        message->setCallback(new Runnable([this, raw = message.get()] {
            came.add({"reply " + std::to_string(raw->arg2), raw->obj});
        }));
        return message;
    }

    test::Recorder<Came> came;

private:
    test::ScenarioFolder mDevice;
    mindroid::ManualClock mClock;
    test::LooperThread mLooper;
};

class Vs : public Loaded {
public:
    explicit Vs(const std::string& scenario) : Loaded(SIMVS_LIBRARY, scenario) {
        component = hal::getComponent<hal::VsComponent>(0);
        component->mStateRegistrants->add(new mindroid::Registrant(handler(), listener("state"), nullptr));
        component->mScreenStateRegistrants->add(new mindroid::Registrant(handler(), listener("screen"), nullptr));
        component->registerClatStateInd(handler(), listener("clat"), nullptr);
        component->registerTxSharingInd(handler(), listener("txSharing"), nullptr);
        component->registerIccEventInd(handler(), listener("iccEvent"), nullptr);
        start();
    }
    sp<hal::VsComponent> component;
};

TEST(SimVsComponent, Request_WhenTheScenarioSaysHow_ThenAnsweredSo) {
    Vs vs(
        "vs on start delay 70 twice\nvs on getRfIccInfo 2 version=3 blacklist=0xabcd brindle=1 delay 70\n"
        "vs on getRfIccInfo 3 answer 5\nvs on getRfIccInfo 4 silent\nvs on getRfIccInfo 5 null\n"
        "vs on getRfIccInfo 6 twice\n");
    for (int i = 0; i < 6; ++i) {
        vs.component->getRfIccInfo(vs.reply());
        vs.advance(0);
    }
    EXPECT_THAT(vs.names(), ElementsAre("reply 0", "reply 5", "reply 0", "reply 0"));
    EXPECT_EQ(vs.record<hal::VsRfIccInfo>(0).version, 1);
    const auto came = vs.came.all();
    EXPECT_EQ(came[1].obj, nullptr);
    EXPECT_EQ(came[2].obj, nullptr);
    EXPECT_NE(came[3].obj, nullptr);
    vs.advance(70);
    ASSERT_THAT(vs.names(), ElementsAre("reply 0", "reply 5", "reply 0", "reply 0", "state", "state", "reply 0"));
    const auto& info = vs.record<hal::VsRfIccInfo>(6);
    EXPECT_THAT((std::array<int, 3>{info.version, info.blacklist, info.brindle}), ElementsAre(3, 0xabcd, 1));
}

TEST(SimVsComponent, Event_WhenDue_ThenItsListenerGetsTheRecord) {
    Vs vs(
        "vs on start silent\nvs at 10 event clat enable=1 freq=1800 cc=2 ant=3\n"
        "vs at 20 event txSharing band=1,2 param2=5,6\nvs at 30 event screen on=0\n"
        "vs at 40 event iccEvent event=9 length=65535 data=0102\nvs at 50 event clat null\n");
    for (int i = 0; i < 5; ++i) vs.advance(10);
    ASSERT_THAT(vs.names(), ElementsAre("clat", "txSharing", "screen", "iccEvent", "clat"));
    const auto& clat = vs.record<hal::VsClatState>(0);
    EXPECT_THAT((std::array<int, 4>{clat.enable, clat.freq, clat.cc, clat.ant}), ElementsAre(1, 1800, 2, 3));
    EXPECT_THAT(vs.record<hal::VsTxSharingState>(1).band, ElementsAre(1, 2));
    EXPECT_THAT(vs.record<hal::VsTxSharingState>(1).param2, ElementsAre(5, 6));
    EXPECT_EQ(static_cast<const Integer*>(vs.came.all()[2].obj.get())->value(), 0);
    const auto& event = vs.record<hal::VsIccEvent<256>>(3);
    EXPECT_THAT((std::array<int, 3>{static_cast<int>(event.event), event.length, event.data[1]}),
                ElementsAre(9, 256, 2));
    EXPECT_EQ(vs.came.all()[4].obj, nullptr);
}

class Ims : public Loaded {
public:
    explicit Ims(const std::string& scenario) : Loaded(SIMIMS_LIBRARY, scenario) {
        component = hal::getComponent<hal::ImsOrtcComponent>(21);
        component->registerLocalPubIpAddrChangedInd(handler(), listener("address"), nullptr);
        component->registerRecvImsRtpDataInd(handler(), listener("rtp"), nullptr);
        component->registerNotifyOrtcStatusInd(handler(), listener("status"), nullptr);
        component->registerNotifyConnectInfoInd(handler(), listener("connect"), nullptr);
        component->registerRecvImsRtpRedunSignalMsgInd(handler(), listener("signal"), nullptr);
        component->registerNotifyImsRtpRedunDataLinkStateInd(handler(), listener("link"), nullptr);
        start();
    }
    // A request and what it causes at once.
    template <typename Record>
    void ask(void (hal::ImsOrtcComponent::*request)(const Record&, const sp<Message>&), const Record& record) {
        (component.get()->*request)(record, reply());
        advance(0);
    }

    sp<hal::ImsOrtcComponent> component;
};

TEST(SimImsOrtcComponent, Request_WhenAnswered_ThenItsEventsFollowTheReply) {
    Ims ims("ims on sendImsRtpRedunSignalMsg 2 rspField1=7 rspField5=-8\nims on sendImsRtpRedunSignalMsg 3 null\n");
    ims.ask(&hal::ImsOrtcComponent::setCallInfo, {1, 2, 0, 4, "", "", "", "", "", "", 0, 0});
    ims.ask(&hal::ImsOrtcComponent::setOrtcRoomInfo, {1, 2, 0x107, 8, 9});
    hal::ImsRtpPubIpAddrInfoType remote{1, 2, 3, 4, 5, 6, ""};
    std::memset(remote.ipAddr, ':', sizeof(remote.ipAddr));  // and no NUL
    ims.ask(&hal::ImsOrtcComponent::setImsRtpRemotePubIpAddr, remote);
    for (int i = 0; i < 3; ++i) ims.ask(&hal::ImsOrtcComponent::sendImsRtpRedunSignalMsg, {1, 2, 3, 0, 4, 5, "hello"});
    ASSERT_THAT(ims.names(), ElementsAre("reply 0", "status", "reply 0", "connect", "link", "reply 0", "address",
                                         "reply 0", "signal", "reply 0", "signal", "reply 0", "signal"));
    EXPECT_THAT(ims.record<hal::OrtcConnectInfoType>(3), FieldsAre(1, 2, 0x107, 9, testing::StrEq("room 263")));
    EXPECT_THAT(ims.record<hal::ImsRtpRedunDataLinkStateInfoType>(4), FieldsAre(_, _, 7, _, 9));
    const auto local = ims.record<hal::ImsRtpPubIpAddrInfoType>(6);
    EXPECT_STREQ(local.ipAddr, "2001:db8::1");
    EXPECT_EQ(std::count(std::begin(local.ipAddr), std::end(local.ipAddr), ':'), 3) << "no rest of the other";
    EXPECT_THAT(ims.record<hal::ImsRtpRedunSignalMsgRspInfoType>(7), FieldsAre(1, 2, _, _, 4, 5));
    EXPECT_THAT(ims.record<hal::ImsRtpRedunSignalMsgRspInfoType>(9), FieldsAre(7, 2, _, _, _, -8));
    EXPECT_EQ(ims.came.all()[11].obj, nullptr);
}

TEST(SimImsOrtcComponent, Request_WhenTheScenarioMisbehaves_ThenSo) {
    Ims ims(
        "ims on sendImsRtpData 1 answer 3\nims on sendImsRtpData 2 silent\nims on sendImsRtpData 3 twice\n"
        "ims on sendImsRtpData 2 event link linkField1=9\n");
    hal::ImsRtpDataInfoType data{1, 2, 3, {4, 5}, -6};
    data.data[255] = 7;
    for (int i = 0; i < 3; ++i) ims.ask(&hal::ImsOrtcComponent::sendImsRtpData, data);
    ASSERT_THAT(ims.names(), ElementsAre("reply 3", "link", "reply 0", "rtp"));
    const auto echo = ims.record<hal::ImsRtpDataInfoType>(3);
    EXPECT_EQ(std::memcmp(&echo, &data, sizeof(data)), 0);
}

TEST(SimImsOrtcComponent, Event_WhenDue_ThenItsListenerGetsTheRecord) {
    const test::LogCapture log;
    Ims ims(
        "ims every 10 event rtp data=0102 dataLen=300\nims at 15 event status reason=5 null\n"
        "ims at 16 event address ipAddr=10.0.0.1\nims at 18 event connect roomId=3\n");
    ims.advance(10);
    for (int i = 0; i < 10; ++i) ims.advance(1);
    ASSERT_THAT(ims.names(), ElementsAre("rtp", "status", "address", "connect", "rtp"));
    EXPECT_EQ(ims.record<hal::ImsRtpDataInfoType>(0).dataLen, 300);
    EXPECT_EQ(ims.came.all()[1].obj, nullptr);
    EXPECT_STREQ(ims.record<hal::ImsRtpPubIpAddrInfoType>(2).ipAddr, "10.0.0.1");
    EXPECT_EQ(ims.record<hal::OrtcConnectInfoType>(3).roomId, 3);
    EXPECT_TRUE(log.has("SimImsOrtcComponent", "event connect", ANDROID_LOG_DEBUG));
}

TEST(SimComponents, Scenario_WhenTheShippedExamplesAreUsed_ThenNoBadLine) {
    for (const auto& [subject, library] : {std::pair("vs", SIMVS_LIBRARY), std::pair("ims", SIMIMS_LIBRARY)}) {
        const std::string scenario = test::shippedScenario(subject);
        ASSERT_THAT(scenario, testing::HasSubstr('\n' + std::string(subject) + " on"));
        const test::LogCapture log;
        const Loaded loaded(library, scenario);
        EXPECT_THAT(log.lines("Simulator"), testing::IsEmpty());
    }
}

}  // namespace
}  // namespace simulator
