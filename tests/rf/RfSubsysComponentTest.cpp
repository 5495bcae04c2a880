#include "rf/RfSubsysComponent.h"

#include "component/RequestBridge.h"
#include "mindroid/testing/ManualClock.h"
#include "rf/VsRecords.h"
#include "tests/rf/RfFixture.h"

#include <dlfcn.h>

#include <functional>

namespace {

using namespace mindroid;
using namespace test;
using hal::RfSubsysComponent;

using Calls = std::vector<std::string>;

constexpr const char* TAG = "RfSubsysComponent";

template <typename Record>
sp<mindroid::Object> carrierOf(const Record& record) {
    return new hal::SubsysInterfaceData<Record>(record);
}

class RfSubsysComponentTest : public test::RfFixture {
protected:
    void start() {
        mVs = add<FakeVsComponent>();
        mRf = add<RfSubsysComponent>();
        initComponents();
    }
    void becomeReady() {
        mVs->mStateRegistrants->notify(new Integer(1));
        mLooper.drain();
    }
    void tick() {
        mClock.advance(50);
        mLooper.drain();
    }
    int32_t ask(const std::function<void(RfSubsysComponent&, const sp<Message>&)>& request) {
        Recorder<int32_t> errors;
        request(*mRf,
                hal::obtainReplyMessage(mLooper.handler(), [&](const Message& reply) { errors.add(reply.arg2); }));
        EXPECT_TRUE(errors.await());
        return errors.all().at(0);
    }

