#include "service/SubsysService.h"

#include "component/ComponentManager.h"
#include "ims/ImsOrtcComponent.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "mindroid/testing/ManualClock.h"
#include "tests/ims/ImsOrtcClient.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"
#include "tests/support/SubsysClient.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

using namespace test::interface;
using ndk::ScopedAStatus;
using test::LogLine;

namespace {

struct Client {
    std::shared_ptr<test::SubsysResponseClient> response = ndk::SharedRefBase::make<test::SubsysResponseClient>();
    std::shared_ptr<test::SubsysIndicationClient> indication = ndk::SharedRefBase::make<test::SubsysIndicationClient>();
};

class SubsysServiceTest : public testing::Test {
protected:
    mindroid::ManualClock clock;
    test::LogCapture log;
    test::LooperThread looper;
    std::shared_ptr<SubsysService> service = looper.run([] { return ndk::SharedRefBase::make<SubsysService>(); });
    Client client;

    // As the service asks for: on its own looper.
    void TearDown() override {
        looper.run([&] { service.reset(); });
    }
    void connect(const Client& newcomer) {
        EXPECT_TRUE(service->setCallback(newcomer.response, newcomer.indication).isOk());
        looper.drain();
    }
};

using Texts = std::vector<std::string>;

TEST_F(SubsysServiceTest, Lifecycle_WhenConstructedAndInitialised_ThenHandlersFollowInOrder) {
    looper.run([&] {
        service->init();
        service->postInit();
    });
    const std::vector<LogLine> lines = log.lines();
    EXPECT_EQ(lines.at(0), (LogLine{ANDROID_LOG_DEBUG, "SubsysService", "SubsysService create"}));
    EXPECT_EQ(log.texts("RfSubsysService"), (Texts{"init done", "postInit done"}));
    EXPECT_EQ(log.texts("ImsOrtcService"), (Texts{"start", "init done"}));
    const auto position = [&](const LogLine& line) { return std::find(lines.begin(), lines.end(), line); };
    EXPECT_LT(position({ANDROID_LOG_DEBUG, "RfSubsysService", "init done"}),
              position({ANDROID_LOG_DEBUG, "ImsOrtcService", "init done"}));
    EXPECT_LT(position({ANDROID_LOG_DEBUG, "SubsysServiceStateTracker", "SubsysServiceStateTracker init"}),
              position({ANDROID_LOG_DEBUG, "ImsOrtcService", "start"}));
}

TEST_F(SubsysServiceTest, Requests_WhenNoComponentExists_ThenEachReachesItsHandlerAndSucceeds) {
    connect(client);
    const std::vector<std::pair<std::function<ScopedAStatus(SubsysService&)>, std::string>> rows = {
        {[](auto& s) { return s.getSwtpStatus(1); }, "getSwtpStatus rfSubsysComponent is null!"},
        {[](auto& s) { return s.setMipiFreqClk(1, 2, 3); }, "setMipiFreqClk rfSubsysComponent is null!"},
        {[](auto& s) { return s.setOscFreqClk(1, 2, 3); }, "setOscFreqClk rfSubsysComponent is null!"},
        {[](auto& s) { return s.getNvramData(1, 2, 3); }, "getNvramData rfSubsysComponent is null!"},
        {[](auto& s) { return s.setIccTuningState(1, 2, 3, 4, 5); }, "setIccTuningState rfSubsysComponent is null!"},
        {[](auto& s) { return s.setIccWifiAntState(1, 2, 3); }, "setIccWifiAntState rfSubsysComponent is null!"},
        {[](auto& s) { return s.setIccSatelliteAntState(1, 2, 3, 4); },
         "setIccSatelliteAntState rfSubsysComponent is null!"},
        {[](auto& s) { return s.getIccState(1); }, "getIccState rfSubsysComponent is null!"},
        {[](auto& s) { return s.sendIccCmd(1, {}); }, "sendIccCmd rfSubsysComponent is null!"},
        {[](auto& s) { return s.sendIccMetaCmd({}, nullptr); }, "sendIccMetaCmd rfSubsysComponent is null!"},
        {[](auto& s) { return s.setCallInfo(1, {}); }, "update call component is null!"},
        {[](auto& s) { return s.setOrtcRoomInfo(1, {}); }, "control component is null!"},
        {[](auto& s) { return s.sendImsRtpData(1, {}); }, "send data component is null!"},
        {[](auto& s) { return s.setImsRtpRemotePubIpAddr(1, {}); }, "update ip component is null!"},
    };
    for (const auto& [call, line] : rows) {
        log.clear();
        EXPECT_TRUE(call(*service).isOk());
        const char* tag = line.ends_with("rfSubsysComponent is null!") ? "RfSubsysService" : "ImsOrtcService";
        EXPECT_EQ(log.lines().back(), (LogLine{ANDROID_LOG_DEBUG, tag, line}));
    }
    log.clear();
    EXPECT_TRUE(service->sendImsRtpRedunSignalMsg(1, {}).isOk());
    EXPECT_TRUE(log.lines().empty());
    looper.drain();
    EXPECT_EQ(client.response->responses.count(), 0u);
}

TEST_F(SubsysServiceTest, SetCallback_WhenAClientConnects_ThenItIsToldTheStateAndRfConnectsAsForOtherWaysToConnect) {
    log.clear();
    connect(client);
    EXPECT_EQ(log.lines().at(0), (LogLine{ANDROID_LOG_DEBUG, "SubsysService", "SubsysService::setCallbacks"}));
    EXPECT_EQ(client.indication->indications.all(), (std::vector<test::Indication>{{"sendSubsysStateChanged", true}}));
    clock.advance(200);
    EXPECT_TRUE(log.await("RfSubsysService", "onSubsysConnected enter"));
    service->onHidlClientDisconnected();
    clock.advance(500);
    looper.drain();
    EXPECT_EQ(log.count("RfSubsysService", "onSubsysConnected enter"), 1u);
    service->onHidlClientConnected();
    clock.advance(200);
    EXPECT_TRUE(log.await("RfSubsysService", "onSubsysConnected enter", 2));
}

TEST_F(SubsysServiceTest, SetCallback_WhenResponseIsNull_ThenClientStillCountsAsConnected) {
    connect(client);
    client.indication->indications.clear();
    service->serviceDied();
    EXPECT_TRUE(service->setCallback(nullptr, client.indication).isOk());
    looper.drain();
    EXPECT_EQ(client.indication->indications.count(), 1u);
    (void)service->killProcess(1, 0, "");
    EXPECT_EQ(client.response->responses.count(), 0u);
}

TEST_F(SubsysServiceTest, ServiceDied_WhenAClientWasConnected_ThenItAloneIsForgottenAndTheNextIsToldAgain) {
    const auto ims = ndk::SharedRefBase::make<test::ImsResponseClient>();
    connect(client);
    log.clear();
    EXPECT_TRUE(service->setImsOrtcCallback(ims, nullptr).isOk());
    EXPECT_TRUE(log.lines("SubsysServiceStateTracker").empty());
    service->serviceDied();
    EXPECT_EQ(log.texts("SubsysService"), (Texts{"SubsysService::setImsOrtcCallback",
                                                 "SubsysService::serviceDied: Client died. Cleaning up callbacks",
                                                 "SubsysService::clearCallbacks"}));
    (void)service->killProcess(1, 0, "");
    const Client next;
    connect(next);
    EXPECT_EQ(client.response->responses.count(), 0u);
    EXPECT_EQ(client.indication->indications.count(), 1u);
    EXPECT_EQ(next.indication->indications.count(), 1u);
    (void)ImsOrtcServiceResponse::getInstance()->setCallInfoResponse(9, SUBSYS_Errno::SUCCESS);
    EXPECT_EQ(ims->calls.count(), 1u);
}

TEST_F(SubsysServiceTest, Dump_WhenClientsAndComponentsAreThere_ThenALineForEach) {
    hal::ComponentManager::getInstance()->add(nullptr);
    hal::ComponentManager::getInstance()->add(new hal::ImsOrtcComponent());
    EXPECT_TRUE(service->setImsOrtcCallback(ndk::SharedRefBase::make<test::ImsResponseClient>(), nullptr).isOk());
    EXPECT_TRUE(service->setCallback(client.response, nullptr).isOk());
    clock.advance(1500);
    std::FILE* const file = std::tmpfile();
    EXPECT_EQ(AIBinder_dump(service->asBinder().get(), fileno(file), nullptr, 0), STATUS_OK);
    std::rewind(file);
    std::string text(4096, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    const std::string self = "pid " + std::to_string(getpid()) + ", alive";
    EXPECT_EQ(text,
              "interface.version: 5\ninterface.hash: eb915a9f55f7590d55c29b64a7be1f4f97a18f37\nuptime: 1500 ms\n"
              "rf.response: " +
                  self + "\nrf.indication: none\nims.0.response: " + self +
                  "\nims.0.indication: none\nims.1.response: none\nims.1.indication: none\n"
                  "component.0: type -1, instance 0\ncomponent.1: type 21, instance 0\n");
}

TEST_F(SubsysServiceTest, KillProcess_WhenRefusedOrDone_ThenAnswered2Or0) {
    test::ChildProcess victim;
    connect(client);
    EXPECT_TRUE(service->killProcess(1, victim.pid(), "somebody").isOk());
    EXPECT_TRUE(service->killProcess(2, victim.pid(), "vendor.dpmd").isOk());
    EXPECT_EQ(victim.awaitSignal(), SIGKILL);
    EXPECT_EQ(client.response->responses.all(),
              (std::vector<test::Response>{{"killProcessResponse", {0, 1, SUBSYS_Errno::GENERIC_FAILURE}},
                                           {"killProcessResponse", {0, 2, SUBSYS_Errno::SUCCESS}}}));
}

}  // namespace
