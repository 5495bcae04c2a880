#include "rf/RfSubsysService.h"

#include "component/SubsysInterfaceData.h"
#include "mindroid/testing/ManualClock.h"
#include "rf/IccConversions.h"
#include "service/channel/SubsysServiceIndication.h"
#include "service/channel/SubsysServiceResponse.h"
#include "tests/rf/RfFixture.h"
#include "tests/support/SubsysClient.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using namespace test;
using namespace test::interface;
using hal::RfSubsysComponent;

constexpr const char* TAG = "RfSubsysService";

class RfSubsysServiceTest : public test::RfFixture {
protected:
    RfSubsysServiceTest() {
        SubsysServiceResponse::getInstance()->setCallback(mClient);
        SubsysServiceIndication::getInstance()->setCallback(mListener);
        mLooper.run([&] {
            mService = new RfSubsysService();
            mService->init();
            mService->postInit();
        });
    }
    void start() {
        add<RfSubsysComponent>();
        initComponents();
    }
    // What the client is told in answer to the request, whose own status is success.
    Response ask(const std::function<ndk::ScopedAStatus(RfSubsysService&)>& request) {
        mClient->responses.clear();
        EXPECT_TRUE(request(*mService).isOk());
        EXPECT_TRUE(mClient->responses.await());
        return mClient->responses.all().at(0);
    }
    void connect() {
        mService->setSubsysState(true);
        mClock.advance(200);
        mLooper.drain();
    }

    mindroid::ManualClock mClock;
    const std::shared_ptr<test::SubsysResponseClient> mClient = ndk::SharedRefBase::make<test::SubsysResponseClient>();
    const std::shared_ptr<test::SubsysIndicationClient> mListener =
        ndk::SharedRefBase::make<test::SubsysIndicationClient>();
    const std::shared_ptr<IccMetaClient> mMeta = ndk::SharedRefBase::make<IccMetaClient>();
    mindroid::sp<RfSubsysService> mService;
};

TEST_F(RfSubsysServiceTest, Requests_WhenComponentComes_ThenAnsweredWithTheirSerial) {
    constexpr auto UNSUPPORTED = SUBSYS_Errno::NOT_SUPPORTED;
    const struct {
        std::function<ndk::ScopedAStatus(RfSubsysService&)> request;
        Response expected;
    } cases[] = {
        {[](auto& rf) { return rf.getSwtpStatus(1); }, {"getSwtpStatusResponse", {0, 1, UNSUPPORTED}, int8_t{0}}},
        {[](auto& rf) { return rf.setMipiFreqClk(2, 0, -1); }, {"setMipiFreqClkResponse", {0, 2, UNSUPPORTED}}},
        {[](auto& rf) { return rf.setOscFreqClk(3, 0, 0); }, {"setOscFreqClkResponse", {0, 3, UNSUPPORTED}}},
        {[](auto& rf) { return rf.getNvramData(4, 0, INT32_MIN); },
         {"getNvramDataResponse", {0, 4, UNSUPPORTED}, std::string()}},
        {[](auto& rf) { return rf.setIccTuningState(-5, 0, 0, 0, 0); },
         {"setIccTuningStateResponse", {0, -5, UNSUPPORTED}}},
        {[](auto& rf) { return rf.setIccWifiAntState(6, 1, 2); }, {"setIccWifiAntStateResponse", {0, 6, UNSUPPORTED}}},
        {[](auto& rf) { return rf.setIccSatelliteAntState(7, 1, 2, 3); },
         {"setIccSatelliteAntStateResponse", {0, 7, SUBSYS_Errno::SUCCESS}}},
        {[](auto& rf) { return rf.getIccState(8); },
         {"getIccStateResponse", {0, 8, SUBSYS_Errno::SUCCESS}, IccStateInfo()}},
    };
    for (const auto& [request, expected] : cases) EXPECT_TRUE(request(*mService).isOk());
    EXPECT_TRUE(mService->sendIccMetaCmd(IccMetaReqInfo(), mMeta).isOk());
    EXPECT_EQ(mLog.count(TAG, "sendIccMetaCmd rfSubsysComponent is null!", ANDROID_LOG_DEBUG), 1U);
    connect();
    expectLogged(TAG, ANDROID_LOG_ERROR, {"onSubsysConnected get component failed", "sendIccMetaCmd enter"});
    EXPECT_EQ(mClient->responses.count() + mMeta->answers.count(), 0U);

    start();
    for (const auto& [request, expected] : cases) EXPECT_EQ(ask(request), expected) << expected.method;
    expectLogged(TAG, ANDROID_LOG_DEBUG, {"getIccState state = 0, bypass = 0, modeNum=0!"});
    iccPlugin().code = SPI_CMD_NOT_SUPPORT;
    EXPECT_EQ(ask([](auto& rf) { return rf.getIccState(9); }),
              (Response{"getIccStateResponse", {0, 9, UNSUPPORTED}, IccStateInfo()}));
}

