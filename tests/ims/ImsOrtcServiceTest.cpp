#include "ims/ImsOrtcService.h"

#include "component/ComponentManager.h"
#include "component/SubsysInterfaceData.h"
#include "ims/ImsOrtcComponent.h"
#include "ims/ImsOrtcConversions.h"
#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "tests/ims/ImsOrtcClient.h"
#include "tests/ims/RecordBytes.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"

#include <mindroid/RegistrantList.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;
using namespace mindroid;
using ndk::SharedRefBase;
using test::Bytes;
using test::bytesOf;

// A carrier class that this library does not know.
template <typename Record>
class ForeignCarrier final : public Object {
public:
    explicit ForeignCarrier(const Record& record) : mRecord(record) {}
    ~ForeignCarrier() override { mRecord = {}; }

private:
    Record mRecord;
    std::string mNote = "what follows the record is the other library's";
};

template <typename Record>
sp<Object> carry(const Record& record) {
    return new ForeignCarrier<Record>(record);
}

// Keeps what it is asked and does with each reply what the test says.
class TestComponent final : public hal::ImsOrtcComponent {
public:
    struct Request {
        std::string operation;
        Bytes record;
        bool operator==(const Request&) const = default;
    };
    struct Subscription {
        std::string operation;
        sp<Handler> handler;
        sp<MessageCallback> callback;
        sp<Object> obj;
    };
    using To = const sp<Handler>&;
    using Callback = const sp<MessageCallback>&;
    using With = const sp<Object>&;
    using Reply = const sp<Message>&;

    std::function<void(const sp<Message>&)> onRequest = [](const sp<Message>&) {};
    test::Recorder<Request> requests;
    std::vector<Subscription> subscriptions;

    void registerLocalPubIpAddrChangedInd(To h, Callback c, With o) override {
        subscribe("LocalPubIpAddrChanged", h, c, o);
    }
    void registerRecvImsRtpDataInd(To h, Callback c, With o) override { subscribe("recvImsRtpData", h, c, o); }
    void registerNotifyOrtcStatusInd(To h, Callback c, With o) override { subscribe("notifyOrtcStatus", h, c, o); }
    void registerNotifyConnectInfoInd(To h, Callback c, With o) override { subscribe("notifyConnectInfo", h, c, o); }
    void registerRecvImsRtpRedunPublicKeyInd(To h, Callback c, With o) override { subscribe("publicKey", h, c, o); }
    void registerRecvImsRtpRedunSignalMsgInd(To h, Callback c, With o) override {
        subscribe("recvImsRtpRedunSignalMsgInd", h, c, o);
    }
    void registerNotifyImsRtpRedunDataLinkStateInd(To h, Callback c, With o) override {
        subscribe("notifyImsRtpRedunDataLinkStateInd", h, c, o);
    }
    void registerRecvImsRtpRedunGetPublicKeyInd(To h, Callback c, With o) override {
        subscribe("getPublicKey", h, c, o);
    }

    void setCallInfo(const hal::CallInfoType& r, Reply reply) override { request("setCallInfo", r, reply); }
    void setOrtcRoomInfo(const hal::OrtcRoomInfoType& r, Reply reply) override { request("setOrtcRoomInfo", r, reply); }
    void sendImsRtpData(const hal::ImsRtpDataInfoType& r, Reply reply) override { request("sendImsRtpData", r, reply); }
    void setImsRtpRemotePubIpAddr(const hal::ImsRtpPubIpAddrInfoType& r, Reply reply) override {
        request("setImsRtpRemotePubIpAddr", r, reply);
    }
    void sendImsRtpRedunSignalMsg(const hal::ImsRtpRedunSignalMsgType& r, Reply reply) override {
        request("sendImsRtpRedunSignalMsg", r, reply);
    }

private:
    void subscribe(const char* operation, To h, Callback c, With o) { subscriptions.push_back({operation, h, c, o}); }
    template <typename Record>
    void request(const char* operation, const Record& record, Reply reply) {
        requests.add({operation, bytesOf(record)});
        onRequest(reply);
    }
};

// One request of the interface: how it is sent, what the component must see.
struct Request {
    const char* name;
    std::function<ndk::ScopedAStatus(ImsOrtcService&, int32_t serial)> send;
    Bytes record;
};

template <typename Info, typename Record>
Request request(const char* name, ndk::ScopedAStatus (ImsOrtcService::*send)(int32_t, const Info&),
                Record (*pack)(const Info&), const Info& info) {
    return {name, [=](ImsOrtcService& service, int32_t serial) { return (service.*send)(serial, info); },
            bytesOf(pack(info))};
}

