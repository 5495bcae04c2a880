#include "rf/IccProxy.h"

#include "component/ComponentSingleton.h"
#include "component/RequestBridge.h"
#include "component/SubsysInterfaceData.h"
#include "tests/rf/RfFixture.h"
#include "tests/support/Threads.h"

#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using namespace mindroid;
using namespace test;
using hal::IccProxy;

using Bytes = std::vector<uint8_t>;
using Calls = std::vector<std::string>;

constexpr const char* TAG = "IccProxy";

struct Reply {
    int error;
    sp<mindroid::Object> value;

    [[nodiscard]] Bytes bytes() const { return value ? static_cast<const ByteArray*>(value.get())->value() : Bytes(); }
};

class IccProxyTest : public test::RfFixture {
protected:
    sp<Message> reply() {
        return hal::obtainReplyMessage(mLooper.handler(), [this](const Message& message) {
            mReplies.add({message.arg2, message.obj});
        });
    }
    // What the request of `ask` was answered.
    template <typename Ask>
    Reply ask(Ask request) {
        mReplies.clear();
        request(reply());
        EXPECT_TRUE(mReplies.await());
        return mReplies.all().at(0);
    }
    Reply sendIccCmd(int32_t reqId, const Bytes& data, int32_t timeoutMs = 100) {
        return ask([&](const auto& message) { mProxy->sendIccCmd(reqId, data, timeoutMs, message); });
    }
    // Returns when all that was posted to the proxy before has run.
    void drainProxy() {
        test::runOn(mProxy, [] {});
    }
    // Listens to the events of one registration, as the records arrive.
    template <typename Record, typename Register>
    void listen(Register registration, Recorder<Record>& records) {
        (mProxy.get()->*registration)(mLooper.handler(), new MessageCallback([&records](const sp<Message>& message) {
                                          records.add(hal::carriedRecord<Record>(*message->obj));
                                      }),
                                      nullptr);
        drainProxy();
    }

    Recorder<Reply> mReplies;
    sp<IccProxy> mProxy = hal::SubsysComponent::createDedicateProxy<IccProxy>(0);
};

TEST_F(IccProxyTest, SendIccCmd_WhenReqIdVaries_ThenServedByItsCommand) {
    const Bytes five = {1, 0x34, 0x12, 4, 5};
    const struct {
        int32_t reqId;
        Bytes data;
        spi_cmd_err_code_e code;
        Calls calls;
        int error;
        Bytes value;
    } cases[] = {
        {1000, five, SPI_CMD_SUCCESS, {"iccSetAclState(1,4660,4,5)"}, 0, {}},
        {1000, {1, 2, 3, 4}, SPI_CMD_SUCCESS, {}, 2, {}},
        {1000, five, SPI_CMD_FAILURE_4, {"iccSetAclState(1,4660,4,5)"}, 11, {}},
        {1001, {}, SPI_CMD_FAILURE, {"iccReloadConfig()"}, 0, {}},
        {1002, {7, 8, 255}, SPI_CMD_FAILURE, {"iccSetSatelliteAntState(7,8,255)"}, 2, {}},
        {1002, {7, 8}, SPI_CMD_SUCCESS, {}, 2, {}},
        {1003, {1, 2, 3, 4}, SPI_CMD_NOT_SUPPORT, {"iccSetCoexAntState(1,2,3,4)"}, 1, {}},
        {1003, {1, 2, 3}, SPI_CMD_SUCCESS, {}, 2, {}},
        {1004, {}, SPI_CMD_FAILURE, {"iccGetHwId()"}, 0, {77}},
        {1005, {}, SPI_CMD_FAILURE, {"enableIccUartLog()"}, 0, {}},
        {1006, five, SPI_CMD_SUCCESS, {}, 1, {}},
        {999, five, SPI_CMD_SUCCESS, {}, 1, {}},
        {255, five, SPI_CMD_SUCCESS, {}, 1, {}},
    };
    for (const auto& [reqId, data, code, expectedCalls, error, value] : cases) {
        iccPlugin().calls.clear();
        iccPlugin().code = code;
        const Reply answer = sendIccCmd(reqId, data);
        EXPECT_EQ(answer.error, error) << reqId;
        EXPECT_EQ(answer.bytes(), value) << reqId;
        EXPECT_EQ(iccPlugin().calls.all(), expectedCalls) << reqId;
    }
    expectLogged(TAG, ANDROID_LOG_DEBUG,
                 {"sendIccCmdExt req id 1000", "sendIccCmdExt req id 1000 ret 11", "sendIccCmdExt unknown reqId 999"});
}

