#include "service/SubsysService.h"

#include "service/channel/SubsysServiceIndication.h"
#include "tests/support/ClientProcess.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/SubsysClient.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <string>

using namespace test::interface;

namespace {

const std::string NAME = std::string(ISubsys::descriptor) + "/default";
const std::string DIED = "SubsysService::serviceDied: Client died. Cleaning up callbacks";

TEST(SubsysServiceProcessTest, RegisterAsServer_WhenTheNameCannotBePublished_ThenOneErrorLineAndMinus1) {
    setenv("SUBSYS_BINDER_DIR", "/dev/null", 1);
    const test::LogCapture log;
    test::LooperThread looper;
    auto service = looper.run([] { return ndk::SharedRefBase::make<SubsysService>(); });
    EXPECT_EQ(service->registerAsServer(), -1);
    const test::LogLine last = log.lines("SubsysService").back();
    EXPECT_EQ(last.priority, ANDROID_LOG_ERROR);
    EXPECT_TRUE(last.text.starts_with("add service " + NAME + " failed with error ")) << last;
    looper.run([&] { service.reset(); });
}

// The callback of a client that is dead. The action runs when the service asks for its binder.
class DeadResponse : public ISubsysResponseDefault {
public:
    explicit DeadResponse(const std::shared_ptr<ISubsysResponse>& dead) : mBinder(dead->asBinder()) {}
    ndk::SpAIBinder asBinder() override {
        whenAsked();
        return mBinder;
    }
    std::function<void()> whenAsked = [] {};

private:
    const ndk::SpAIBinder mBinder;
};

// What happens at the moment when a line is logged; "" stands for the question whether the client lives.
class SubsysServiceSuccessionTest : public testing::TestWithParam<std::string> {
protected:
    ~SubsysServiceSuccessionTest() override {
        looper.run([&] { service.reset(); });
    }
    // The successor comes once. The service logs on several threads.
    void at(const std::string& when) {
        if (isDue && when == moment && isDue.exchange(false)) connectSuccessor();
    }
    void connectSuccessor() { EXPECT_TRUE(service->setCallback(successor, successorsIndication).isOk()); }
    // A message may post another one.
    void drain() {
        for (int i = 0; i < 3; ++i) looper.drain();
    }
    void expectSuccessorIsServed() {
        drain();
        (void)service->killProcess(1, 0, "");
        EXPECT_EQ(successor->responses.count(), 1u);
        EXPECT_EQ(successorsIndication->indications.count(), 1u);
        EXPECT_EQ(SubsysServiceIndication::getInstance()->getCallback(), successorsIndication);
    }

    const test::NamesFolder names;
    test::ClientProcess<test::SubsysResponseClient> client{"first"};
    std::string moment;  // of the successor; set before it is due
    std::atomic<bool> isDue{false};
    const test::LogCapture log{[this](const std::string& text) { at(text); }};
    test::LooperThread looper;
    std::shared_ptr<SubsysService> service = looper.run([] { return ndk::SharedRefBase::make<SubsysService>(); });
    const std::shared_ptr<DeadResponse> dead = ndk::SharedRefBase::make<DeadResponse>(client.killed<ISubsysResponse>());
    const std::shared_ptr<ISubsysIndication> deadsIndication = ndk::SharedRefBase::make<test::SubsysIndicationClient>();
    const std::shared_ptr<test::SubsysResponseClient> successor =
        ndk::SharedRefBase::make<test::SubsysResponseClient>();
    const std::shared_ptr<test::SubsysIndicationClient> successorsIndication =
        ndk::SharedRefBase::make<test::SubsysIndicationClient>();
};

TEST_P(SubsysServiceSuccessionTest, ClientDeath_WhenASuccessorComesMeanwhile_ThenItKeepsItsCallbacks) {
    (void)service->setCallback(nullptr, deadsIndication);  // The tracker is at 1.
    drain();
    looper.run([&] {  // The death is told while nothing is handled.
        (void)service->setCallback(dead, deadsIndication);
        moment = GetParam();
        isDue = true;
        dead->whenAsked = [&] { at(""); };
    });
    expectSuccessorIsServed();
    EXPECT_EQ(log.count("SubsysService", DIED), 1u);
}

INSTANTIATE_TEST_SUITE_P(Moments, SubsysServiceSuccessionTest,
                         testing::Values("", DIED, "SubsysService::clearCallbacks"),
                         [](const auto& test) { return "Moment" + std::to_string(test.index); });

TEST_F(SubsysServiceSuccessionTest, ClientDeath_WhenANullResponseHasReplacedItsOwn_ThenItIsStillCleanedUp) {
    looper.run([&] {
        (void)service->setCallback(dead, deadsIndication);
        (void)service->setCallback(nullptr, deadsIndication);
    });
    drain();
    EXPECT_EQ(deadsIndication.use_count(), 1);
    EXPECT_TRUE(log.has("SubsysServiceStateTracker", "onHidlStateChanged state 0"));
    connectSuccessor();
    expectSuccessorIsServed();
}

}  // namespace
