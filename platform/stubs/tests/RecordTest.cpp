#include "stubs/tests/Samples.h"
#include "stubs/tests/Words.h"

#include <stubs/Table.h>

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {
namespace {

using namespace stubs_test;

template <class R>
Words written(const R& record) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(STATUS_OK, record.writeToParcel(parcel.get()));
    AParcel_setDataPosition(parcel.get(), 0);
    return wordsOf(parcel.get());
}

template <class R>
binder_status_t readFrom(const Words& words, R& record) {
    return record.readFromParcel(parcelOf(words).get());
}

// A record type as the tests below need it, so that they are compiled once and not for each.
struct RecordType {
    std::string name;
    Words sample;    // every field set
    Words defaults;  // no field set
    bool isEqualAfterReading;
    // Reads a record; what it then holds, written again, and what was left of the words.
    binder_status_t (*read)(const Words& words, Words& again, Words& behind);
};

template <class R>
binder_status_t readAndWrite(const Words& words, Words& again, Words& behind) {
    const ndk::ScopedAParcel parcel = parcelOf(words);
    R record;
    const binder_status_t status = record.readFromParcel(parcel.get());
    again = written(record);
    behind = wordsOf(parcel.get());
    return status;
}

template <class R>
RecordType typeOf() {
    const R sample = Samples().next<R>();
    R received;
    const bool differs = sample != received && sample.toString() != received.toString();
    const bool equal = readFrom(written(sample), received) == STATUS_OK && sample == received;
    return {R::descriptor, written(sample), written(R()), differs && equal, readAndWrite<R>};
}

template <class... R>
std::vector<RecordType> typesOf(subsys_stubs::TypeList<R...>) {
    return {typeOf<R>()...};
}

class EachRecord : public testing::Test {
protected:
    binder_status_t read(const RecordType& type, const Words& words) { return type.read(words, again, behind); }

    const std::vector<RecordType> types = typesOf(subsys_stubs::Records());
    Words again;
    Words behind;
};

// A sender of an older interface knows only the first fields, one of a newer interface has more behind the last.
TEST_F(EachRecord, Read_WhenSenderIsOfThisOrAnotherVersion_ThenKnownFieldsAreReadAndPositionIsAfterTheRecord) {
    for (const RecordType& type : types) {
        EXPECT_TRUE(type.isEqualAfterReading) << type.name;
        ASSERT_EQ(STATUS_OK, read(type, type.sample)) << type.name;
        EXPECT_EQ(type.sample, again) << type.name;
        Words longer = type.sample;
        longer[0] += 8;
        longer.insert(longer.end(), {77, 78, 99});  // two words of the record, one behind it
        ASSERT_EQ(STATUS_OK, read(type, longer)) << type.name;
        EXPECT_EQ(type.sample, again) << type.name;
        EXPECT_EQ(Words{99}, behind) << type.name;
        ASSERT_EQ(STATUS_OK, read(type, {4})) << type.name;
        EXPECT_EQ(type.defaults, again) << type.name;
    }
}

TEST_F(EachRecord, Read_WhenCutAnywhere_ThenAStatusSaysSo) {
    const std::set<binder_status_t> allowed = {STATUS_NOT_ENOUGH_DATA, STATUS_NO_MEMORY, STATUS_UNEXPECTED_NULL,
                                               STATUS_BAD_VALUE};
    for (const RecordType& type : types) {
        for (size_t at = 0; at < type.sample.size(); ++at) {
            const auto status = read(type, Words(type.sample.data(), type.sample.data() + at));
            EXPECT_TRUE(allowed.contains(status)) << type.name << ", " << at << " words: " << status;
        }
    }
}

TEST_F(EachRecord, Read_WhenSizeIsImpossibleOrPastTheEnd_ThenBadValueOrNothingIsLeft) {
    for (const RecordType& type : types) {
        for (const int32_t size : {INT_MIN, -1, 0, 3}) {
            Words words = type.sample;
            words[0] = size;
            EXPECT_EQ(STATUS_BAD_VALUE, read(type, words)) << type.name << " " << size;
        }
        for (const int32_t pastTheEnd : {type.sample[0] + 4, INT_MAX}) {
            Words words = type.sample;
            words[0] = pastTheEnd;
            EXPECT_EQ(STATUS_OK, read(type, words)) << type.name;
            EXPECT_EQ(std::pair(type.sample, Words()), std::pair(again, behind)) << type.name;
        }
    }
    const ndk::ScopedAParcel parcel = parcelOf({0, INT_MAX, 0});
    AParcel_setDataPosition(parcel.get(), 4);
    EXPECT_EQ(STATUS_BAD_VALUE, IccIndInfo().readFromParcel(parcel.get()));
}

TEST(Record, Write_WhenOfEachKindOfField_ThenGoldenWords) {
    EXPECT_EQ((Words{16, 0, 7, 2}), written(SubsysResponseInfo{0, 7, SUBSYS_Errno::GENERIC_FAILURE}));
    EXPECT_EQ((Words{24, 5, 5, 0x04030201, 0x05, 100}), written(IccReqInfo{5, {1, 2, 3, 4, 5}, 100}));
    EXPECT_EQ((Words{28, 1, 2, 3, 0, 2, 0xBBAA}), written(IccStateInfo{1, 2, 3, {}, {0xAA, 0xBB}}));
    EXPECT_EQ((Words{28, 1, 2, -3, 1, 1, 0xFF}), written(IccMetaRespInfo{1, 2, -3, true, {0xFF}}));
    EXPECT_EQ((Words{48, 2, 1, 16, -1, 2, 3, 1, 16, 4, 5, 6}), written(IccPerceptionInfo{{{-1, 2, 3}, {4, 5, 6}}}));
    EXPECT_EQ((Words{32, 1, 2, 3, 4, 2, 'h' | 'i' << 16, 0}), written(OrtcConnectInfo{1, 2, 3, 4, "hi"}));
    EXPECT_EQ((Words{80, 0, 0, 0, 0, 1, 'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 1, 9}),
              written(CallInfo{0, 0, 0, 0, "a", "", "", "", "", "", 0x1'0000'0002, 9}));
}

TEST(Record, Read_WhenOlderSenderStopsBetweenFields_ThenLaterFieldsKeepDefaults) {
    IccReqInfo record;
    ASSERT_EQ(STATUS_OK, readFrom({8, 5, 1, 2}, record));
    EXPECT_EQ((IccReqInfo{5, {}, 0}), record);
}

TEST(Record, Read_WhenAnArrayCannotBe_ThenItsStatus) {
    const std::pair<int32_t, binder_status_t> cases[] = {{-1, STATUS_UNEXPECTED_NULL},
                                                         {-2, STATUS_BAD_VALUE},
                                                         {9, STATUS_NO_MEMORY},
                                                         {0x40000000, STATUS_NO_MEMORY},
                                                         {INT_MAX, STATUS_NO_MEMORY}};
    for (const auto& [count, status] : cases) {
        IccPerceptionInfo records;
        EXPECT_EQ(status, readFrom({12, count, 0}, records)) << count;
        IccIndInfo bytes;
        EXPECT_EQ(status, readFrom({16, 1, count, 0}, bytes)) << count;
    }
    IccPerceptionInfo records;
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, readFrom({28, 1, 0, 0, 0, 0, 0}, records));  // of a record that is null
}

TEST(Record, ToStringAndCompare_WhenOfEachKindOfField_ThenReadableAndTheFirstThatDiffersDecides) {
    EXPECT_EQ("SubsysResponseInfo{type: 0, serial: 7, error: NOT_SUPPORTED}",
              (SubsysResponseInfo{0, 7, SUBSYS_Errno::NOT_SUPPORTED}.toString()));
    EXPECT_EQ("IccPerceptionInfo{percTypes: [IccPercType{value0: 65, value1: 0, value2: 0}]}",
              (IccPerceptionInfo{{{65, 0, 0}}}.toString()));
    EXPECT_EQ("-1", toString(static_cast<SUBSYS_Errno>(-1)));
    EXPECT_LT((OrtcStatus{1, 2, 3, 4, 5}), (OrtcStatus{1, 2, 4, 0, 0}));
}

}  // namespace
}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
