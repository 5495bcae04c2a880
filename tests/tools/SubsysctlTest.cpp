#include "tests/support/NamesFolder.h"
#include "tests/tools/Program.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

// The program itself, against a service in another process.
namespace {

using test::Process;
using test::Result;
using test::run;

// Which channel's output is kept.
constexpr const char* OUTPUT = "2>/dev/null";
constexpr const char* ERRORS = "2>&1 >/dev/null";

const std::string SERVICE = "vendor.nuvex.hardware.subsys_interface.subsys.ISubsys/default";

struct Case {
    std::string arguments;
    int code;
    std::string text;
};

void expectRun(const Case& expected, const std::string& channels = OUTPUT) {
    const Result result = run(expected.arguments, channels);
    EXPECT_EQ(expected.code, result.code) << expected.arguments;
    EXPECT_EQ(expected.text, result.text) << expected.arguments;
}

class Subsysctl : public testing::Test {
protected:
    Subsysctl() { EXPECT_TRUE(mServer.awaitOutput("\n")); }

    const test::NamesFolder mNames;
    Process mServer{{FAKE_SERVER}};
};

TEST_F(Subsysctl, Request_WhenAnswered_ThenItsLineAndCode) {
    const Case cases[] = {
        {"get-swtp-status", 0, "getSwtpStatusResponse #1 SUCCESS status=-1\n"},
        {"--serial 41 get-lcd-info", 0, "getLcdInfoResponse #41 SUCCESS lcdInfo=\"panel \\\"1\\\"\"\n"},
        {"get-lcd-info --type 1", 1, "getLcdInfoResponse #1 NOT_SUPPORTED lcdInfo=\"\"\n"},
        {"get-lcd-info --type 4", 0, "getLcdInfoResponse #1 SUCCESS lcdInfo=\"panel \\\"1\\\"\"\n"},
        {"get-lcd-info --type 1 get-swtp-status", 1,
         "getLcdInfoResponse #1 NOT_SUPPORTED lcdInfo=\"\"\ngetSwtpStatusResponse #2 SUCCESS status=-1\n"},
        {"--timeout 0.5 get-lcd-info --type 2 get-swtp-status", 124, "getSwtpStatusResponse #2 SUCCESS status=-1\n"},
        {"--json get-lcd-info get-swtp-status", 0,
         R"({"response":"getLcdInfoResponse","info":{"type":0,"serial":1,"error":0,"errorName":"SUCCESS"},"lcdInfo":"panel \"1\""}
{"response":"getSwtpStatusResponse","info":{"type":0,"serial":2,"error":0,"errorName":"SUCCESS"},"status":-1}
)"},
        {"--json send-icc-meta-cmd --id 3 --token 9 --req-id 1 --data 0aff", 0,
         R"({"callback":"onIccMetaResp","info":{"id":3,"token":9,"type":2,"result":true,"data":"0aff"}})"
         "\n"},
        {"send-icc-meta-cmd --token 9", 1, "onIccMetaResp FAILED id=0 token=9 type=2 result=false data=\"\"\n"},
        {"set-callback set-ims-ortc-callback", 0, "registered kind=\"rf\"\nregistered kind=\"ims\"\n"},
        {"get-lcd-info --type 3 get-swtp-status", 69, ""},  // the server dies, and no further verb is sent
    };
    for (const Case& each : cases) expectRun(each);
}

TEST_F(Subsysctl, Request_WhenUnansweredOrRefused_ThenTheCodeAndWhy) {
    const std::string NO_IMS_ANSWER =
        "subsysctl: set-call-info: no answer in 500.0 ms; 'subsysctl doctor 1' says why\n";
    const Case cases[] = {
        {"--timeout 0.5 get-lcd-info --type 2", 124,
         "subsysctl: get-lcd-info: no answer in 500.0 ms; 'subsysctl doctor 1' says why\n"},
        {"--timeout 0.5 set-call-info", 124, NO_IMS_ANSWER},
        {"--timeout 0.5 send-icc-meta-cmd --id -1", 124,
         "subsysctl: send-icc-meta-cmd: no answer in 500.0 ms; 'subsysctl doctor' says why\n"},
        {"get-lcd-info --type 6", 1,
         "subsysctl: get-lcd-info: the call failed: Status(-8, EX_SERVICE_SPECIFIC): '3: no'\n"},
        {"set-call-info --timeout 0.5 --text1 " + std::string(32, 'x'), 124,
         "subsysctl: set-call-info: --text1 has 32 bytes, more than 31: it arrives empty\n" + NO_IMS_ANSWER},
    };
    for (const Case& each : cases) expectRun(each, ERRORS);
}

TEST_F(Subsysctl, Output_WhenItCannotBeWritten_ThenItSaysSoAnd1) {
    for (const char* verb : {"--version", "help", "get-swtp-status"}) {
        expectRun({verb, 1, "subsysctl: the output could not be written\n"}, "2>&1 >/dev/full");
    }
}

