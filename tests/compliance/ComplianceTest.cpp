#include "tests/support/DeviceFolder.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

// The program as an author calls it: what keeps the rules passes, and of each breach one line says what it is.
namespace {

using test::Process;
using testing::ContainsRegex;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool HAS_ASAN = true;
#else
constexpr bool HAS_ASAN = false;
#endif

struct Breach {
    const char* fault;
    const char* line;  // a regular expression
};

// The program on its way.
class Check : public Process {
public:
    explicit Check(std::vector<std::string> arguments)
        : Process((arguments.insert(arguments.begin(), {COMPLIANCE, "--limit", "1"}), arguments)) {}

    void expect(int code, const std::string& pattern) {
        EXPECT_EQ(wait(), code) << output();
        EXPECT_THAT(output(), ContainsRegex(pattern));
    }
};

void expectRun(int code, const std::vector<std::string>& arguments, const std::string& pattern) {
    Check(arguments).expect(code, pattern);
}

// All at once, since most of the time they wait.
template <size_t count>
void expectBreaches(
    const Breach (&breaches)[count], const std::vector<std::string>& arguments,
    const std::function<void()>& prepare = [] {}) {
    std::deque<Check> checks;
    setenv("TSAN_OPTIONS", "report_bugs=0", 1);  // some are races, too
    for (const auto& breach : breaches) {
        setenv("FAULT", breach.fault, 1);
        prepare();
        checks.emplace_back(arguments);
    }
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(breaches[i].fault);
        checks[i].expect(1, std::string("FAILED  ") + breaches[i].line + "[^\n]*; see docs/");
    }
}