TEST_F(IccProxyTest, SendIccCmd_WhenSynchronous_ThenTimeoutIsClamped) {
    const struct {
        int32_t reqId;
        int32_t timeoutMs;
        std::string call;
    } cases[] = {
        {254, 999, "iccSendReqSync(254,{1 2},2,256,999)"},       {0, 3999, "iccSendReqSync(0,{1 2},2,256,3999)"},
        {1, 4000, "iccSendReqSync(1,{1 2},2,256,4000)"},         {1, 5000, "iccSendReqSync(1,{1 2},2,256,4000)"},
        {-1, -1, "iccSendReqSync(4294967295,{1 2},2,256,4000)"},
    };
    for (const auto& [reqId, timeoutMs, call] : cases) {
        iccPlugin().calls.clear();
        const Reply answer = sendIccCmd(reqId, {1, 2}, timeoutMs);
        EXPECT_EQ(iccPlugin().calls.all(), Calls{call});
        EXPECT_EQ(answer.error, 0);
        Bytes expected(256);
        expected[0] = expected[1] = 0x5A;
        EXPECT_EQ(answer.bytes(), expected);
    }
    EXPECT_TRUE(mLog.has(TAG, "sendIccCmd req id 254 data 0102", ANDROID_LOG_DEBUG));
    EXPECT_EQ(sendIccCmd(1, Bytes(1'000'000, 7)).error, 0);
    EXPECT_EQ(sendIccCmd(1, {}).error, 0);
}

TEST_F(IccProxyTest, DirectRequests_WhenPluginAnswers_ThenShortMapping) {
    const struct {
        uint8_t code;
        int direct;
        int ext;
    } cases[] = {{0, 0, 0}, {1, 2, 2}, {2, 2, 0}, {3, 2, 0}, {4, 2, 11}, {6, 2, 0}, {7, 1, 1}, {8, 2, 0}, {255, 2, 0}};
    for (const auto& [code, direct, ext] : cases) {
        iccPlugin().code = static_cast<spi_cmd_err_code_e>(code);
        const auto satellite = [&](const auto& message) { mProxy->setIccSatelliteAntState(1, -2, 3, message); };
        EXPECT_EQ(ask(satellite).error, direct) << int{code};
        EXPECT_TRUE(mLog.has(TAG, "setIccSatelliteAntState ret: " + std::to_string(direct), ANDROID_LOG_DEBUG));
        EXPECT_EQ(ask([&](const auto& message) { mProxy->getIccState(message); }).error, direct) << int{code};
        EXPECT_EQ(static_cast<int>(IccProxy::getIccStateError(iccPlugin().code)), ext) << int{code};
    }
    EXPECT_EQ(iccPlugin().calls.all().at(0), "iccSetSatelliteAntState(1,-2,3)");
    // The Wi-Fi antenna alone is refused although the plugin took it.
    EXPECT_EQ(ask([&](const auto& message) { mProxy->setIccWifiAntState(0x101, -1, message); }).error, 1);
    EXPECT_EQ(iccPlugin().calls.all().back(), "iccSendReqSync(42,{1 255 0 0},129,1,1000)");
    expectLogged(TAG, ANDROID_LOG_ERROR, {"setWifiAntState failed, SPI_CMD_NOT_SUPPORT"});
}

TEST_F(IccProxyTest, AnyTask_WhenPluginIsMissing_ThenFailsAndNextTaskTriesAgain) {
    mDevice.remove(PLUGIN);
    mProxy->iccApisInit(1, 2, 3);
    mProxy->setScreenState(true);
    mProxy->setAclState(1, 2, 3, 4);
    EXPECT_EQ(sendIccCmd(5, {}).error, 2);
    EXPECT_TRUE(mLog.has(TAG, "sendIccCmd err", ANDROID_LOG_ERROR));
    EXPECT_TRUE(mLog.has(TAG, "setAclState ret: 1", ANDROID_LOG_DEBUG));
    const int ext[] = {2, 2, 2, 2, 0, 0};
    for (int32_t reqId = 1000; reqId <= 1005; ++reqId) {
        const Reply answer = sendIccCmd(reqId, {1, 2, 3, 4, 5});
        EXPECT_EQ(answer.error, ext[reqId - 1000]) << reqId;
        EXPECT_EQ(answer.bytes(), reqId == 1004 ? Bytes{255} : Bytes());
    }
    EXPECT_TRUE(mLog.has(TAG, "iccStartUartLog Invalid loadIccApisPlugin", ANDROID_LOG_DEBUG));
    EXPECT_EQ(ask([&](const auto& message) { mProxy->setIccWifiAntState(1, 1, message); }).error, 2);
    EXPECT_EQ(ask([&](const auto& message) { mProxy->getIccState(message); }).error, 2);
    EXPECT_EQ(mLog.count(TAG, "loadIccApisPlugin failed", ANDROID_LOG_ERROR), 12U);
    EXPECT_EQ(iccPlugin().calls.all(), Calls());

    std::filesystem::create_symlink(RF_TEST_PLUGIN, mDevice.place(PLUGIN));
    EXPECT_EQ(sendIccCmd(1004, {}).bytes(), Bytes{77});
}