    mindroid::ManualClock mClock;
    sp<FakeVsComponent> mVs;
    sp<RfSubsysComponent> mRf;
};

TEST_F(RfSubsysComponentTest, Init_WhenThereIsNoVsComponent_ThenProxyAllTheSame) {
    mRf = add<RfSubsysComponent>();
    mLooper.run([&] { mRf->init(1); });
    expectLogged(TAG, ANDROID_LOG_DEBUG, {"create RfSubsysComponent", "init RfSubsysComponent 1"});
    EXPECT_FALSE(mLog.has(TAG, "get VsComponent(0) failed"));
    initComponents();
    EXPECT_EQ(mLog.count(TAG, "get VsComponent(0) failed", ANDROID_LOG_ERROR), 1U);
    EXPECT_EQ(ask([](auto& rf, const auto& reply) { rf.sendIccCmd(1001, {}, 0, reply); }), 0);
    EXPECT_EQ(hal::getRfSubsysComponent(), mRf);
    mLooper.run([&] { mRf->onVsComponentReady(); });
    EXPECT_EQ(mLog.count(TAG, "get VsComponent(0) failed"), 2U);
}

TEST_F(RfSubsysComponentTest, RfIccInfo_WhenNeverAnswered_ThenFiveTriesAndDefaults) {
    start();
    becomeReady();
    for (int tries = 1; tries <= 5; ++tries) {
        mClock.advance(49);
        mLooper.drain();
        EXPECT_EQ(mVs->infoRequests.count(), static_cast<size_t>(tries - 1));
        mClock.advance(1);
        mLooper.drain();
        EXPECT_TRUE(mLog.has(TAG, "getRfIccInfo try " + std::to_string(tries), ANDROID_LOG_DEBUG));
    }
    EXPECT_FALSE(mLog.has(TAG, "getRfIccInfo stop try, init default"));
    tick();
    EXPECT_TRUE(mLog.has(TAG, "getRfIccInfo stop try, init default", ANDROID_LOG_DEBUG));
    EXPECT_TRUE(mLog.has(TAG, "iccApisInit ver.0 brindle 0", ANDROID_LOG_DEBUG));
    EXPECT_EQ(calls(1), Calls{"iccApis_init(0,4000000,0)"});
    EXPECT_TRUE(mLog.await("Component", "handleMessage msg is 2000, mType 20"));
    tick();
    EXPECT_EQ(mVs->infoRequests.count(), 5U);
}

TEST_F(RfSubsysComponentTest, RfIccInfo_WhenAnswered_ThenFirstAnswerWins) {
    start();
    becomeReady();
    tick();
    tick();
    const auto requests = mVs->infoRequests.all();
    ASSERT_EQ(requests.size(), 2U);
    hal::SubsysComponent::sendResponse(requests[1], hal::SUBSYS_Errno::SUCCESS,
                                       carrierOf(hal::VsRfIccInfo{3, 0xAB, 1}));
    hal::SubsysComponent::sendResponse(requests[0], hal::SUBSYS_Errno::GENERIC_FAILURE);
    mLooper.drain();
    EXPECT_TRUE(mLog.has(TAG, "getRfIccInfo version 3 blacklist 0x00ab brindle 1 ", ANDROID_LOG_DEBUG));
    EXPECT_EQ(mLog.count(TAG, "getRfIccInfo cb", ANDROID_LOG_ERROR), 2U);
    EXPECT_EQ(mLog.count(TAG, "getRfIccInfo already init, exit", ANDROID_LOG_ERROR), 1U);
    tick();
    EXPECT_EQ(mVs->infoRequests.count(), 2U);
    EXPECT_EQ(calls(1), Calls{"iccApis_init(3,4000000,1)"});
}

TEST_F(RfSubsysComponentTest, RfIccInfo_WhenAnswerFailed_ThenDefaults) {
    start();
    becomeReady();
    tick();
    hal::SubsysComponent::sendResponse(mVs->infoRequests.all().at(0), static_cast<hal::SUBSYS_Errno>(7));
    EXPECT_TRUE(mLog.await(TAG, "getRfIccInfo err 7"));
    EXPECT_EQ(calls(1), Calls{"iccApis_init(0,4000000,0)"});
}

TEST_F(RfSubsysComponentTest, OnVsComponentReady_WhenRepeatedOrOtherInstance_ThenWiredOnce) {
    start();
    mVs->mStateRegistrants->notify(new Integer(0));
    mVs->mStateRegistrants->notify(nullptr);
    mLooper.drain();
    EXPECT_EQ(mVs->clat.size(), 0U);
    const auto other = add<RfSubsysComponent>();
    mLooper.run([&] {
        other->setInstanceId(1);
        other->onVsComponentReady();
    });
    EXPECT_TRUE(mLog.has(TAG, "onVsComponentReady instance 1", ANDROID_LOG_DEBUG));
    EXPECT_EQ(mVs->clat.size(), 0U);
    becomeReady();
    becomeReady();
    EXPECT_EQ(mVs->clat.size(), 1U);
    EXPECT_EQ(mVs->txSharing.size(), 1U);
    EXPECT_EQ(mVs->iccEvent.size(), 1U);
    EXPECT_EQ(mVs->mScreenStateRegistrants->size(), 1U);
    tick();
    EXPECT_EQ(mLog.count(TAG, "getRfIccInfo try 1"), 1U);
}

TEST_F(RfSubsysComponentTest, Notifications_WhenVsComponentSendsThem_ThenBecomeCommands) {
    iccPlugin().code = SPI_CMD_FAILURE_4;
    start();
    becomeReady();
    mVs->clat.notify(carrierOf(hal::VsClatState{1, 0xFFFE, 3, 4}));
    mVs->txSharing.notify(carrierOf(hal::VsTxSharingState{1, {78, 41}, {500, 600}, {7, 8}}));
    mVs->mScreenStateRegistrants->notify(new Integer(-1));
    mVs->mScreenStateRegistrants->notify(new Integer(0));
    mVs->clat.notify(nullptr);
    mVs->iccEvent.notify(carrierOf(hal::VsIccEvent<3>{9, 3, {1, 2, 255}}));
    mVs->iccEvent.notify(carrierOf(hal::VsIccEvent<8>{10, 0, {}}));
    EXPECT_EQ(calls(6), (Calls{"iccSetAclState(1,65534,3,4)", "iccSetTxSharingState(1,{78 41},{500 600},{7 8})",
                               "setScreenState(1)", "setScreenState(0)", "sendIccEventInd(9,{1 2 255})",
                               "sendIccEventInd(10,{})"}));
    expectLogged(TAG, ANDROID_LOG_DEBUG,
                 {"Set CLAT enable 1 freq 65534 cc 3 ant 4",
                  "Set Tx Sharing enable 1 combo {78A, 500, 7} ++ {41A, 600, 8}", "screen state changed -1"});
    expectLogged("IccProxy", ANDROID_LOG_DEBUG,
                 {"setAclState ret: 4", "setTxSharingState ret: 4", "sendIccEventInd 9 data 0102ff"});
    EXPECT_EQ(mLog.count("IccProxy", "loadIccApisPlugin done", ANDROID_LOG_DEBUG), 1U);
}

class ForeignVsComponentTest : public RfSubsysComponentTest, public testing::WithParamInterface<const char*> {};

TEST_P(ForeignVsComponentTest, Notifications_WhenTheirClassesAreUnknown_ThenReadByPosition) {
    ASSERT_NE(mLooper.run([] { return dlopen(GetParam(), RTLD_NOW); }), nullptr);
    mRf = add<RfSubsysComponent>();
    initComponents();
    hal::getComponent<hal::VsComponent>(hal::VsComponent::TYPE)->mStateRegistrants->notify(new Integer(1));
    mLooper.drain();
    tick();
    EXPECT_EQ(calls(4), (Calls{"iccApis_init(3,4000000,1)", "iccSetAclState(1,2600,3,4)",
                               "iccSetTxSharingState(1,{78 41},{5 6},{7 8})", "sendIccEventInd(9,{1 2 3})"}));
}

INSTANTIATE_TEST_SUITE_P(Builds, ForeignVsComponentTest, testing::Values(FOREIGN_VS, FOREIGN_VS_NO_RTTI),
                         [](const auto& test) { return test.index == 0 ? "Rtti" : "NoRtti"; });

TEST_F(RfSubsysComponentTest, AnyOperation_WhenIccIsUnsupported_ThenErrorOneAndNothingElse) {
    mDevice.remove("/vendor/build.prop");
    start();
    std::vector<uint32_t> clocks;
    EXPECT_EQ(ask([](auto& rf, const auto& reply) { rf.getMipiClk(1, reply); }), 1);
    EXPECT_EQ(ask([&](auto& rf, const auto& reply) { rf.getOscClk(1, &clocks, reply); }), 1);
    EXPECT_TRUE(mLog.has(TAG, "ICC unsupported!", ANDROID_LOG_DEBUG));
    EXPECT_FALSE(RfSubsysComponent::isIccSupported());
    EXPECT_EQ(ask([](auto& rf, const auto& reply) { rf.setIccWifiAntState(1, 2, reply); }), 1);
    EXPECT_EQ(ask([](auto& rf, const auto& reply) { rf.setIccSatelliteAntState(1, 2, 3, reply); }), 1);
    EXPECT_EQ(ask([](auto& rf, const auto& reply) { rf.getIccState(reply); }), 1);
    EXPECT_EQ(ask([](auto& rf, const auto& reply) { rf.sendIccCmd(1, {}, 0, reply); }), 1);
    EXPECT_EQ(mLog.count(TAG, "IccProxy is null", ANDROID_LOG_ERROR), 4U);
    for (const auto registration :
         {&RfSubsysComponent::registerIccStateInd, &RfSubsysComponent::registerIccClatInfoInd,
          &RfSubsysComponent::registerIccDeviceErrInd, &RfSubsysComponent::registerIccPercChangeInd,
          &RfSubsysComponent::registerIccInfoChangedInd}) {
        (mRf.get()->*registration)(mLooper.handler(), nullptr, nullptr);
    }
    becomeReady();
    tick();
    EXPECT_EQ(mVs->clat.size(), 0U);
    EXPECT_EQ(mVs->infoRequests.count(), 0U);
}

}  // namespace
