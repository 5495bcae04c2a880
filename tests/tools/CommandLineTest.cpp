#include "tools/Parser.h"

#include "ims/ImsOrtcRecords.h"
#include "stubs/tests/RecordingSubsys.h"
#include "tools/Text.h"
#include "tools/Values.h"

#include <stubs/Table.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace subsysctl {
namespace {

using Words = std::vector<std::string>;

// A command's words; one that holds a blank or nothing stands in single quotes.
Words split(const std::string& command) {
    Words words;
    std::istringstream input(command);
    for (std::string word; input >> std::quoted(word, '\'');) words.push_back(word);
    return words;
}

std::optional<int> parse(const Words& words, CommandLine& line) {
    Output output(std::cout, std::cerr, {});
    return Parser(line, Parser::WHOLE_CALL).parse(words, output);
}

// What the service is called with when these verbs are sent with serials from 1.
Words callsOf(const std::string& command) {
    CommandLine line;
    EXPECT_EQ(std::nullopt, parse(split(command), line));
    const auto service = ndk::SharedRefBase::make<stubs_test::RecordingSubsys>();
    const auto mailbox = std::make_shared<Mailbox>();
    int32_t serial = 0;
    for (const Step& step : line.steps) EXPECT_TRUE(step.request.value().send(*service, ++serial, mailbox).isOk());
    return service->calls;
}

TEST(Requests, Verb_WhenWithItsOptions_ThenItsCall) {
    const std::pair<std::string, std::string> cases[] = {
        {"get-swtp-status", "getSwtpStatus(1)"},
        {"get-lcd-info --type -5", "getLcdInfo(1, -5)"},
        {"set-mipi-freq-clk --id 2 --freq-clk 9000000000", "setMipiFreqClk(1, 2, 9000000000)"},
        {"set-osc-freq-clk --id 2 --freq-clk 3", "setOscFreqClk(1, 2, 3)"},
        {"get-nvram-data --id=2 --size=3", "getNvramData(1, 2, 3)"},
        {"set-icc-tuning-state --technology 2 --band 3 --antenna 4 --state 5", "setIccTuningState(1, 2, 3, 4, 5)"},
        {"set-icc-wifi-ant-state --antenna 2 --state 3", "setIccWifiAntState(1, 2, 3)"},
        {"set-icc-satellite-ant-state --technology 2 --antenna 3 --state 4", "setIccSatelliteAntState(1, 2, 3, 4)"},
        {"get-icc-state", "getIccState(1)"},
        {"kill-process --pid 2 --name 'a b'", "killProcess(1, 2, a b)"},
        {"send-icc-cmd --req-id 2 --data 0aFF --timeout-ms 100",
         "sendIccCmd(1, IccReqInfo{reqId: 2, data: [10, 255], timeout: 100})"},
        {"send-icc-meta-cmd --id 1 --token 2 --type 3 --req-id 4 --data 05",
         "sendIccMetaCmd(IccMetaReqInfo{id: 1, token: 2, type: 3, reqId: 4, data: [5]}, object)"},
        {"set-call-info --slot-id 1 --call-id 2 --call-type 3 --call-state 4 --text1 a --text2 b --text3 c --text4 d "
         "--text5 e --text6 f --value64 5 --value32 6",
         "setCallInfo(1, CallInfo{slotId: 1, callId: 2, callType: 3, callState: 4, text1: a, text2: b, text3: c, "
         "text4: d, text5: e, text6: f, value64: 5, value32: 6})"},
        {"set-ortc-room-info --slot-id 1 --call-id 2 --room-id 3 --room-state 4 --action 5",
         "setOrtcRoomInfo(1, OrtcRoomInfo{slotId: 1, callId: 2, roomId: 3, roomState: 4, action: 5})"},
        {"send-ims-rtp-data --slot-id 1 --call-id 2 --data-type 0x10 --data 0001",
         "sendImsRtpData(1, ImsRtpDataInfo{slotId: 1, callId: 2, dataType: 16, data: [0, 1], dataLen: 2})"},
        {"send-ims-rtp-data --data-len 0 --data 0001",
         "sendImsRtpData(1, ImsRtpDataInfo{slotId: 0, callId: 0, dataType: 0, data: [0, 1], dataLen: 0})"},
        {"set-ims-rtp-remote-pub-ip-addr --slot-id 1 --call-id 2 --media-type 3 --addr-family 4 --rtp-port 5 "
         "--rtcp-port 6 --ip-addr ::1",
         "setImsRtpRemotePubIpAddr(1, ImsRtpPubIpAddrInfo{slotId: 1, callId: 2, mediaType: 3, addrFamily: 4, "
         "rtpPort: 5, rtcpPort: 6, ipAddr: ::1})"},
        {"send-ims-rtp-redun-signal-msg --msg-field1 1 --msg-field2 2 --msg-field3 3 --msg-field4 4 --msg-field5 5 "
         "--msg ''",
         "sendImsRtpRedunSignalMsg(1, ImsRtpRedunSignalMsg{msgField1: 1, msgField2: 2, msgField3: 3, msgField4: 4, "
         "msgField5: 5, msg: })"},
    };
    std::set<std::string> called = {"setCallback", "setImsOrtcCallback"};
    for (const auto& [command, call] : cases) {
        EXPECT_EQ(Words{call}, callsOf(command)) << command;
        called.insert(call.substr(0, call.find('(')));
    }
    subsys_stubs::forEachMethod<subsys_stubs::interface::ISubsys>(
        [&](const auto& method) { EXPECT_TRUE(called.contains(method.name)) << "no verb for " << method.name; });
}

TEST(CommandLine, Parse_WhenGlobalOptionsStandAnywhere_ThenTaken) {
    CommandLine line;
    EXPECT_EQ(std::nullopt,
              parse(split("--json get-lcd-info --type 1 --timeout 0.25 status --take-over --serial -3"), line));
    EXPECT_TRUE(line.takeOver);
    EXPECT_EQ(250, line.timeout.count());
    EXPECT_EQ(-3, line.serial);
    EXPECT_EQ(2u, line.steps.size());
}

TEST(CommandLine, Parse_WhenOfEachVerb_ThenOnlyTheCallbacksItNeeds) {
    const struct {
        const char* command;
        bool rf;
        bool ims;
    } cases[] = {
        {"get-swtp-status", true, false},     {"set-call-info", false, true}, {"status", false, false},
        {"send-icc-meta-cmd", false, false},  {"watch", true, false},         {"watch --ims", true, true},
        {"watch --ims --no-rf", false, true}, {"set-callback", true, false},  {"set-ims-ortc-callback", false, true}};
    for (const auto& [command, rf, ims] : cases) {
        CommandLine line;
        EXPECT_EQ(std::nullopt, parse(split(command), line));
        ASSERT_EQ(1u, line.steps.size());
        EXPECT_EQ(rf, line.steps[0].rf) << command;
        EXPECT_EQ(ims, line.steps[0].ims) << command;
    }
}

TEST(CommandLine, Parse_WhenUsedWrongly_ThenTwoAndWhatWasExpected) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "no verb; 'subsysctl help' shows all"},
        {"get-swtp-statsu", "no such verb: 'get-swtp-statsu'; did you mean get-swtp-status?"},
        {"xyzzy", "no such verb: 'xyzzy'; 'subsysctl help' shows all"},
        {"log debgu", "LEVEL: expected debug, info, warn, error, not 'debgu'; did you mean debug?"},
        {"doctor abc", "SERIAL: expected an integer, -2147483648 to 2147483647, not 'abc'"},
        {"--frob", "no such option: '--frob'; 'subsysctl help' shows all"},
        {"help wach", "no such verb: 'wach'; did you mean watch?"},
        {"get-swtp-status --type 1", "no such option: '--type'; 'subsysctl help get-swtp-status' shows all"},
        {"get-lcd-info --tpye=1", "no such option: '--tpye=1'; did you mean --type?"},
        {"get-lcd-info --type", "--type: 1 required N missing; --type N: -2147483648 to 2147483647."},
        {"get-lcd-info --type x", "--type: expected an integer, -2147483648 to 2147483647, not 'x'"},
        {"get-lcd-info --type 2147483648", "--type: expected an integer, -2147483648 to 2147483647, not '2147483648'"},
        {"send-icc-cmd --data 0", "--data: expected pairs of hexadecimal digits or @FILE, not '0'"},
        {"send-icc-cmd --data @/", "--data: can't read '/': Is a directory"},
        {"send-icc-cmd --data @/dev/zero", "--data: can't read '/dev/zero': more than 1 MiB"},
        {"kill-process --pid 1", "--name is required; --name TEXT: UTF-8. Required."},
        {"status --timeout 0", "--timeout: expected seconds, 0.001 to 1000000, not '0'"},
        {"status --timeout -1", "--timeout: expected seconds, 0.001 to 1000000, not '-1'"},
        {"status --timeout nan", "--timeout: expected seconds, 0.001 to 1000000, not 'nan'"},
        {"status --serial 1.5", "--serial: expected an integer, -2147483648 to 2147483647, not '1.5'"},
        {"watch --for inf", "--for: expected seconds, 0 to 1000000, not 'inf'"},
        {"watch --no-rf",
         "--no-rf requires --ims; --no-rf: With --ims: IMS indications only; takes no RF client's place."},
        {"watch --count 0", "--count: expected an integer, 1 to 2147483647, not '0'"},
    };
    for (const auto& [command, message] : cases) {
        CommandLine line;
        testing::internal::CaptureStderr();
        EXPECT_EQ(2, parse(split(command), line)) << command;
        EXPECT_EQ("subsysctl: " + message + "\n", testing::internal::GetCapturedStderr());
    }
}

