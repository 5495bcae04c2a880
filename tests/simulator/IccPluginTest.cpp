#include "rf/IccPluginApi.h"
#include "simulator/IccDevice.h"
#include "tests/simulator/ScenarioFolder.h"
#include "tests/support/Await.h"
#include "tests/support/LogCapture.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <thread>
#include <utility>
#include <vector>

namespace simulator {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;

// The built plugin, opened as the service opens it.
void* openPlugin() {
    static void* sHandle = dlopen(ICC_PLUGIN, RTLD_NOW | RTLD_GLOBAL);
    EXPECT_NE(sHandle, nullptr) << dlerror();
    return sHandle;
}
template <typename Function>
Function* symbol(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(openPlugin(), name));
}
// Calls the plugin's function with the type that the public header gives it.
#define PLUGIN(function) symbol(decltype(&::function){}, #function)

struct Delivered {
    IccEventType type;
    std::vector<uint8_t> data;
    bool isNull;
    int size;
    std::thread::id thread;
};

// Listens to all five events; lives on, since the plugin keeps its address.
test::Recorder<Delivered>& listen() {
    static auto& sEvents = *new test::Recorder<Delivered>();
    const IccEventCallback callback = [](IccEventType type, void* context, void* data, int size) {
        const auto* bytes = static_cast<const uint8_t*>(data);
        static_cast<test::Recorder<Delivered>*>(context)->add(
            {type, bytes == nullptr ? std::vector<uint8_t>() : std::vector<uint8_t>(bytes, bytes + size),
             bytes == nullptr, size, std::this_thread::get_id()});
    };
    for (uint32_t type = 1; type <= 5; ++type) {
        EXPECT_EQ(PLUGIN(registerIccEvent)(static_cast<IccEventType>(type), &sEvents, callback), ICC_APIS_SUCCESS);
    }
    return sEvents;
}

IccResponse send(uint32_t reqId, std::vector<uint8_t> request, uint32_t timeoutMs = 1) {
    IccResponse response{};
    PLUGIN(iccSendReqSync)
    (reqId, request.data(), static_cast<uint32_t>(request.size()), &response, sizeof(response), timeoutMs);
    return response;
}

// The state event whose mode table has these values.
std::vector<uint8_t> stateEvent(uint8_t iccState, std::array<uint8_t, 5> modes) {
    std::vector<uint8_t> record = {iccState, 0, 0, 0, 0, 5};
    for (uint8_t i = 0; i < 5; ++i) record.insert(record.end(), {static_cast<uint8_t>(i + 1), modes[i]});
    record.resize(sizeof(IccStateInfoType));
    return record;
}