TEST_F(IccProxyTest, Events_WhenRegisteredTwice_ThenNewerListenerGetsWholeRecords) {
    uint8_t payload[40];
    for (size_t i = 0; i < sizeof(payload); ++i) payload[i] = static_cast<uint8_t>(0xF0 + i);
    const auto check = [&](auto registration, const std::string& name, auto record, IccEventType type,
                           const std::string& line) {
        const size_t callsBefore = iccPlugin().calls.count();
        Recorder<decltype(record)> replaced;
        Recorder<decltype(record)> records;
        listen(registration, replaced);
        listen(registration, records);
        const std::string call = "registerIccEvent(" + std::to_string(type) + ")";
        EXPECT_EQ(calls(callsBefore + 2).back(), call);
        iccPlugin().emit(type, payload, sizeof(payload));
        ASSERT_TRUE(records.await());
        EXPECT_EQ(std::memcmp(&records.all()[0], &record, sizeof(record)), 0) << type;
        EXPECT_EQ(replaced.count(), 0U);
        expectLogged(TAG, ANDROID_LOG_DEBUG,
                     {name + " cnt 0", name + " cnt 1", line, "handleMessage " + std::to_string(1000 + type)});
    };
    const auto read = [&](auto record) {
        std::memcpy(&record, payload, sizeof(record));
        return record;
    };
    check(&IccProxy::registerIccStateInd, "registerIccStateInd", read(IccStateInfoType()), ICC_EVENT_STATE_CHANGED,
          "handleIccStateChangedInd iccState -202182160, bypass 244");
    check(&IccProxy::registerIccClatInfoInd, "registerIccClatInfoInd", read(IccAclStatusRspMsgType()),
          ICC_EVENT_CLAT_STATE, "handleClatStateInd freq 61936 ant 243 ui 244 gamma248");
    check(&IccProxy::registerIccDeviceErrInd, "registerIccDeviceErrInd", read(IccDeviceErrType()), ICC_EVENT_DEVICE_ERR,
          "handleDeviceErrInd dev num 240 id 241 err 242");
    check(&IccProxy::registerIccPercChangeInd, "registerIccPercChangeInd", read(IccPercStateType()),
          ICC_EVENT_PERC_CHANGED, "handleIccPercChangedInd size -202182160");
    check(&IccProxy::registerIccInfoChangedInd, "registerIccInfoChangedInd",
          IccIndInfoType{5, {0xF0, 0xF1, 0xF2, 0xF3}, 4}, ICC_EVENT_COEX_ANT_CHANGED,
          "handleIccCoexAntChangedInd tech 240 chain 241 state -14 config -13");
}

