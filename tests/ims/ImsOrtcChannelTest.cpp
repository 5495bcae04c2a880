#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "tests/ims/ImsOrtcClient.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LooperThread.h"
#include "tests/support/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;
using ndk::SharedRefBase;
using test::LogLine;

// What a test of either channel needs to know about it.
struct Response {
    using Channel = ImsOrtcServiceResponse;
    using Holder = ImsOrtcServiceResponseObj;
    using Client = test::ImsResponseClient;
    using Dead = IImsOrtcResponseDefault;
    static constexpr const char* TAG = "ImsOrtcServiceResponse";
    static constexpr const char* HOLDER_TAG = "ImsOrtcServiceResponseObj";
    static constexpr const char* HOLDER_NAME = "ImsOrtcServiceResponseObj";
    static constexpr bool LOCKS_ON_DEATH = false;
    static void deliver(Channel& channel) { (void)channel.setCallInfoResponse(1, SUBSYS_Errno::SUCCESS); }
};

struct Indication {
    using Channel = ImsOrtcServiceIndication;
    using Holder = ImsOrtcServiceIndicationObj;
    using Client = test::ImsIndicationClient;
    using Dead = IImsOrtcIndicationDefault;
    static constexpr const char* TAG = "ImsOrtcServiceIndication";
    static constexpr const char* HOLDER_TAG = "ImsOrtcServiceIndication";
    static constexpr const char* HOLDER_NAME = "ImsOrtcServiceIndicationObj";
    static constexpr bool LOCKS_ON_DEATH = true;
    static void deliver(Channel& channel) { channel.notifyOrtcStatus({}); }
};

// A client of this process can't die; one without a binder counts as dead from the start. This one holds up the first
// that asks whether it lives.
template <typename Kind>
class SlowlyDead final : public Kind::Dead {
public:
    ndk::SpAIBinder asBinder() override {
        const bool first = mArmed.exchange(false);
        asked.add(true);
        if (first) (void)go.await();
        return {};
    }
    // From now on; registering it asks as well.
    void arm() {
        asked.clear();
        mArmed = true;
    }

    test::Recorder<bool> asked;
    test::Event go;

private:
    std::atomic<bool> mArmed{false};
};

template <typename Kind>
class ImsOrtcChannelTest : public testing::Test {
protected:
    using Channel = typename Kind::Channel;
    using Client = typename Kind::Client;

    [[nodiscard]] static std::shared_ptr<typename Kind::Dead> deadClient() {
        return SharedRefBase::make<typename Kind::Dead>();
    }
    std::shared_ptr<Client> addClient() {
        auto added = SharedRefBase::make<Client>();
        mChannel->setCallback(added);
        return added;
    }
    [[nodiscard]] std::vector<LogLine> takeLines() {
        auto lines = mLog.lines();
        mLog.clear();
        return lines;
    }
    static LogLine set(int slot) { return {ANDROID_LOG_DEBUG, Kind::TAG, "set cb:" + std::to_string(slot)}; }
    static LogLine freed(int slot) { return {ANDROID_LOG_DEBUG, Kind::TAG, "client death:" + std::to_string(slot)}; }
    static LogLine cbIsDead() { return {ANDROID_LOG_DEBUG, Kind::HOLDER_TAG, "cb is dead"}; }

    // The death message, as a monitor posts it.
    void reportDeath() {
        mChannel->obtainMessage(0)->sendToTarget();
        mLooper.drain();
    }

    test::LooperThread mLooper;
    test::LogCapture mLog;
    const mindroid::sp<Channel> mChannel = mLooper.run([] { return Channel::getInstance(); });
};

using Kinds = testing::Types<Response, Indication>;
TYPED_TEST_SUITE(ImsOrtcChannelTest, Kinds);

using Lines = std::vector<LogLine>;

TYPED_TEST(ImsOrtcChannelTest, SetCallback_WhenNullAndThreeClientsCome_ThenTwoFillTheSlotsAndTheOthersAreIgnored) {
    const LogLine created{ANDROID_LOG_DEBUG, TypeParam::HOLDER_TAG, TypeParam::HOLDER_NAME};
    EXPECT_EQ(this->takeLines(), (Lines{created, created}));
    EXPECT_EQ(TypeParam::Channel::getInstance(), this->mChannel);
    const auto first = this->addClient();
    EXPECT_EQ(this->takeLines(), (Lines{this->cbIsDead(), this->set(0)}));
    this->mChannel->setCallback(nullptr);
    EXPECT_EQ(this->takeLines(), Lines{});
    const auto second = this->addClient();
    EXPECT_EQ(this->takeLines(), (Lines{this->cbIsDead(), this->set(1)}));
    const auto third = this->addClient();
    EXPECT_EQ(this->takeLines(), Lines{});
    for (int i = 0; i < 2; ++i) TypeParam::deliver(*this->mChannel);  // Each call fails.
    EXPECT_EQ(first->calls.count(), 2U);
    EXPECT_EQ(second->calls.count(), 2U);
    EXPECT_EQ(third->calls.count(), 0U);
}