TEST_F(Subsysctl, Json_WhenSomethingFails_ThenAnObjectOnTheOutput) {
    const Case served[] = {
        {"get-lcd-info --type 1x --json", 2,
         R"({"error":"usage","message":"--type: expected an integer, -2147483648 to 2147483647, not '1x'"})"
         "\n"},
        {"--json --timeout 0.5 send-icc-meta-cmd --id -1", 124,
         R"({"error":"noAnswer","verb":"send-icc-meta-cmd","message":"no answer in 500.0 ms","serial":1,)"
         R"("hint":"'subsysctl doctor' says why"})"
         "\n"},
        {"--json get-lcd-info --type 3", 69,
         R"({"error":"died","verb":"get-lcd-info","message":"the service has died","serial":1})"
         "\n"},
    };
    for (const Case& each : served) expectRun(each);
    mServer.wait();  // while it ends, its name is still held
    expectRun({"--json get-lcd-info", 69,
               R"({"error":"noService","verb":"get-lcd-info","message":"no such service: )" + SERVICE + " in " +
                   mNames.path().string() + R"(","hint":"'subsysctl doctor' says what runs, and where"})" + "\n"});
}

TEST_F(Subsysctl, Batch_WhenLinesAreRead_ThenAnswersInTheirOrderAndTheFirstFailuresCode) {
    std::ofstream(mNames.path() / "data", std::ios::binary) << '\0' << '\xff';
    const std::string lines =
        "printf '%s\\n' '# no verb' '' get-swtp-status 'get-lcd-info --type 1' 'get-lcd-info --json' "
        "'send-icc-meta-cmd --req-id 1 --data @" +
        (mNames.path() / "data").string() + "' 'get-lcd-info --type x' get-lcd-info | ";
    Process batch({"/bin/sh", "-c", lines + SUBSYSCTL + " --serial 5 - 2>&1"});
    EXPECT_EQ(1, batch.wait());
    EXPECT_EQ(
        "getSwtpStatusResponse #5 SUCCESS status=-1\n"
        "getLcdInfoResponse #6 NOT_SUPPORTED lcdInfo=\"\"\n"
        "subsysctl: line 5: no such option: '--json'; 'subsysctl help batch' shows what a line has\n"
        "onIccMetaResp SUCCESS id=0 token=0 type=2 result=true data=\"00ff\"\n"
        "subsysctl: line 7: --type: expected an integer, -2147483648 to 2147483647, not 'x'\n"
        "getLcdInfoResponse #8 SUCCESS lcdInfo=\"panel \\\"1\\\"\"\n",
        batch.output());
}

TEST_F(Subsysctl, Request_WhenTheServerIsStopped_Then124) {
    mServer.signal(SIGSTOP);
    for (const char* command : {"--timeout 0.2 get-swtp-status", "get-swtp-status"}) {
        const Result result = run(command, ERRORS);
        EXPECT_EQ(124, result.code);
        EXPECT_NE(std::string::npos, result.text.find("is its process stopped or busy?")) << result.text;
    }
    mServer.signal(SIGCONT);
}

TEST_F(Subsysctl, Watch_WhenCounted_ThenIndicationsInOrderAlsoThoseOfEarlierVerbs) {
    const Result result = run("--json get-lcd-info --type 5 watch --count 3", OUTPUT);
    EXPECT_EQ(0, result.code);
    const std::string now = R"(,"time":"20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d\d\dZ"\}\n)";
    const std::regex lines(
        R"(\{"response":"getLcdInfoResponse",.*\n)"
        R"(\{"indication":"sendSubsysStateChanged","state":true)" +
        now +
        R"(\{"indication":"sendiccStateChanged","info":\{"state":1,"bypass":0,"modeNum":1,"modeTypes":"07","modeValues":"ab"\})" +
        now +
        R"(\{"indication":"notifyIccPercStateChangedInd","info":\{"percTypes":\[\{"value0":1,"value1":2,"value2":3\},\{"value0":-1,"value1":0,"value2":0\}\]\})" +
        now + R"(\{"watch":"ended","indications":3,"lost":0,"seconds":.*\}\n)");
    EXPECT_TRUE(std::regex_match(result.text, lines)) << result.text;
}

TEST_F(Subsysctl, Watch_WhenTimeIsUp_ThenSummaryAnd0Or124) {
    const Result enough = run("watch --for 0.05", ERRORS);
    EXPECT_EQ(0, enough.code);
    EXPECT_NE(std::string::npos, enough.text.find(" indication in ")) << enough.text;
    EXPECT_EQ(124, run("watch --for 0.05 --count 9", OUTPUT).code);
}

TEST_F(Subsysctl, Watch_WhenInterrupted_ThenSummaryAnd0) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Process watch({SUBSYSCTL, "watch"});
        ASSERT_TRUE(watch.awaitOutput("sendSubsysStateChanged state=true"));  // written at once
        watch.signal(signal);
        EXPECT_EQ(0, watch.wait());
        EXPECT_NE(std::string::npos, watch.output().find("subsysctl: 1 indication in ")) << watch.output();
    }
}

}  // namespace