const std::vector<Request> REQUESTS = {
    request("setCallInfo", &ImsOrtcService::setCallInfo, hal::packCallInfo,
            CallInfo{1, 2, 3, 4, "text", "", "", "", "", "", 0, 0}),
    request("setOrtcRoomInfo", &ImsOrtcService::setOrtcRoomInfo, hal::packOrtcRoomInfo, OrtcRoomInfo{1, 2}),
    request("sendImsRtpData", &ImsOrtcService::sendImsRtpData, hal::packImsRtpDataInfo,
            ImsRtpDataInfo{1, 2, 3, Bytes{4, 5}, 2}),
    request("setImsRtpRemotePubIpAddr", &ImsOrtcService::setImsRtpRemotePubIpAddr, hal::packImsRtpPubIpAddrInfo,
            ImsRtpPubIpAddrInfo{1, 2, 3, 4, 5, 6, "::1"}),
    request("sendImsRtpRedunSignalMsg", &ImsOrtcService::sendImsRtpRedunSignalMsg, hal::packImsRtpRedunSignalMsg,
            ImsRtpRedunSignalMsg{1, 2, 3, 4, 5, "hello"}),
};

class ImsOrtcServiceTest : public testing::Test {
protected:
    using Responses = test::ImsResponseClient;
    using Indications = test::ImsIndicationClient;

    ImsOrtcServiceTest() {
        mLooper.run([this] {
            for (const auto& client : mResponses) ImsOrtcServiceResponse::getInstance()->setCallback(client);
            for (const auto& client : mIndications) ImsOrtcServiceIndication::getInstance()->setCallback(client);
        });
    }

    [[nodiscard]] sp<TestComponent> addComponent() {
        sp<TestComponent> component = new TestComponent();
        hal::ComponentManager::getInstance()->add(component);
        return component;
    }
    void init() {
        mLooper.run([this] { mService->init(); });
    }
    // What the clients get for a request; with a record where it is a signalling message.
    static Responses::Call response(const std::string& request, int32_t serial, SUBSYS_Errno error,
                                    const ImsRtpRedunSignalMsgRspInfo& rspInfo = {}) {
        const SubsysResponseInfo info{0, serial, error};
        if (request == "sendImsRtpRedunSignalMsg") return {request + "Response", std::pair(info, rspInfo)};
        return {request + "Response", info};
    }
    void expectEachClientGets(const std::vector<Responses::Call>& expected) {
        mLooper.drain();
        for (const auto& client : mResponses) EXPECT_EQ(client->calls.all(), expected);
    }

    test::LooperThread mLooper;
    test::LogCapture mLog;
    const std::vector<std::shared_ptr<Responses>> mResponses{SharedRefBase::make<Responses>(),
                                                             SharedRefBase::make<Responses>()};
    const std::vector<std::shared_ptr<Indications>> mIndications{SharedRefBase::make<Indications>(),
                                                                 SharedRefBase::make<Indications>()};
    const sp<ImsOrtcService> mService = mLooper.make<ImsOrtcService>();
};

TEST_F(ImsOrtcServiceTest, Requests_WhenTheComponentIsTheBaseOne_ThenAreDroppedInSilence) {
    init();
    EXPECT_EQ(mLog.lines("ImsOrtcService"),
              (std::vector<test::LogLine>{{ANDROID_LOG_DEBUG, "ImsOrtcService", "start"},
                                          {ANDROID_LOG_DEBUG, "ImsOrtcService", "init done"}}));
    mLog.clear();
    hal::ComponentManager::getInstance()->add(new hal::ImsOrtcComponent());
    for (const auto& request : REQUESTS) EXPECT_TRUE(request.send(*mService, 1).isOk());
    EXPECT_EQ(mLog.lines(),
              (std::vector<test::LogLine>{{ANDROID_LOG_DEBUG, "ImsOrtcComponent", "create ImsOrtcComponent"}}));
    expectEachClientGets({});
}