TYPED_TEST(ImsOrtcChannelTest, Slots_WhenFreeDeadOrLive_ThenADeathOrTheNextClientClearsAllButTheLiveOne) {
    const auto dead = this->deadClient();
    this->mChannel->setCallback(dead);
    this->mLog.clear();
    this->reportDeath();
    EXPECT_EQ(this->takeLines(), (Lines{this->cbIsDead(), this->freed(0), this->cbIsDead(), this->freed(1)}));
    EXPECT_EQ(dead.use_count(), 1);
    const auto live = this->addClient();
    this->mChannel->setCallback(dead);
    this->mLog.clear();
    this->reportDeath();
    EXPECT_EQ(this->takeLines(), (Lines{this->cbIsDead(), this->freed(1)}));
    this->mChannel->setCallback(dead);
    this->mLog.clear();
    const auto next = this->addClient();
    EXPECT_EQ(this->takeLines(), (Lines{this->cbIsDead(), this->set(1)}));
    EXPECT_EQ(dead.use_count(), 1);
    TypeParam::deliver(*this->mChannel);
    EXPECT_EQ(live->calls.count(), 1U);
    EXPECT_EQ(next->calls.count(), 1U);
}

TYPED_TEST(ImsOrtcChannelTest, OnClientDeath_WhenARegistrationIsUnderWay_ThenOnlyTheIndicationChannelWaits) {
    const auto slow = SharedRefBase::make<SlowlyDead<TypeParam>>();
    this->mChannel->setCallback(slow);
    slow->arm();
    std::thread registration([&] { this->addClient(); });
    ASSERT_TRUE(slow->asked.await(1));
    this->mChannel->obtainMessage(0)->sendToTarget();
    // A channel that does not lock asks at once; one that locks does not ask, however long one waits.
    const std::chrono::milliseconds patience =
        TypeParam::LOCKS_ON_DEATH ? std::chrono::milliseconds(200) : test::DEADLINE;
    EXPECT_EQ(slow->asked.await(2, patience), !TypeParam::LOCKS_ON_DEATH);
    slow->go.signal();
    registration.join();
    this->mLooper.drain();
}

TYPED_TEST(ImsOrtcChannelTest, OnClientDeath_WhenAClientRegistersMeanwhile_ThenItIsNotThrownOut) {
    const auto slow = SharedRefBase::make<SlowlyDead<TypeParam>>();
    this->mChannel->setCallback(slow);
    slow->arm();
    this->mChannel->obtainMessage(0)->sendToTarget();
    ASSERT_TRUE(slow->asked.await(1));
    std::shared_ptr<typename TypeParam::Client> next;
    std::thread registration([&] { next = this->addClient(); });
    // Without the lock the registration goes through while the death is looked into; with it, it comes after.
    if (!TypeParam::LOCKS_ON_DEATH) registration.join();
    slow->go.signal();
    if (TypeParam::LOCKS_ON_DEATH) registration.join();
    this->mLooper.drain();
    TypeParam::deliver(*this->mChannel);
    EXPECT_EQ(next->calls.count(), 1U);
}

TYPED_TEST(ImsOrtcChannelTest, Channel_WhenRegistrationDeathAndDeliveryRace_ThenALiveClientMissesNothing) {
    constexpr size_t ROUNDS = 500;
    const auto live = this->addClient();
    const std::function<void()> actions[] = {[&] { this->mChannel->setCallback(this->deadClient()); },
                                             [&] { this->mChannel->setCallback(this->deadClient()); },
                                             [&] { this->mChannel->obtainMessage(0)->sendToTarget(); },
                                             [&] { TypeParam::deliver(*this->mChannel); }};
    test::inThreads(std::size(actions), [&](size_t i) {
        for (size_t round = 0; round < ROUNDS; ++round) actions[i]();
    });
    this->mLooper.drain();
    EXPECT_EQ(live->calls.count(), ROUNDS);
}

}  // namespace