TEST_F(IccProxyTest, Events_WhenShortEmptyOrUnknown_ThenDroppedWithOneLine) {
    Recorder<IccStateInfoType> records;
    listen(&IccProxy::registerIccStateInd, records);
    uint8_t bytes[36] = {};
    const struct {
        uint32_t type;
        void* data;
        int size;
        std::string line;
    } cases[] = {
        {1, bytes, 19, "event 1 dropped: 19 bytes of data, 20 wanted"},
        {1, nullptr, 20, "event 1 dropped: 0 bytes of data, 20 wanted"},
        {2, bytes, -1, "event 2 dropped: 0 bytes of data, 20 wanted"},
        {3, bytes, 35, "event 3 dropped: 35 bytes of data, 36 wanted"},
        {4, bytes, 0, "event 4 dropped: 0 bytes of data, 36 wanted"},
        {5, bytes, 3, "event 5 dropped: 3 bytes of data, 4 wanted"},
        {0, bytes, 36, "invalid msg what = 1000"},
        {6, bytes, 36, "invalid msg what = 1006"},
        {0x7FFFFC17, bytes, 36, "invalid msg what = 2147483647"},
        {0x7FFFFFFF, bytes, 36, "invalid msg what = -2147482649"},
        {0x80000000, bytes, 36, "invalid msg what = -2147482648"},
        {0xFFFFFC18, bytes, 36, "invalid msg what = 0"},
    };
    for (const auto& [type, data, size, line] : cases) {
        iccStateEventCallback(static_cast<IccEventType>(type), mProxy.get(), data, size);
        drainProxy();
        EXPECT_EQ(mLog.count(TAG, line, ANDROID_LOG_ERROR), 1U) << line;
    }
    iccStateEventCallback(ICC_EVENT_CLAT_STATE, nullptr, bytes, 36);
    mProxy->handleMessage(nullptr);
    expectLogged(TAG, ANDROID_LOG_ERROR, {"iccStateEventCallback error proxy 0, event 2", "can't handle null msg"});
    EXPECT_EQ(records.count(), 0U);
}

TEST_F(IccProxyTest, Events_WhenTheyComeDuringCallsLongOrShort_ThenNothingIsLostOrReordered) {
    constexpr int HELD = 20'000;
    constexpr int COUNT = 21'000;
    Recorder<IccIndInfoType> infos;
    listen(&IccProxy::registerIccInfoChangedInd, infos);
    Event release;
    iccPlugin().onCall = [&release] { EXPECT_TRUE(release.await()); };
    inThreads(5, [&](size_t thread) {
        if (thread == 0) (void)calls(2);  // The plugin is inside a request, after it was registered with.
        for (int i = 0; thread == 0 && i < COUNT; ++i) {
            if (i == HELD) release.signal();
            iccPlugin().emit(ICC_EVENT_COEX_ANT_CHANGED,
                             IccCoexAntType{static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), 0, 0});
        }
        for (int i = 0; thread > 0 && i < 50; ++i) mProxy->sendIccCmd(i % 2 == 0 ? 1 : 1004, {1}, 10, reply());
    });
    ASSERT_TRUE(infos.await(COUNT));
    EXPECT_TRUE(mReplies.await(200));
    int next = 0;
    for (const IccIndInfoType& info : infos.all()) EXPECT_EQ(info.data[0] | info.data[1] << 8, next++);
}

TEST_F(IccProxyTest, Proxy_WhenReplaced_ThenFirstStaysAndSecondFindsNoPlugin) {
    Recorder<IccStateInfoType> records;
    listen(&IccProxy::registerIccStateInd, records);
    const sp<IccProxy> second = hal::SubsysComponent::createDedicateProxy<IccProxy>(5);
    EXPECT_TRUE(mLog.has(TAG, "new IccProxy 5", ANDROID_LOG_DEBUG));
    EXPECT_EQ(hal::ComponentSingleton<IccProxy>::sInstance, second);
    EXPECT_NE(runOn(mProxy, std::this_thread::get_id), runOn(second, std::this_thread::get_id));
    EXPECT_EQ(ask([&](const auto& message) { second->sendIccCmd(1004, {}, 0, message); }).bytes(), Bytes{0});
    mProxy.clear();  // which leaves the plugin as the first one's only user
    iccPlugin().emit(ICC_EVENT_STATE_CHANGED, IccStateInfoType{});
    EXPECT_TRUE(records.await());
}

// The plugin holds the proxy's address for ever: it calls while the static destructors run and nobody else holds it.
TEST(IccProxyDeathTest, Exit_WhenPluginKeepsCalling_ThenProcessEndsCleanly) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto endWhileCalled = [] {
        const test::DeviceFolder device;
        std::filesystem::create_symlink(RF_TEST_PLUGIN, device.place("/vendor/lib64/libiccapis.so"));
        test::LooperThread looper;
        auto proxy = hal::SubsysComponent::createDedicateProxy<IccProxy>(0);
        proxy->registerIccStateInd(looper.handler(), new MessageCallback([](const auto&) {}), nullptr);
        if (!iccPlugin().calls.await(1)) abort();
        proxy.clear();
        std::thread([] {
            while (true) iccPlugin().emit(ICC_EVENT_STATE_CHANGED, IccStateInfoType{});
        }).detach();
        exit(0);
    };
    EXPECT_EXIT(endWhileCalled(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
