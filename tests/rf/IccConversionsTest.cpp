#include "rf/IccConversions.h"

#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

using Bytes = std::vector<uint8_t>;

TEST(FromRecord, WhenFieldsAreGiven_ThenEachIsCarriedInItsLayout) {
    const IccStateInfoType record = {0x102, 0xFF, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}};
    const IccStateInfo event = fromStateEvent(record);
    EXPECT_EQ(event.state, 2);
    EXPECT_EQ(event.bypass, -1);
    EXPECT_EQ(event.modeNum, 2);
    EXPECT_EQ(event.modeTypes, (Bytes{1, 3}));
    EXPECT_EQ(event.modeValues, (Bytes{2, 4}));
    const IccStateInfo answer = fromStateAnswer(record);
    EXPECT_EQ(answer.modeTypes, (Bytes{1, 2}));
    EXPECT_EQ(answer.modeValues, (Bytes{8, 9}));
    const IccPerceptionInfo perception = fromPerception({2, {{1, 2, 3}, {4, 5, 255}}, {}});
    ASSERT_EQ(perception.percTypes.size(), 2U);
    EXPECT_EQ(perception.percTypes[0].value2, 3);
    EXPECT_EQ(perception.percTypes[1].value0, 4);
    EXPECT_EQ(perception.percTypes[1].value1, 5);
    EXPECT_EQ(perception.percTypes[1].value2, -1);
    const IccIndInfo info = fromInformation({5, {1, 2, 253, 4}, 4});
    EXPECT_EQ(info.id, 5);
    EXPECT_EQ(info.data, (Bytes{1, 2, 253, 4}));
}

TEST(FromRecord, WhenCountVaries_ThenCutToTheRecordWithOneLine) {
    const auto states = [](int64_t n) { return fromStateEvent({0, 0, static_cast<uint8_t>(n), {}}).modeTypes.size(); };
    const auto answers = [](int64_t n) {
        return fromStateAnswer({0, 0, static_cast<uint8_t>(n), {}}).modeValues.size();
    };
    const auto perceptions = [](int64_t n) {
        return fromPerception({static_cast<int32_t>(n), {}, {}}).percTypes.size();
    };
    const auto infos = [](int64_t n) { return fromInformation({5, {}, static_cast<uint32_t>(n)}).data.size(); };
    const struct {
        size_t (*deliver)(int64_t count);
        int64_t count;
        size_t delivered;
        std::string line;
    } cases[] = {
        {states, 7, 7, ""},
        {states, 8, 7, "mode count 8 out of range, taken as 7"},
        {answers, 255, 7, "mode count 255 out of range, taken as 7"},
        {perceptions, INT32_MIN, 0, "perception count -2147483648 out of range, taken as 0"},
        {perceptions, 10, 10, ""},
        {perceptions, 11, 10, "perception count 11 out of range, taken as 10"},
        {infos, 256, 256, ""},
        {infos, 257, 256, "information byte count 257 out of range, taken as 256"},
        {infos, UINT32_MAX, 256, "information byte count 4294967295 out of range, taken as 256"},
    };
    for (const auto& [deliver, count, delivered, line] : cases) {
        const test::LogCapture log;
        EXPECT_EQ(deliver(count), delivered) << count;
        std::vector<test::LogLine> expected;
        if (!line.empty()) expected.push_back({ANDROID_LOG_ERROR, "RfSubsysService", line});
        EXPECT_EQ(log.lines(), expected);
    }
}

}  // namespace
