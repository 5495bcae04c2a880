#include "ims/ImsOrtcConversions.h"

#include "tests/ims/RecordBytes.h"
#include "tests/support/LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>

namespace {

using namespace hal;
using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;
using test::Bytes;
using test::bytesOf;
using test::RecordBytes;

const CallInfo CALL_INFO{0x01020304, -2,     3,     INT32_MAX,          "one",    "two", "three",
                         "four",     "five", "six", 0x0102030405060708, INT32_MIN};

ImsRtpDataInfo rtpData(size_t size, int32_t dataLen) {
    Bytes data(size);
    std::iota(data.begin(), data.end(), uint8_t{1});
    return {1, 0x0a0b0c0d, -1, data, dataLen};
}

RecordBytes rtpRecord(size_t size, int32_t dataLen) {
    RecordBytes record(272);
    record.put(0, 1, 0x0a0b0c0d, -1).put(268, dataLen);
    for (size_t i = 0; i < size; ++i) record.put(12 + i, static_cast<uint8_t>(i + 1));
    return record;
}

TEST(Pack, Record_WhenTextsFit_ThenEachFieldStandsAtItsOffsetWithItsLowBits) {
    EXPECT_EQ(bytesOf(packCallInfo(CALL_INFO)), RecordBytes(924)
                                                    .put(0, 0x01020304, -2, 3, INT32_MAX)
                                                    .text(16, "one")
                                                    .text(48, "two")
                                                    .text(80, "three")
                                                    .text(336, "four")
                                                    .text(400, "five")
                                                    .text(656, "six")
                                                    .put(912, int64_t{0x0102030405060708}, INT32_MIN));
    EXPECT_EQ(bytesOf(packOrtcRoomInfo(OrtcRoomInfo{1, -1, 0x01020304, INT32_MIN, 5})),
              RecordBytes(20).put(0, 1, -1, 0x01020304, INT32_MIN, 5));
    EXPECT_EQ(bytesOf(packImsRtpPubIpAddrInfo(ImsRtpPubIpAddrInfo{1, 2, 3, -4, 65535, INT32_MIN, "2001:db8::1"})),
              RecordBytes(88).put(0, 1, 2, 3, -4, 65535, INT32_MIN).text(24, "2001:db8::1"));
    EXPECT_EQ(bytesOf(packImsRtpRedunSignalMsg(ImsRtpRedunSignalMsg{0x1ff, -1, 0x100, 65'537, -2, "hello"})),
              RecordBytes(258).put(0, 0xffff, uint16_t{1}, uint16_t{0xfffe}).text(8, "hello"));
}

TEST(Pack, ImsRtpDataInfo_WhenDataIsOfAnySize_ThenAllIsCopiedUpTo255BytesElseTheWholeRecordIsZero) {
    for (const size_t size : {0U, 1U, 254U, 255U}) {
        for (const int32_t dataLen : {INT32_MIN, -1, 0, 7, 256, INT32_MAX}) {
            EXPECT_EQ(bytesOf(packImsRtpDataInfo(rtpData(size, dataLen))), rtpRecord(size, dataLen)) << size;
        }
    }
    for (const size_t size : {256U, 257U, 100'000U}) {
        EXPECT_EQ(bytesOf(packImsRtpDataInfo(rtpData(size, 12))), RecordBytes(272)) << size;
    }
}

TEST(Pack, Text_WhenOfAnyLengthAndBytes_ThenItIsCopiedAsItIsWhereItIsShorterThanItsFieldElseTheFieldAloneStaysEmpty) {
    const auto check = [](const auto& info, auto field, auto pack, size_t offset, size_t size) {
        SCOPED_TRACE(offset);
        const auto packed = [&](const std::string& text) {
            auto changed = info;
            changed.*field = text;
            return bytesOf(pack(changed));
        };
        // The record as with an empty text, and this one in its field.
        const auto with = [&](const std::string& text) {
            Bytes changed = packed("");
            std::copy(text.begin(), text.end(), changed.begin() + static_cast<ptrdiff_t>(offset));
            return changed;
        };
        for (const size_t length : {size_t{0}, size_t{1}, size - 2, size - 1, size, size + 1, size_t{100'000}}) {
            const std::string text(length, 'x');
            EXPECT_EQ(packed(text), with(length < size ? text : "")) << length;
        }
        for (const auto& text : {std::string("a\0b", 3), std::string("\0\0", 2), std::string("\xff\xc3")}) {
            EXPECT_EQ(packed(text), with(text));
        }
        // What counts is the length of the string, wherever its first NUL is.
        EXPECT_EQ(packed("a" + std::string(size, '\0')), with(""));
    };
    check(CALL_INFO, &CallInfo::text1, packCallInfo, 16, 32);
    check(CALL_INFO, &CallInfo::text2, packCallInfo, 48, 32);
    check(CALL_INFO, &CallInfo::text3, packCallInfo, 80, 256);
    check(CALL_INFO, &CallInfo::text4, packCallInfo, 336, 64);
    check(CALL_INFO, &CallInfo::text5, packCallInfo, 400, 256);
    check(CALL_INFO, &CallInfo::text6, packCallInfo, 656, 256);
    check(ImsRtpPubIpAddrInfo(), &ImsRtpPubIpAddrInfo::ipAddr, packImsRtpPubIpAddrInfo, 24, 64);
    check(ImsRtpRedunSignalMsg(), &ImsRtpRedunSignalMsg::msg, packImsRtpRedunSignalMsg, 8, 250);
}

// What a conversion makes of the record, in an interface record that was used before.
template <typename Record, typename Info>
Info unpacked(void (*unpack)(const Record&, Info&), const RecordBytes& bytes) {
    Info info;
    unpack(*RecordBytes(sizeof(Record), 0x77).as<Record>(), info);
    unpack(*bytes.as<Record>(), info);
    return info;
}

TEST(Unpack, Record_WhenBytesHaveTheirHighBitSet_ThenTheyAreZeroExtendedAndIntegersCopied) {
    EXPECT_EQ(unpacked(unpackImsRtpPubIpAddrInfo, RecordBytes(88).put(0, 1, 2, 3, 4, -5, INT32_MIN).text(24, "::")),
              (ImsRtpPubIpAddrInfo{1, 2, 3, 4, -5, INT32_MIN, "::"}));
    EXPECT_EQ(unpacked(unpackOrtcStatus, RecordBytes(20).put(0, 1, -2, 3, 4, INT32_MIN)),
              (OrtcStatus{1, -2, 3, 4, INT32_MIN}));
    EXPECT_EQ(unpacked(unpackOrtcConnectInfo, RecordBytes(272).put(0, 1, -2, 3, 4).text(16, "peer")),
              (OrtcConnectInfo{1, -2, 3, 4, "peer"}));
    EXPECT_EQ(unpacked(unpackImsRtpRedunSignalMsg,
                       RecordBytes(258).put(0, 0xee0280ff, uint16_t{0xffff}, uint16_t{0x8000}).text(8, "hi")),
              (ImsRtpRedunSignalMsg{255, 128, 2, 65'535, 32'768, "hi"}));
    EXPECT_EQ(unpacked(unpackImsRtpRedunDataLinkStateInfo, RecordBytes(5).put(0, 0xff800201, uint8_t{254})),
              (ImsRtpRedunDataLinkStateInfo{1, 2, 128, 255, 254}));
    EXPECT_EQ(unpacked(unpackImsRtpRedunSignalMsgRspInfo, RecordBytes(12).put(0, 0xee0280ff, INT32_MIN, -1)),
              (ImsRtpRedunSignalMsgRspInfo{255, 128, 2, INT32_MIN, -1}));
}

TEST(Unpack, Text_WhenItHasNoNulOrMoreAfterIt_ThenItEndsWithItsFieldOrAtTheNul) {
    EXPECT_EQ(unpacked(unpackImsRtpPubIpAddrInfo, RecordBytes(88).text(24, std::string(64, 'a'))).ipAddr,
              std::string(64, 'a'));
    EXPECT_EQ(unpacked(unpackOrtcConnectInfo, RecordBytes(272).text(16, std::string(256, 'b'))).connectInfo,
              std::string(256, 'b'));
    EXPECT_EQ(unpacked(unpackImsRtpRedunSignalMsg, RecordBytes(258).text(8, std::string(250, 'c'))).msg,
              std::string(250, 'c'));
    const test::LogCapture log;
    EXPECT_EQ(unpacked(unpackImsRtpRedunSignalMsg, RecordBytes(258).text(8, {"\x80\xe2\x82\0rest", 8})).msg,
              "\x80\xe2\x82");
    EXPECT_TRUE(log.lines().empty());
}

TEST(Unpack, ImsRtpDataInfo_WhenDataLenIsAnything_ThenAtMostTheRecordIsCopiedAndDataLenIsKept) {
    struct {
        int32_t dataLen;
        size_t copied;
        size_t errors;
    } const cases[] = {{0, 0, 0},  {1, 1, 0},         {255, 255, 0}, {256, 256, 0},
                       {-1, 0, 1}, {INT32_MIN, 0, 1}, {257, 256, 1}, {INT32_MAX, 256, 1}};
    for (const auto& [dataLen, copied, errors] : cases) {
        const test::LogCapture log;
        ImsRtpDataInfo info = rtpData(9, 9);
        unpackImsRtpDataInfo(*rtpRecord(256, dataLen).as<ImsRtpDataInfoType>(), info);
        EXPECT_EQ(info, rtpData(copied, dataLen)) << dataLen;
        const std::string line =
            "received dataLen " + std::to_string(dataLen) + ", data of " + std::to_string(copied) + " bytes";
        EXPECT_EQ(log.count("ImsOrtcService", line, ANDROID_LOG_ERROR), errors);
        EXPECT_EQ(log.lines().size(), errors);
    }
}

}  // namespace
