#include "service/OsUtils.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

using hal::OsUtils;
using test::LogLine;

namespace {

const std::string ALLOWED = "vendor.dpmd";

TEST(OsUtilsTest, KillProcess_WhenPidOrNameIsInvalidOrNotListed_ThenRefusedAndTheProcessLives) {
    test::ChildProcess victim;
    const std::vector<std::pair<int32_t, std::string>> invalid = {
        {0, ALLOWED}, {-1, ALLOWED}, {INT_MIN, ALLOWED}, {victim.pid(), ""}, {0, ""}};
    const test::LogCapture log;
    std::vector<LogLine> expected;
    for (const auto& [pid, name] : invalid) {
        EXPECT_FALSE(OsUtils::killProcess(1, pid, name));
        expected.push_back(
            {ANDROID_LOG_ERROR, "OsUtils", "invalid pid [ " + std::to_string(pid) + "] or name is null"});
    }
    for (const std::string& name : {std::string("vendor.dpmd "), std::string("VENDOR.DPMD"), std::string("vendor.dpm"),
                                    std::string("vendor.dpmd\0", 12), std::string("init")}) {
        EXPECT_FALSE(OsUtils::killProcess(1, victim.pid(), name));
        expected.push_back({ANDROID_LOG_ERROR, "OsUtils", "not allowed to kill this process"});
    }
    EXPECT_EQ(log.lines(), expected);
    EXPECT_TRUE(victim.isAlive());
}

TEST(OsUtilsTest, KillProcess_WhenListed_ThenKilledAndASecondTimeReportedAsGone) {
    test::ChildProcess victim;
    const std::string pid = std::to_string(victim.pid());
    const test::LogCapture log;
    EXPECT_TRUE(OsUtils::killProcess(1, victim.pid(), ALLOWED));
    EXPECT_EQ(victim.awaitSignal(), SIGKILL);
    EXPECT_FALSE(OsUtils::killProcess(1, victim.pid(), ALLOWED));
    const LogLine killing{ANDROID_LOG_DEBUG, "OsUtils", "killing  [ " + pid + "] with name: vendor.dpmd "};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{killing,
                                                 killing,
                                                 {ANDROID_LOG_ERROR, "OsUtils",
                                                  "failed to kill [ " + pid + "] with error: No such process "}}));
}

}  // namespace
