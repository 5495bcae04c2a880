#include "component/RequestBridge.h"

#include "component/SubsysComponent.h"
#include "tests/support/Await.h"
#include "tests/support/LooperThread.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <tuple>
#include <vector>

using namespace hal;
using namespace mindroid;

namespace {

// A response as a channel got it. A byte array without data is told from an empty one.
struct Got {
    int32_t serial;
    SUBSYS_Errno error;
    std::vector<uint8_t> value;
    bool hasData = false;
    bool onLooper = false;
};

class RequestBridgeTest : public testing::Test {
protected:
    test::LooperThread looper;
    sp<Handler> handler = looper.make<Handler>();
    test::Recorder<Got> responses;

    bool onLooper() { return Looper::myLooper() == looper.looper(); }

    // A request whose component answers as the action does.
    template <typename Action>
    ndk::ScopedAStatus callVoid(uint32_t serial, Action component) {
        return callComponentRspVoid(serial, handler, component, [this](int32_t got, SUBSYS_Errno error) {
            responses.add({got, error, {}, false, onLooper()});
            return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
        });
    }
    Got onlyResponse() {
        EXPECT_TRUE(responses.await());
        looper.drain();
        EXPECT_EQ(responses.count(), 1u);
        const Got got = responses.all().front();
        responses.clear();
        EXPECT_TRUE(got.onLooper);
        return got;
    }
};

// Sends as a component of another library may.
auto answer(int32_t error, sp<Object> value) {
    return [=](const sp<Message>& reply) {
        reply->obj = value;
        reply->arg2 = error;
        reply->sendToTarget();
    };
}

TEST_F(RequestBridgeTest, Void_WhenAnsweredInline_ThenResponseRunsLaterOnTheLooper) {
    looper.run([&] {
        EXPECT_TRUE(callVoid(0xFFFFFFFFu, answer(7, nullptr)).isOk());
        EXPECT_EQ(responses.count(), 0u);
    });
    const Got got = onlyResponse();
    EXPECT_EQ(got.serial, -1);
    EXPECT_EQ(got.error, SUBSYS_Errno(7));
}

TEST_F(RequestBridgeTest, Void_WhenAnsweredLateAndOutOfOrder_ThenInReplyOrder) {
    std::vector<sp<Message>> kept;
    for (uint32_t serial = 0; serial < 3; ++serial) {
        EXPECT_TRUE(callVoid(serial, [&](const sp<Message>& reply) { kept.push_back(reply); }).isOk());
    }
    std::thread([&] {
        for (const size_t index : {2U, 0U, 1U}) SubsysComponent::sendResponse(kept[index], SUBSYS_Errno::SUCCESS);
    }).join();
    ASSERT_TRUE(responses.await(3));
    looper.drain();
    std::vector<int32_t> serials;
    for (const Got& got : responses.all()) serials.push_back(got.serial);
    EXPECT_EQ(serials, (std::vector<int32_t>{2, 0, 1}));
}

TEST_F(RequestBridgeTest, Void_WhenNeverAnsweredOrAnswered_ThenNothingOfTheRequestStaysBehind) {
    const auto token = std::make_shared<int>();
    const auto response = [token](int32_t, SUBSYS_Errno) { return ndk::ScopedAStatus::ok(); };
    (void)callComponentRspVoid(
        1, handler, [](const sp<Message>&) {}, response);
    EXPECT_EQ(token.use_count(), 2);  // Here and in `response`.
    sp<Message> kept;
    (void)callComponentRspVoid(
        2, handler, [&](const sp<Message>& reply) { kept = reply; }, response);
    EXPECT_EQ(token.use_count(), 3);
    SubsysComponent::sendResponse(kept, SUBSYS_Errno::SUCCESS);
    looper.drain();
    EXPECT_EQ(token.use_count(), 2);  // Though the component still holds the message.
}

TEST_F(RequestBridgeTest, Value_WhenErrorOrNull_ThenValueIsZero) {
    const std::vector<std::tuple<int32_t, sp<Object>, uint8_t>> rows = {
        {0, new Byte(0xFF), 0xFF},
        {3, new Byte(0xFF), 0},
        {-1, new Byte(1), 0},
        {0, nullptr, 0},
    };
    const auto response = [this](int32_t serial, SUBSYS_Errno error, uint8_t value) {
        responses.add({serial, error, {value}, false, onLooper()});
        return ndk::ScopedAStatus::ok();
    };
    for (const auto& [error, value, expected] : rows) {
        const auto call = answer(error, value);
        EXPECT_TRUE(
            (callComponentRspValue<decltype(call), decltype(response), Byte, uint8_t>(9, handler, call, response)
                 .isOk()));
        const Got got = onlyResponse();
        EXPECT_EQ(got.serial, 9);
        EXPECT_EQ(got.error, SUBSYS_Errno(error));
        EXPECT_EQ(got.value, std::vector<uint8_t>{expected});
    }
}

TEST_F(RequestBridgeTest, ByteArray_WhenErrorOrNull_ThenNoDataIsPassed) {
    using Bytes = std::vector<uint8_t>;
    const std::vector<std::tuple<int32_t, sp<Object>, Bytes, bool>> rows = {
        {0, new ByteArray(Bytes{1, 0, 2}), {1, 0, 2}, true},
        {11, new ByteArray(Bytes{1}), {}, false},
        {0, nullptr, {}, false},
    };
    const auto response = [this](int32_t serial, SUBSYS_Errno error, const uint8_t* data, uint32_t length) {
        responses.add({serial, error, {data, data + length}, data != nullptr, onLooper()});
        return ndk::ScopedAStatus::ok();
    };
    for (const auto& [error, value, expected, hasData] : rows) {
        EXPECT_TRUE(callComponentRspByteArray(9, handler, answer(error, value), response).isOk());
        const Got got = onlyResponse();
        EXPECT_EQ(got.error, SUBSYS_Errno(error));
        EXPECT_EQ(got.value, expected);
        EXPECT_EQ(got.hasData, hasData);
    }
    EXPECT_TRUE(callComponentRspByteArray(9, handler, answer(0, new ByteArray(Bytes{})), response).isOk());
    EXPECT_EQ(onlyResponse().value, Bytes{});
}

}  // namespace