TEST_F(RfSubsysServiceTest, SendIccCmd_WhenAnswered_ThenReqIdIsZeroAndErrorHasNoData) {
    start();
    const Response ok = ask([](auto& rf) { return rf.sendIccCmd(3, {200, {1, 2}, 999}); });
    const auto& answer = std::get<IccRespInfo>(ok.value);
    EXPECT_EQ(ok.info, (SubsysResponseInfo{0, 3, SUBSYS_Errno::SUCCESS}));
    EXPECT_EQ(answer.reqId, 0);
    EXPECT_EQ(answer.data.size(), 256U);
    EXPECT_EQ(calls(1).back(), "iccSendReqSync(200,{1 2},2,256,999)");
    const Response failed = ask([](auto& rf) { return rf.sendIccCmd(4, {1000, {1}, 0}); });
    EXPECT_EQ(failed.info, (SubsysResponseInfo{0, 4, SUBSYS_Errno::GENERIC_FAILURE}));
    EXPECT_EQ(std::get<IccRespInfo>(failed.value), IccRespInfo());
    iccPlugin().code = SPI_CMD_FAILURE_4;
    const Response refused = ask([](auto& rf) { return rf.sendIccCmd(5, {1002, {1, 2, 3}, 0}); });
    EXPECT_EQ(refused.info, (SubsysResponseInfo{0, 5, SUBSYS_Errno::GENERIC_FAILURE}));
    EXPECT_TRUE(mLog.has(TAG, "sendIccCmd respCb errorNo: 11", ANDROID_LOG_DEBUG));
}

TEST_F(RfSubsysServiceTest, SendIccMetaCmd_WhenAnswered_ThenCallbackGetsEcho) {
    start();
    const struct {
        int32_t reqId;
        int8_t type;
        bool result;
        size_t dataSize;
    } cases[] = {{5, -1, true, 256}, {1001, -1, true, 0}, {255, 0, false, 0}};
    for (const auto& [reqId, type, result, dataSize] : cases) {
        mMeta->answers.clear();
        EXPECT_TRUE(mService->sendIccMetaCmd({1, -2, 0x1FF, reqId, {9}}, mMeta).isOk());
        ASSERT_TRUE(mMeta->answers.await());
        const auto fields = testing::FieldsAre(1, -2, type, result, testing::SizeIs(dataSize));
        EXPECT_THAT(mMeta->answers.all(), testing::ElementsAre(fields)) << reqId;
    }
    EXPECT_EQ(calls(1).front(), "iccSendReqSync(5,{9},1,256,4000)");
    expectLogged(TAG, ANDROID_LOG_DEBUG,
                 {"sendIccMetaCmd id 1, token -2, type 511, reqId 5, size 1", "sendIccMetaCmd respCb errorNo: 1"});
    EXPECT_TRUE(mLog.await(TAG, "sendIccMetaCmd call onIccMetaResp error: Status(-5, EX_ILLEGAL_STATE): ''", 3));
    EXPECT_TRUE(mService->sendIccMetaCmd({1, -2, 0x1FF, 5, {9}}, nullptr).isOk());
    EXPECT_TRUE(mLog.await(TAG, "sendIccMetaCmd callback is null"));
}

