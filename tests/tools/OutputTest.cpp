#include "tools/Output.h"

#include "tests/support/Process.h"
#include "tools/Client.h"
#include "tools/Table.h"
#include "tools/Text.h"

#include <stubs/Table.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>

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
    Output(out, out, {json, colour}).print(event);
    const std::string text = out.str();
    EXPECT_EQ(text.size() - 1, text.find('\n')) << text;
    return text.substr(0, text.size() - 1);
}

const Json LCD = callJson<ISubsysResponse, ISubsysResponse::TRANSACTION_getLcdInfoResponse>(
    "response", SubsysResponseInfo{0, 7, SUBSYS_Errno::NOT_SUPPORTED}, std::string("a\"b\n\x7f\xc2\x9b"));
const Json PERCEPTION = callJson<ISubsysIndication, ISubsysIndication::TRANSACTION_notifyIccPercStateChangedInd>(
    "indication", IccPerceptionInfo{{{1, -2, 3}, {}}});

TEST(Output, Text_WhenRecordsAreNestedOrBytesNotPrintable_ThenOneReadableLine) {
    EXPECT_EQ("getLcdInfoResponse #7 NOT_SUPPORTED lcdInfo=\"a\\\"b\\n\\x7f\\xc2\\x9b\"", printed(LCD, false));
    EXPECT_EQ(
        "indication notifyIccPercStateChangedInd percTypes=[{value0=1 value1=-2 value2=3}, "
        "{value0=0 value1=0 value2=0}]",
        printed(PERCEPTION, false));
}

TEST(Output, Colour_WhenWanted_ThenOnlyInText) {
    EXPECT_NE(std::string::npos, printed(LCD, false, true).find("#7 \033[31mNOT_SUPPORTED\033[0m lcdInfo"));
    EXPECT_EQ(std::string::npos, printed(LCD, true, true).find('\033'));
}

TEST(Output, Progress_WhenOnATerminal_ThenTakenAwayBeforeTheNextLine) {
    std::ostringstream out, err;
    Output(out, err, {}).progress("half");
    EXPECT_EQ("", err.str());
    Output output(out, err, {.progress = true, .textWidth = 40});
    output.progress(std::string(50, 'x'));
    output.print(LCD);
    output.report(errorJson("usage", "", "\033no"));
    EXPECT_EQ("\r\033[K" + std::string(39, 'x') + "\r\033[Ksubsysctl: \\x1bno\n", err.str());
}

// The service may hold a dead process for alive, for a moment.
TEST(Client, InDump_WhenOfEachKind_ThenOnlyALivingProcessIsAnother) {
    test::Process gone({"/bin/true"}), other({"/bin/sleep", "600"});
    const pid_t dead = gone.pid();
    gone.wait();
    const auto line = [](pid_t pid, const char* state) {
        return "uptime: 1 ms\nrf.response: pid " + std::to_string(pid) + state + "\nrf.indication: none\n";
    };
    const std::pair<std::string, Client::Kind> cases[] = {{"", Client::UNKNOWN},
                                                          {"rf.response: none\n", Client::NONE},
                                                          {line(getpid(), ", alive"), Client::SELF},
                                                          {line(other.pid(), ", alive"), Client::OTHER},
                                                          {line(other.pid(), ", dead"), Client::NONE},
                                                          {line(dead, ", alive"), Client::NONE}};
    for (const auto& [state, kind] : cases) EXPECT_EQ(kind, clientIn(state, RF_PLACE).kind) << state;
}

TEST(Table, Print_WhenTooWide_ThenBlocksThatFit) {
    Table table({"NAME", "WHERE"});
    table.add({"getLcdInfo", "component for 4.1 s, plugin for 3 s"});
    std::ostringstream wide, narrow;
    table.print(wide, 47);
    table.print(narrow, 30);
    EXPECT_EQ("NAME        WHERE\ngetLcdInfo  component for 4.1 s, plugin for 3 s\n", wide.str());
    EXPECT_EQ("NAME   getLcdInfo\nWHERE  component for 4.1 s,\n       plugin for 3 s\n\n", narrow.str());
}

TEST(Text, Nearest_WhenMisspelled_ThenTheOneThatIsMeant) {
    const std::string known[] = {"watch", "trace", "get-icc-state", "status"};
    const std::pair<const char*, const char*> cases[] = {{"wacht", "watch"},  {"traces", "trace"},
                                                         {"state", "status"}, {"get-icc-sate", "get-icc-state"},
                                                         {"x", ""},           {"", ""}};
    for (const auto& [word, meant] : cases) EXPECT_EQ(meant, nearest(word, known)) << word;
}

TEST(Text, Timestamp_WhenWritten_ThenUtcWithMilliseconds) {
    using Time = std::chrono::system_clock::time_point;
    EXPECT_EQ("2001-09-09T01:46:40.007Z", timestamp(Time(std::chrono::milliseconds(1'000'000'000'007))));
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
