#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "tests/ims/ImsOrtcClient.h"
#include "tests/support/ClientProcess.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"
#include "tests/support/NamesFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;
using ndk::SharedRefBase;

class ImsOrtcClientDeathTest : public testing::Test {
protected:
    using Client = test::ClientProcess<test::ImsResponseClient, test::ImsIndicationClient>;

    static void registerAtChannels(const Client& client) {
        ImsOrtcServiceResponse::getInstance()->setCallback(client.callback<IImsOrtcResponse>());
        ImsOrtcServiceIndication::getInstance()->setCallback(client.callback<IImsOrtcIndication>());
    }
    // The channels and a second client in this process.
    ImsOrtcClientDeathTest() {
        ABinderProcess_startThreadPool();  // deaths are told on its threads
        mLooper.run([] {
            (void)ImsOrtcServiceResponse::getInstance();
            (void)ImsOrtcServiceIndication::getInstance();
        });
        registerAtChannels(mClient);
        ImsOrtcServiceResponse::getInstance()->setCallback(mResponses);
        ImsOrtcServiceIndication::getInstance()->setCallback(mIndications);
        mLog.clear();
    }

    const test::NamesFolder mNames;
    Client mClient{"first"};
    Client mSuccessor{"successor"};
    test::LogCapture mLog;
    test::LooperThread mLooper;  // after the clients: they are made while the test has one thread
    const std::shared_ptr<test::ImsResponseClient> mResponses = SharedRefBase::make<test::ImsResponseClient>();
    const std::shared_ptr<test::ImsIndicationClient> mIndications = SharedRefBase::make<test::ImsIndicationClient>();
};

TEST_F(ImsOrtcClientDeathTest, Death_WhenItIsNotHandledYet_ThenTheSuccessorTakesTheSlotAndKeepsIt) {
    const auto response = ImsOrtcServiceResponse::getInstance();
    test::Event go;
    mLooper.handler()->obtainMessage(new mindroid::Runnable([&] { (void)go.await(); }))->sendToTarget();
    // The looper is busy, so the slots hold the dead client until the successor comes.
    ASSERT_TRUE(mClient.killed<IImsOrtcResponse>());
    registerAtChannels(mSuccessor);
    go.signal();
    mLooper.drain();
    mLog.clear();
    response->obtainMessage(0)->sendToTarget();
    mLooper.drain();
    EXPECT_EQ(mLog.lines("ImsOrtcServiceResponse").size(), 0U);
}

TEST_F(ImsOrtcClientDeathTest,
       Death_WhenItComesWhileEventsAreDelivered_ThenTheOtherClientMissesNothingAndTheSlotIsFreed) {
    constexpr size_t EVENTS = 2000;
    std::thread death([&] {
        (void)mIndications->calls.await(EVENTS / 2);
        mClient.kill();
    });
    ImsRtpDataInfo data;
    data.data.assign(255, 0x5a);
    for (size_t i = 0; i < EVENTS; ++i) {
        ImsOrtcServiceIndication::getInstance()->recvImsRtpData(data);
        (void)ImsOrtcServiceResponse::getInstance()->sendImsRtpDataResponse(1, SUBSYS_Errno::SUCCESS);
    }
    death.join();
    EXPECT_EQ(mIndications->calls.count(), EVENTS);
    EXPECT_EQ(mResponses->calls.count(), EVENTS);
    for (const char* tag : {"ImsOrtcServiceResponse", "ImsOrtcServiceIndication"}) {
        EXPECT_TRUE(mLog.await(tag, "client death:0"));
    }
    mLooper.drain();
    EXPECT_EQ(mLog.count("ImsOrtcServiceResponseObj", "cb is dead"), 1U);
    registerAtChannels(mSuccessor);
    for (const char* tag : {"ImsOrtcServiceResponse", "ImsOrtcServiceIndication"}) {
        EXPECT_EQ(mLog.count(tag, "client death:1"), 0U);
        EXPECT_TRUE(mLog.has(tag, "set cb:0", ANDROID_LOG_DEBUG));
    }
}

}  // namespace
