#include "rf/IccConversions.h"

#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
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
    const test::LogCapture log;
    EXPECT_EQ(fromStateEvent({{}, 0, 7, {}}).modeTypes.size(), 7U);
    EXPECT_EQ(fromStateEvent({{}, 0, 8, {}}).modeTypes.size(), 7U);
    EXPECT_EQ(fromStateAnswer({{}, 0, 255, {}}).modeValues.size(), 7U);
    EXPECT_EQ(fromPerception({0x80000000, {}, {}}).percTypes.size(), 0U);
    EXPECT_EQ(fromPerception({10, {}, {}}).percTypes.size(), 10U);
    EXPECT_EQ(fromPerception({11, {}, {}}).percTypes.size(), 10U);
    EXPECT_EQ(fromInformation({5, {}, 256}).data.size(), 256U);
    EXPECT_EQ(fromInformation({5, {}, 257}).data.size(), 256U);
    EXPECT_EQ(fromInformation({5, {}, UINT32_MAX}).data.size(), 256U);
    std::vector<test::LogLine> expected;
    for (const char* line :
         {"mode count 8 out of range, taken as 7", "mode count 255 out of range, taken as 7",
          "perception count -2147483648 out of range, taken as 0", "perception count 11 out of range, taken as 10",
          "information byte count 257 out of range, taken as 256",
          "information byte count 4294967295 out of range, taken as 256"}) {
        expected.push_back({ANDROID_LOG_ERROR, "RfSubsysService", line});
    }
    EXPECT_EQ(log.lines(), expected);
}

}  // namespace