// The text that just fits is the field's size less its end.
TEST(Requests, Warning_WhenAValueDoesNotFitItsField_ThenWhatArrives) {
    const auto warnings = [](const std::string& command, const std::string& option, size_t bytes) {
        CommandLine line;
        EXPECT_EQ(std::nullopt, parse({command, option, std::string(bytes, '0')}, line));
        return line.steps.at(0).request.value().warnings;
    };
    const struct {
        const char* command;
        const char* option;
        size_t bytes;
    } cases[] = {{"set-call-info", "--text1", sizeof(hal::CallInfoType::text1)},
                 {"set-call-info", "--text2", sizeof(hal::CallInfoType::text2)},
                 {"set-call-info", "--text3", sizeof(hal::CallInfoType::text3)},
                 {"set-call-info", "--text4", sizeof(hal::CallInfoType::text4)},
                 {"set-call-info", "--text5", sizeof(hal::CallInfoType::text5)},
                 {"set-call-info", "--text6", sizeof(hal::CallInfoType::text6)},
                 {"set-ims-rtp-remote-pub-ip-addr", "--ip-addr", sizeof(hal::ImsRtpPubIpAddrInfoType::ipAddr)},
                 {"send-ims-rtp-redun-signal-msg", "--msg", sizeof(hal::ImsRtpRedunSignalMsgType::msg)}};
    for (const auto& [command, option, bytes] : cases) {
        EXPECT_EQ(Words(), warnings(command, option, bytes - 1)) << option;
        const std::string size = std::to_string(bytes);
        EXPECT_EQ(
            Words{option + (" has " + size) + " bytes, more than " + std::to_string(bytes - 1) + ": it arrives empty"},
            warnings(command, option, bytes));
    }
    const size_t bytes = sizeof(hal::ImsRtpDataInfoType::data);
    EXPECT_EQ(Words(), warnings("send-ims-rtp-data", "--data", 2 * (bytes - 1)));
    EXPECT_EQ(1u, warnings("send-ims-rtp-data", "--data", 2 * bytes).size());
}

}  // namespace
}  // namespace subsysctl
