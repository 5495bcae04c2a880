#include "rf/IccConversions.h"

#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

using testing::ElementsAre;
using testing::FieldsAre;

TEST(FromRecord, WhenFieldsAreGiven_ThenEachIsCarriedInItsLayout) {
    const IccStateInfoType record = {
        static_cast<IccStateType>(0x102), 0xFF, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}};
    EXPECT_THAT(fromStateEvent(record), FieldsAre(2, -1, 2, ElementsAre(1, 3), ElementsAre(2, 4)));
    EXPECT_THAT(fromStateAnswer(record), FieldsAre(2, -1, 2, ElementsAre(1, 2), ElementsAre(8, 9)));
    EXPECT_THAT(fromPerception({2, {{1, 2, 3}, {4, 5, 255}}, {}}),
                FieldsAre(ElementsAre(FieldsAre(1, 2, 3), FieldsAre(4, 5, -1))));
    EXPECT_THAT(fromInformation({5, {1, 2, 253, 4}, 4}), FieldsAre(5, ElementsAre(1, 2, 253, 4)));
}

TEST(FromRecord, WhenCountVaries_ThenCutToTheRecordWithOneLine) {
    const auto states = [](int64_t n) { return fromStateEvent({{}, 0, static_cast<uint8_t>(n), {}}).modeTypes.size(); };
    const auto answers = [](int64_t n) {
        return fromStateAnswer({{}, 0, static_cast<uint8_t>(n), {}}).modeValues.size();
    };
    const auto perceptions = [](int64_t n) {
        return fromPerception({static_cast<uint32_t>(n), {}, {}}).percTypes.size();
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