std::string bytesOf(const char* file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(Compliance, Rules_WhenTheSimulatorIsChecked_ThenItKeepsThem) {
    expectRun(0, {"plugin", SIM_PLUGIN}, "events: ICC_EVENT_PERC_CHANGED: [1-9] came[^~]* 0 failed, 1 not checked\n");
    expectRun(0, {"component", SIM_IMS}, "registers type 21: an ImsOrtcComponent\n[^~]* 0 failed");
    expectRun(0, {"component", SIM_VS}, "ok  VsComponent: says that it is ready\n[^~]* 0 failed");
    const test::NamesFolder names;
    Process daemon({SUBSYSD, "--device", DEVICE, "--load", SIM_IMS});
    ASSERT_TRUE(daemon.awaitOutput("serving"));
    expectRun(0, {"service"}, "not checked  RF clients: it takes [^~]*\n26 ok, 0 failed, 3 not checked\n");
    expectRun(0, {"--json", "service", "--intrusive"}, R"(\{"ok":50,"failed":0,"notChecked":0\})");
}

TEST(Compliance, File_WhenNoLibraryOfThisMachine_ThenOneLineSaysWhy) {
    const test::DeviceFolder folder;
    const std::string good = bytesOf(SIM_PLUGIN);
    std::string foreign = good;
    foreign[18] = 2;  // the machine
    const struct {
        std::string bytes;
        const char* line;
    } cases[] = {
        {"", "FAILED  file: a library of this machine[^\n]*no file that can be read"},
        {"text", "FAILED  file: a library of this machine[^\n]*no ELF file"},
        {good.substr(0, 30), "FAILED  file: a library of this machine[^\n]*without a whole header"},
        {foreign, "FAILED  file: a library of this machine[^\n]*machine 2"},
        {good.substr(0, 4096), "FAILED  file: complete segments[^\n]*ends behind the file's 4096 bytes"},
    };
    for (const auto& [bytes, line] : cases) {
        folder.write("libplugin.so", bytes);
        expectRun(1, {"plugin", folder.place("libplugin.so")}, line);
    }
    expectRun(1, {"plugin", folder.path()}, "no file that can be read");
    expectRun(1, {"plugin", UNLINKED_PLUGIN}, "FAILED  exports iccGetHwId[^\n]*C\\+\\+ linkage: _Z10iccGetHwIdv");
    expectRun(1, {"plugin", UNLINKED_PLUGIN}, "FAILED  file: undefined symbols[^\n]*missingFromEveryLibrary");
    expectRun(1, {"plugin", SIM_IMS}, "FAILED  exports something[^\n]*none");
}

TEST(Compliance, Plugin_WhenItBreaksARule_ThenTheLineNamesIt) {
    const Breach breaches[] = {
        {"hang", "iccGetHwId: plain[^\n]*took too long"},
        {"quit", "iccGetHwId: plain[^\n]*the process ended"},
        {"crash", "enableIccUartLog: plain[^\n]*Aborted"},
        {"throw", "iccReloadConfig: plain[^\n]*no config"},
        {"overrun", "iccSendReqSync: one byte of answer: expected at most 1 bytes written"},
        {"slow", "iccSendReqSync: no request: expected a return within its time-out of 100 ms"},
        {"late", "iccSendReqSync: no late answer"},
        {"context", "events: ICC_EVENT_STATE_CHANGED: expected the context"},
        {"noData", "events: ICC_EVENT_PERC_CHANGED[^\n]*an event without data"},
        {"short", "events: ICC_EVENT_STATE_CHANGED: expected at least the 20 bytes[^\n]*seen: 19"},
        {"modes", "events: ICC_EVENT_STATE_CHANGED: expected modeNum of at most 7; seen: 8"},
        {"entries", "events: ICC_EVENT_PERC_CHANGED: expected size of at most 10; seen: 11"},
        {"type", "events: no other type[^\n]*type 9"},
        {"end", "the end of the process"},
    };
    expectBreaches(breaches, {"plugin", BROKEN_PLUGIN});
}

TEST(Compliance, Component_WhenItBreaksARule_ThenTheLineNamesIt) {
    const Breach breaches[] = {
        {"nothing", "adds components"},
        {"crash", "starts[^\n]*Aborted"},
        {"drops", "ImsOrtcComponent::setCallInfo: expected an answer; seen: the reply was dropped"},
        {"keeps", "ImsOrtcComponent::setCallInfo: expected an answer; seen: none in 1000 ms"},
        {"twice", "ImsOrtcComponent::setCallInfo: expected one answer; seen: a second one"},
        {"holds", "ImsOrtcComponent::setCallInfo: expected a return within 300 ms"},
        {"hangs", "ImsOrtcComponent::setCallInfo[^\n]*took too long"},
        {"noValue", "ImsOrtcComponent::sendImsRtpRedunSignalMsg: expected a value"},
        {"noRecord", "event NotifyOrtcStatus: expected an object with the record; seen: none"},
        {"neverReady", "VsComponent: says that it is ready: expected an Integer 1"},
    };
    expectBreaches(breaches, {"component", BROKEN_COMPONENT});
    setenv("FAULT", "smallRecord", 1);
    const char* const line = HAS_ASAN ? "FAILED  event NotifyOrtcStatus: expected a record of 20 bytes"
                                      : "not checked  event NotifyOrtcStatus: [^\n]*no AddressSanitizer";
    expectRun(HAS_ASAN ? 1 : 0, {"component", BROKEN_COMPONENT}, line);
}

TEST(Compliance, Service_WhenItBreaksARule_ThenTheLineNamesIt) {
    const Breach breaches[] = {
        {"status", "request sendIccMetaCmd: expected success of the call"},
        {"noAnswer", "request killProcess: expected an answer; seen: none"},
        {"twice", "request killProcess: expected one answer; seen: 2"},
        {"header", "request killProcess: expected type 0"},
        {"error", "request killProcess: expected an error in 0..9; seen: 12"},
        {"metaToRf", "RF clients: a meta command is its caller's: expected no answer to the RF client"},
        {"firstClient", "RF clients: a new one takes the place: expected one answer to the new client"},
        {"clear", "RF clients: a null callback clears: expected no answer"},
        {"noState", "RF clients: one follows a dead one: expected sendSubsysStateChanged"},
        {"thirdIms", "IMS clients: a third is ignored: expected no answer to a third client"},
        {"deadIms", "IMS clients: one follows a dead one: expected a place for the next client"},
    };
    std::deque<test::NamesFolder> names(1);
    std::deque<Process> services;
    expectRun(1, {"service"}, "FAILED  served: expected an ISubsys called [^\n]*; seen: none");
    expectBreaches(breaches, {"service", "--intrusive"}, [&] {
        names.emplace_back();
        ASSERT_TRUE(services.emplace_back(std::vector<std::string>{BROKEN_SERVICE}).awaitOutput("serving"));
    });
}

}  // namespace