TEST_F(RfSubsysServiceTest, GetLcdInfo_WhenFileComesAndGoes_ThenAnsweredWithoutComponent) {
    EXPECT_EQ(ask([](auto& rf) { return rf.getLcdInfo(1, 7); }),
              (Response{"getLcdInfoResponse", {0, 1, SUBSYS_Errno::GENERIC_FAILURE}, std::string()}));
    mDevice.write("/proc/devinfo/lcd", "Device version: BOE123\n");
    EXPECT_EQ(ask([](auto& rf) { return rf.getLcdInfo(2, 0); }),
              (Response{"getLcdInfoResponse", {0, 2, SUBSYS_Errno::SUCCESS}, std::string("BOE123")}));
    EXPECT_EQ(mLog.count(TAG, "lcd_buf getLcdInfoResponse", ANDROID_LOG_ERROR), 2U);
}

TEST_F(RfSubsysServiceTest, Requests_WhenPluginCallIsSlow_ThenOnlyIccRequestsWait) {
    start();
    test::Event release;
    iccPlugin().onCall = [&] { EXPECT_TRUE(release.await()); };
    EXPECT_TRUE(mService->sendIccCmd(1, {1, {}, 0}).isOk());
    EXPECT_TRUE(iccPlugin().calls.await());
    EXPECT_EQ(ask([](auto& rf) { return rf.getSwtpStatus(2); }).info.serial, 2);
    EXPECT_EQ(ask([](auto& rf) { return rf.getLcdInfo(3, 0); }).info.serial, 3);
    mClient->responses.clear();
    release.signal();
    ASSERT_TRUE(mClient->responses.await());
    EXPECT_EQ(mClient->responses.all()[0].info.serial, 1);
}

TEST_F(RfSubsysServiceTest, Events_WhenConnected_ThenReachTheClientConverted) {
    start();
    mService->setSubsysState(false);
    mService->setSubsysState(true);
    mClock.advance(199);
    mService->setSubsysState(true);
    mLooper.drain();
    EXPECT_FALSE(mLog.has(TAG, "onSubsysConnected enter"));
    mClock.advance(1);
    EXPECT_EQ(calls(3),
              (std::vector<std::string>{"registerIccEvent(1)", "registerIccEvent(4)", "registerIccEvent(5)"}));
    mClock.advance(198);
    mLooper.drain();
    EXPECT_EQ(mLog.count(TAG, "onSubsysConnected enter"), 1U);
    mClock.advance(1);
    EXPECT_TRUE(iccPlugin().calls.await(6));

    const IccStateInfoType state = {static_cast<IccStateType>(0x102), 1, 3, {1, 2, 3, 4, 5, 6}};
    const IccPercStateType perception = {2, {{1, 2, 3}, {4, 5, 255}}, {}};
    iccPlugin().emit(ICC_EVENT_STATE_CHANGED, state);
    iccPlugin().emit(ICC_EVENT_PERC_CHANGED, perception);
    iccPlugin().emit(ICC_EVENT_COEX_ANT_CHANGED, IccCoexAntType{1, 2, -3, 4});
    ASSERT_TRUE(mListener->indications.await(3));
    mService->sendSwtpStatusChanged(255);
    EXPECT_EQ(mListener->indications.all(),
              (std::vector<Indication>{{"sendiccStateChanged", fromStateEvent(state)},
                                       {"notifyIccPercStateChangedInd", fromPerception(perception)},
                                       {"notifyIccInfoChanged", fromInformation({5, {1, 2, 253, 4}, 4})},
                                       {"sendSwtpStatusChanged", int8_t{-1}}}));
    expectLogged(TAG, ANDROID_LOG_DEBUG,
                 {"sendiccStateChanged 258 1", "sendiccPercChanged to sys 2", "notifyIccInfoChanged id 5, dataLen 4"});
}

}  // namespace
