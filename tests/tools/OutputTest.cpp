#include "tools/Output.h"

#include <gtest/gtest.h>
#include <stubs/Table.h>

#include <sstream>

#include "tools/Text.h"

namespace subsysctl {
namespace {

using namespace ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

template <class I, uint32_t code, class... Args>
Json callJson(const char* kind, const Args&... arguments) {
    return callToJson(kind, subsys_stubs::methodOf<I, code>(), arguments...);
}

// The one line that is printed.
std::string printed(const Json& event, bool json, bool colour = false) {
    std::ostringstream out;
    Output(out, json, colour).print(event);
    const std::string text = out.str();
    EXPECT_EQ(text.size() - 1, text.find('\n')) << text;
    return text.substr(0, text.size() - 1);
}

const Json kLcd = callJson<ISubsysResponse, ISubsysResponse::TRANSACTION_getLcdInfoResponse>(
    "response", SubsysResponseInfo{0, 7, SUBSYS_Errno::NOT_SUPPORTED}, std::string("a\"b\n"));
const Json kClock = callJson<ISubsysResponse, ISubsysResponse::TRANSACTION_setOscFreqClkResponse>(
    "response", SubsysResponseInfo{0, -1, SUBSYS_Errno::SUCCESS});
const Json kCommand = callJson<ISubsysResponse, ISubsysResponse::TRANSACTION_sendIccCmdResponse>(
    "response", SubsysResponseInfo{0, 2, SUBSYS_Errno::SUCCESS}, IccRespInfo{-3, {0x0A, 0xFF}});
const Json kState =
    callJson<ISubsysIndication, ISubsysIndication::TRANSACTION_sendSubsysStateChanged>("indication", true);
const Json kPerception = callJson<ISubsysIndication, ISubsysIndication::TRANSACTION_notifyIccPercStateChangedInd>(
    "indication", IccPerceptionInfo{{{1, -2, 3}, {}}});
const Json kMeta = callJson<ISubsysIccMetaCallback, ISubsysIccMetaCallback::TRANSACTION_onIccMetaResp>(
    "callback", IccMetaRespInfo{1, 9, 2, false, {}});

TEST(Output, Json_WhenOfEachKind_ThenKeysAsDeclared) {
    EXPECT_EQ(R"({"response":"getLcdInfoResponse","info":{"type":0,"serial":7,"error":1},"lcdInfo":"a\"b\n"})",
              printed(kLcd, true));
    EXPECT_EQ(R"({"response":"sendIccCmdResponse","info":{"type":0,"serial":2,"error":0},)"
              R"("respInfo":{"reqId":-3,"data":"0aff"}})",
              printed(kCommand, true));
    EXPECT_EQ("{\"indication\":\"sendSubsysStateChanged\",\"state\":true}", printed(kState, true));
    EXPECT_EQ(R"({"indication":"notifyIccPercStateChangedInd","info":{"percTypes":[)"
              R"({"value0":1,"value1":-2,"value2":3},{"value0":0,"value1":0,"value2":0}]}})",
              printed(kPerception, true));
    EXPECT_EQ(R"({"callback":"onIccMetaResp","info":{"id":1,"token":9,"type":2,"result":false,"data":""}})",
              printed(kMeta, true));
}

TEST(Output, Text_WhenOfEachKind_ThenOneReadableLine) {
    EXPECT_EQ("getLcdInfoResponse #7 NOT_SUPPORTED lcdInfo=\"a\\\"b\\n\"", printed(kLcd, false));
    EXPECT_EQ("setOscFreqClkResponse #-1 SUCCESS", printed(kClock, false));
    EXPECT_EQ("sendIccCmdResponse #2 SUCCESS reqId=-3 data=\"0aff\"", printed(kCommand, false));
    EXPECT_EQ("indication sendSubsysStateChanged state=true", printed(kState, false));
    EXPECT_EQ(
        "indication notifyIccPercStateChangedInd percTypes=[{value0=1 value1=-2 value2=3}, "
        "{value0=0 value1=0 value2=0}]",
        printed(kPerception, false));
    EXPECT_EQ("onIccMetaResp FAILED id=1 token=9 type=2 result=false data=\"\"", printed(kMeta, false));
}

TEST(Output, Colour_WhenWanted_ThenOnlyInText) {
    EXPECT_EQ("setOscFreqClkResponse #-1 \033[32mSUCCESS\033[0m", printed(kClock, false, true));
    EXPECT_NE(std::string::npos, printed(kLcd, false, true).find("\033[31mNOT_SUPPORTED"));
    EXPECT_EQ(std::string::npos, printed(kLcd, true, true).find('\033'));
}

TEST(Output, Bytes_WhenNotUtf8_ThenReplaced) {
    const Json event = {{"indication", "x"}, {"text", "a\xFF\xC3"}};
    EXPECT_EQ("{\"indication\":\"x\",\"text\":\"a\xEF\xBF\xBD\xEF\xBF\xBD\"}", printed(event, true));
    EXPECT_EQ("indication x text=\"a\xEF\xBF\xBD\xEF\xBF\xBD\"", printed(event, false));
}

TEST(Text, Hex_WhenParsed_ThenOnlyPairsOfDigits) {
    EXPECT_EQ((std::vector<uint8_t>{0x0A, 0xBC, 0xFF}), parseHex("0aBCff"));
    EXPECT_EQ("0abcff", toHex(*parseHex("0aBCff")));
    EXPECT_EQ(std::vector<uint8_t>(), parseHex(""));
    for (const char* bad : {"0", "0x01", "0g", " 1", "-1", "+1", "1 ", "\xC3\xA4"}) {
        EXPECT_EQ(std::nullopt, parseHex(bad)) << bad;
    }
}

TEST(Text, Number_WhenParsed_ThenOnlyOneThatFits) {
    EXPECT_EQ(-5, parseNumber<int32_t>("-5"));
    EXPECT_EQ(255, parseNumber<int32_t>("0xff"));
    EXPECT_EQ(-16, parseNumber<int64_t>("-0x10"));
    EXPECT_EQ(INT64_MIN, parseNumber<int64_t>("-9223372036854775808"));
    for (const char* bad : {"", "-", "--1", "0x", "0x-1", "1x", " 1", "+1", "1.5", "2147483648", "-2147483649"}) {
        EXPECT_EQ(std::nullopt, parseNumber<int32_t>(bad)) << bad;
    }
}

}  // namespace
}  // namespace subsysctl
