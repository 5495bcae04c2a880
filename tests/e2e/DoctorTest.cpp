#include "tests/e2e/System.h"

#include <sys/wait.h>

// A fault is prepared, and the doctor's first line names it.
namespace test {
namespace {

constexpr int FAULT = 1;

class Doctor : public System {
protected:
    // It is the first line that counts.
    static void expectFault(const std::string& arguments, const std::string& pattern) {
        expectRun({"doctor" + arguments, FAULT, {"^fault: " + pattern}});
    }
    [[nodiscard]] std::string daemon() const { return "subsysd, pid " + std::to_string(mDaemon->pid()) + ", "; }
};

TEST_F(Doctor, Look_WhenAllIsWell_ThenZero) {
    start();
    expectRun({"get-icc-state", 0, {}});
    expectRun({"doctor", 0, {"nothing is wrong: " + daemon() + "serves .* in " + mNames.path().string() + "\n"}});
    expectRun({"--json doctor 1", 0, {R"("finding":"answered","level":"note","text":"getIccState #1 was answered )"}});
    expectFault(" 7", "there is no request #7 in the recording; ");
}

TEST_F(Doctor, Look_WhenThePluginIsMissing_ThenItsFileAndOtherRequestsWork) {
    mDevice.remove("/vendor/lib64/libiccapis.so");
    start();
    expectRun({"send-icc-cmd --req-id 5", 1, {"GENERIC_FAILURE"}});
    expectLog("IccProxy: loadIccApisPlugin failed");
    expectRun({"get-lcd-info", 0, {"SUCCESS"}});
    expectFault("", "plugin libiccapis: " + mDevice.path().string() + "/vendor/lib64/libiccapis.so is missing; ");
}

TEST_F(Doctor, Look_WhenThePluginIsCut_ThenItIsNotOpen) {
    std::filesystem::resize_file(mDevice.place("/vendor/lib64/libiccapis.so"), 9000);
    start();
    expectRun({"get-icc-state", 1, {}});
    expectFault("", "a request needed the plugin: libiccapis, /vendor/lib64/libiccapis.so, not open; ");
}

TEST_F(Doctor, Look_WhenTheFolderOfNamesIsDeleted_ThenToRestart) {
    start();
    std::filesystem::remove_all(mNames.path());
    const std::string pid = std::to_string(mDaemon->pid());
    expectRun({"doctor", FAULT, {"\nfault: nobody serves .*; process " + pid + " was started for this folder; "}});
    EXPECT_FALSE(std::filesystem::exists(mNames.path()));
}

TEST_F(Doctor, Look_WhenAComponentIsSilent_ThenItsRequest) {
    script("ims on setCallInfo silent");
    start();
    expectRun({"--timeout 1.1 set-call-info set-call-info", NO_ANSWER, {}});
    expectFault("", "setCallInfo #1 waits for [0-9.]+ s, and 1 more of its kind do: its component has not replied; ");
    expectFault(" 2", "setCallInfo #2 waits for [0-9.]+ s: its component has not replied; ");
}

TEST_F(Doctor, Look_WhenThePluginHangs_ThenItsFunctionAndThread) {
    script("icc on iccSendReqSync delay 60000");
    start();
    expectRun({"--timeout 1.1 send-icc-cmd --req-id 5", NO_ANSWER, {}});
    const char* const where =
        "^note: the plugin has not returned from iccSendReqSync for [0-9.]+ s [(]thread [0-9]+, Handl";
    expectRun({"doctor", 0, {where, "\nnote: sendIccCmd #1 waits for .*: it is inside the plugin; "}});
}

TEST_F(Doctor, Look_WhenTheClientIsKilled_ThenItsAnswerReachedNobody) {
    script("icc on iccSendReqSync delay 1000");
    start();
    Client client("--serial 9 send-icc-cmd --req-id 5");
    expectLog("iccapis: iccSendReqSync");
    client.end();
    expectLog("Client died. Cleaning up callbacks");
    expectLog("sendIccCmd respCb");
    expectRun({"set-call-info", 0, {}});  // the looper is done with the answer before it
    expectFault("", "sendIccCmd #9 was answered [0-9.]+ .?s ago, but the RF client ended [0-9.]+ .?s ago; ");
}

TEST_F(Doctor, Look_WhenTheDaemonIsStopped_ThenItsProcess) {
    start();
    mDaemon->signal(SIGSTOP);
    waitpid(mDaemon->pid(), nullptr, WUNTRACED);
    expectFault("", daemon() + "is stopped by a signal; let it go on: kill -CONT " + std::to_string(mDaemon->pid()));
    mDaemon->signal(SIGCONT);
}

TEST_F(Doctor, Look_WhenTheDaemonIsGone_ThenWhatItLeft) {
    script("ims on setCallInfo silent");
    start();
    expectRun({"--timeout 0.1 set-call-info", NO_ANSWER, {}});
    const std::string gone = daemon();
    Process refused(wordsOf(SUBSYSD, ""));
    EXPECT_EQ(refused.wait(), EXIT_FAILURE);
    mDaemon->end();
    expectFault("", "nobody serves .*: " + gone + "has ended; requests unanswered: 1; subsysctl requests lists them; ");
    expectFault(" 7", "nobody serves .*: " + gone + "has ended; requests unanswered: 1; ");
    start();
}

}  // namespace
}  // namespace test
