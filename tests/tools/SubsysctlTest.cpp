#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <string>

// The program itself, against a service in another process.
namespace {

using test::Process;

struct Result {
    int code;
    std::string text;
};

// Which channel's output is kept.
constexpr const char* OUTPUT = "2>/dev/null";
constexpr const char* ERRORS = "2>&1 >/dev/null";

Result run(const std::string& arguments, const std::string& channels = OUTPUT) {
    Process process({"/bin/sh", "-c", std::string(SUBSYSCTL) + " " + arguments + " " + channels});
    const int code = process.wait();
    return {code, process.output()};
}

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
        {"--timeout 0.1 get-lcd-info --type 2 get-swtp-status", 124, "getSwtpStatusResponse #2 SUCCESS status=-1\n"},
        {"--json get-lcd-info get-swtp-status", 0,
         R"({"response":"getLcdInfoResponse","info":{"type":0,"serial":1,"error":0},"lcdInfo":"panel \"1\""}
{"response":"getSwtpStatusResponse","info":{"type":0,"serial":2,"error":0},"status":-1}
)"},
        {"--json send-icc-meta-cmd --id 3 --token 9 --req-id 1 --data 0aff", 0,
         R"({"callback":"onIccMetaResp","info":{"id":3,"token":9,"type":2,"result":true,"data":"0aff"}})"
         "\n"},
        {"send-icc-meta-cmd --token 9", 1, "onIccMetaResp FAILED id=0 token=9 type=2 result=false data=\"\"\n"},
        {"set-callback set-ims-ortc-callback", 0, ""},
    };
    for (const Case& each : cases) expectRun(each);
}

TEST_F(Subsysctl, Request_WhenUnansweredOrRefused_ThenTheCodeAndWhy) {
    const Case cases[] = {
        {"--timeout 0.1 get-lcd-info --type 2", 124,
         "subsysctl: getLcdInfo: no answer in 0.1 s; is the component missing or silent, or has another client taken "
         "over "
         "the callback?\n"},
        {"--timeout 0.1 set-call-info", 124,
         "subsysctl: setCallInfo: no answer in 0.1 s; is the IMS ORTC component missing or silent, or do two other "
         "clients hold both places?\n"},
        {"--timeout 0.1 send-icc-meta-cmd --id -1", 124,
         "subsysctl: sendIccMetaCmd: no answer in 0.1 s; is the component missing or silent?\n"},
        {"get-lcd-info --type 6", 1,
         "subsysctl: getLcdInfo: the call failed: Status(-8, EX_SERVICE_SPECIFIC): '3: no'\n"},
    };
    for (const Case& each : cases) expectRun(each, ERRORS);
}

TEST_F(Subsysctl, Request_WhenTheServerDies_Then69AndNoFurtherVerb) {
    expectRun({"get-lcd-info --type 3 get-swtp-status", 69, ""});
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
    expectRun({"--json get-lcd-info --type 5 watch --count 3", 0,
               R"({"response":"getLcdInfoResponse","info":{"type":0,"serial":1,"error":0},"lcdInfo":"panel \"1\""}
{"indication":"sendSubsysStateChanged","state":true}
{"indication":"sendiccStateChanged","info":{"state":1,"bypass":0,"modeNum":1,"modeTypes":"07","modeValues":"ab"}}
{"indication":"notifyIccPercStateChangedInd","info":{"percTypes":[{"value0":1,"value1":2,"value2":3},{"value0":-1,"value1":0,"value2":0}]}}
)"});
}

TEST_F(Subsysctl, Watch_WhenTimeIsUp_ThenSummaryAnd0Or124) {
    const Result enough = run("watch --for 0.05", ERRORS);
    EXPECT_EQ(0, enough.code);
    EXPECT_NE(std::string::npos, enough.text.find(" indication in 0.1 s")) << enough.text;
    EXPECT_EQ(124, run("watch --for 0.05 --count 9").code);
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