TEST(IccPlugin, SendReqSync_WhenBuffersAreOfAnySize_ThenStateAndEchoFillThem) {
    const test::DeviceFolder device;
    PLUGIN(iccApis_init)(3, 4000000, 1);
    PLUGIN(enableIccUartLog)();
    const IccResponse response = send(0x01020304, {9, 8, 7});
    EXPECT_THAT(response, FieldsAre(0, PLUGIN(iccGetHwId)(), 3, 3, 0x01020304u, _, 3, _, _, _, _, _, _));
    EXPECT_THAT(std::vector<uint8_t>(response.echo, response.echo + 4), ElementsAre(9, 8, 7, 0));
    EXPECT_EQ(send(1, std::vector<uint8_t>(100'000, 5)).echoLength, sizeof(response.echo));
    PLUGIN(iccSendReqSync)(42, nullptr, 129, nullptr, 256, 1);
    PLUGIN(sendIccEventInd)(1, nullptr, 5);
}

TEST(IccPlugin, SetState_WhenModesOrScreenChange_ThenOneStateEventEach) {
    const test::DeviceFolder device;
    auto& events = listen();
    EXPECT_EQ(PLUGIN(iccSetTxSharingState)(4, {1, 2}, {3}, {5, 6, 7}), SPI_CMD_SUCCESS);
    EXPECT_EQ(PLUGIN(iccSetSatelliteAntState)(1, 2, 7), SPI_CMD_SUCCESS);
    EXPECT_EQ(PLUGIN(iccSetSatelliteAntState)(1, 2, 7), SPI_CMD_SUCCESS);  // no change, no event
    EXPECT_THAT(send(42, {1, 9}), FieldsAre(_, _, _, _, 42u, ElementsAre(0, 4, 7, 9, 0), _, _, 1, 2, ElementsAre(1, 2),
                                            ElementsAre(3, 0), ElementsAre(5, 6)));
    PLUGIN(setScreenState)(false);
    PLUGIN(iccReloadConfig)();
    EXPECT_EQ(PLUGIN(getIccState)({}), SPI_CMD_SUCCESS);
    ASSERT_TRUE(events.await(5));
    const std::vector<uint8_t> expected[] = {stateEvent(1, {0, 4, 0, 0, 0}), stateEvent(1, {0, 4, 7, 0, 0}),
                                             stateEvent(1, {0, 4, 7, 9, 0}), stateEvent(2, {0, 4, 7, 9, 0}),
                                             stateEvent(2, {})};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_THAT(events.all()[i], FieldsAre(ICC_EVENT_STATE_CHANGED, expected[i], false, sizeof(IccStateInfoType),
                                               testing::Ne(std::this_thread::get_id())));
    }
}

TEST(IccPlugin, RegisterEvent_WhenCalledAgain_ThenTheLatestGoodOneIsCalled) {
    const test::DeviceFolder device;
    const IccEventCallback old = [](IccEventType, void*, void*, int) { ADD_FAILURE() << "replaced"; };
    for (const auto& [type, answer] :
         {std::pair(0u, ICC_APIS_FAILURE), {6u, ICC_APIS_FAILURE}, {5u, ICC_APIS_SUCCESS}}) {
        EXPECT_EQ(PLUGIN(registerIccEvent)(static_cast<IccEventType>(type), nullptr, old), answer) << type;
    }
    auto& events = listen();
    EXPECT_EQ(PLUGIN(registerIccEvent)(ICC_EVENT_COEX_ANT_CHANGED, nullptr, nullptr), ICC_APIS_FAILURE);
    PLUGIN(iccSetCoexAntState)(1, 2, 0, 4);
    EXPECT_TRUE(events.await(1));
}

TEST(IccPlugin, Answer_WhenTheScenarioSaysOne_ThenThatOne) {
    const test::ScenarioFolder device(
        "icc on iccSetAclState 1 answer 4\nicc on iccGetHwId answer 9\n"
        "icc on iccSendReqSync 1 silent\nicc on iccSendReqSync 2 short 5\n"
        "icc on iccSendReqSync 3 answer 6 data=a1a2\nicc on registerIccEvent 6 answer 1\n"
        "icc on iccSetSatelliteAntState silent\nicc on iccReloadConfig delay 30\n");
    auto& events = listen();
    EXPECT_EQ(PLUGIN(iccSetAclState)(1, 2, 3, 4), SPI_CMD_FAILURE_4);
    EXPECT_EQ(PLUGIN(iccSetSatelliteAntState)(1, 2, 3), SPI_CMD_SUCCESS);
    EXPECT_EQ(PLUGIN(iccGetHwId)(), 9);
    EXPECT_EQ(send(7, {1}).echoLength, 0);
    EXPECT_THAT(send(0x07070707, {1}), FieldsAre(_, _, _, _, 7u, _, 0, _, _, _, _, _, _));
    EXPECT_THAT(send(7, {1}), FieldsAre(0xa1, 0xa2, _, _, 7u, _, 1, _, _, _, _, _, _));
    EXPECT_EQ(PLUGIN(registerIccEvent)(ICC_EVENT_CLAT_STATE, &events, [](IccEventType, void*, void*, int) {}),
              ICC_APIS_FAILURE);
    const auto before = std::chrono::steady_clock::now();
    PLUGIN(iccReloadConfig)();
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
    EXPECT_EQ(PLUGIN(iccSetAclState)(1, 2, 3, 4), SPI_CMD_SUCCESS);
    ASSERT_TRUE(events.await(2));  // of the second ACL request; the failed one and the silent one changed nothing
    EXPECT_THAT(events.all()[0].type, ICC_EVENT_CLAT_STATE);
    EXPECT_EQ(events.all()[1].data, stateEvent(1, {1, 0, 0, 0, 0}));
}

TEST(IccPlugin, Event_WhenOfACommandOrTheScenario_ThenInOrderAndAsWritten) {
    const test::ScenarioFolder device(
        "icc on getIccState event state bypass=1\n"
        "icc on getIccState event error devNum=1 id=2 err=3 repeat=2 after=1\n"
        "icc on getIccState event coexAnt bytes=1 tech=8 after=20\n"
        "icc on getIccState event perc null after=40\n");
    const test::LogCapture log;
    auto& events = listen();
    PLUGIN(iccSetAclState)(0, 0x1234, 5, 6);
    PLUGIN(iccSetCoexAntState)(1, 2, 0, 0xff);
    uint8_t data[] = {3, 4};
    PLUGIN(sendIccEventInd)(0x101, data, sizeof(data));
    PLUGIN(getIccState)({});
    ASSERT_TRUE(events.await(8));
    const std::pair<IccEventType, std::vector<uint8_t>> expected[] = {
        {ICC_EVENT_CLAT_STATE, {0x34, 0x12, 0, 6, 0, 0, 0, 0, 5}},
        {ICC_EVENT_COEX_ANT_CHANGED, {1, 2, 0, 0xff}},
        {ICC_EVENT_PERC_CHANGED, {1, 0, 0, 0, 1, 3, 2}},
        {ICC_EVENT_STATE_CHANGED, {1, 0, 0, 0, 1, 5}},
        {ICC_EVENT_DEVICE_ERR, {1, 2, 3, 0}},
        {ICC_EVENT_DEVICE_ERR, {1, 2, 3, 0}},
        {ICC_EVENT_COEX_ANT_CHANGED, {8}}};
    const auto all = events.all();
    for (size_t i = 0; i < std::size(expected); ++i) {
        std::vector<uint8_t> start = all[i].data;
        start.resize(expected[i].second.size());
        EXPECT_EQ(std::pair(all[i].type, start), expected[i]) << i;
    }
    EXPECT_EQ(all[4].data.size(), sizeof(IccDeviceErrType));
    EXPECT_EQ(all[6].data.size(), 1u);
    EXPECT_THAT(all[7], FieldsAre(ICC_EVENT_PERC_CHANGED, _, true, sizeof(IccPercStateType), _));
    EXPECT_TRUE(log.has("iccapis", "sendIccEventInd 257, 2 bytes 0304", ANDROID_LOG_DEBUG));
}

TEST(IccPlugin, Scenario_WhenTheShippedExamplesAreUsed_ThenNoBadLine) {
    const test::ScenarioFolder device(test::shippedScenario("icc"));
    const test::LogCapture log;
    EXPECT_EQ(PLUGIN(iccSetSatelliteAntState)(1, 2, 3), SPI_CMD_SUCCESS);
    EXPECT_EQ(static_cast<int>(PLUGIN(iccSetSatelliteAntState)(1, 2, 3)), 7);  // an example was used
    EXPECT_THAT(log.lines("Simulator"), testing::IsEmpty());
}

TEST(IccPluginDeathTest, Exit_WhenEventsAreUnderWay_ThenClean) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [] {
        const test::ScenarioFolder device("icc every 1 event clat repeat=100\n");
        auto& events = listen();
        if (!events.await(200)) std::abort();
        dlclose(openPlugin());
        std::exit(7);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace simulator