TEST_F(ImsOrtcServiceTest, Requests_WhenTheComponentComesAfterInit_ThenReachItAndBothClientsAreAnswered) {
    init();
    const auto component = addComponent();
    component->onRequest = [](const auto& reply) {
        hal::SubsysComponent::sendResponse(reply, SUBSYS_Errno::NOT_SUPPORTED);
    };
    std::vector<Responses::Call> expected;
    std::vector<TestComponent::Request> received;
    int32_t serial = -1;
    for (const auto& request : REQUESTS) {
        EXPECT_TRUE(request.send(*mService, serial).isOk());
        received.push_back({request.name, request.record});
        expected.push_back(response(request.name, serial++, SUBSYS_Errno::NOT_SUPPORTED));
    }
    EXPECT_EQ(component->requests.all(), received);
    expectEachClientGets(expected);
    EXPECT_TRUE(component->subscriptions.empty());
}

TEST_F(ImsOrtcServiceTest, SignalMsg_WhenAnsweredInEveryWay_ThenARecordComesWithSuccessAlone) {
    const hal::ImsRtpRedunSignalMsgRspInfoType record{200, 2, 3, 0, 4, -5};
    const ImsRtpRedunSignalMsgRspInfo full{200, 2, 3, 4, -5};
    struct {
        int32_t code;
        bool hasRecord;
        SUBSYS_Errno error;
        ImsRtpRedunSignalMsgRspInfo rspInfo;
    } const cases[] = {{0, true, SUBSYS_Errno::SUCCESS, full},
                       {0, false, SUBSYS_Errno::SUCCESS, {}},
                       {3, true, SUBSYS_Errno::COMPONENT_ERROR_3, {}},
                       {12, true, SUBSYS_Errno::GENERIC_FAILURE, {}},
                       {-1, false, SUBSYS_Errno::GENERIC_FAILURE, {}}};
    const auto component = addComponent();
    std::vector<Responses::Call> expected;
    for (const auto& [code, hasRecord, error, rspInfo] : cases) {
        component->onRequest = [&, code = code, hasRecord = hasRecord](const auto& reply) {
            if (hasRecord) reply->obj = carry(record);
            reply->arg2 = code;
            reply->sendToTarget();
        };
        (void)mService->sendImsRtpRedunSignalMsg(8, {});
        expected.push_back(response("sendImsRtpRedunSignalMsg", 8, error, rspInfo));
    }
    expectEachClientGets(expected);
}

TEST_F(ImsOrtcServiceTest, Events_WhenSubscribedToAtInit_ThenInOrderWithoutThePublicKeysAndBothClientsGetEachRecord) {
    const auto component = addComponent();
    init();
    const ImsRtpPubIpAddrInfo address{1, 2, 3, 4, 5, 6, "198.51.100.7"};
    const ImsRtpDataInfo data{1, 2, 3, Bytes{9, 8}, 2};
    const ImsRtpRedunSignalMsg msg{1, 2, 3, 4, 5, "ping"};
    const std::vector<sp<Object>> carriers = {carry(hal::packImsRtpPubIpAddrInfo(address)),
                                              carry(hal::packImsRtpDataInfo(data)),
                                              new hal::SubsysInterfaceData(hal::OrtcStatusType{1, 2, 3, 4, 5}),
                                              carry(hal::OrtcConnectInfoType{1, 2, 3, 4, "peer"}),
                                              carry(hal::packImsRtpRedunSignalMsg(msg)),
                                              carry(hal::ImsRtpRedunDataLinkStateInfoType{1, 2, 3, 4, 255})};
    const std::vector<Indications::Call> expected = {
        {"LocalPubIpAddrChanged", address},
        {"recvImsRtpData", data},
        {"notifyOrtcStatus", OrtcStatus{1, 2, 3, 4, 5}},
        {"notifyConnectInfo", OrtcConnectInfo{1, 2, 3, 4, "peer"}},
        {"recvImsRtpRedunSignalMsgInd", msg},
        {"notifyImsRtpRedunDataLinkStateInd", ImsRtpRedunDataLinkStateInfo{1, 2, 3, 4, 255}}};
    ASSERT_EQ(component->subscriptions.size(), carriers.size());
    for (size_t i = 0; i < carriers.size(); ++i) {
        const auto& [operation, handler, callback, obj] = component->subscriptions[i];
        EXPECT_EQ(operation, expected[i].method);
        EXPECT_EQ(handler, mService);
        EXPECT_EQ(obj, nullptr);
        const mindroid::Registrant registrant(handler, callback, obj);
        registrant.notify(nullptr);  // no record, no indication
        registrant.notify(carriers[i]);
    }
    mLooper.drain();
    for (const auto& client : mIndications) EXPECT_EQ(client->calls.all(), expected);
}

}  // namespace
