#pragma once

#include "tests/support/DeviceFolder.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

// The whole system as an integrator runs it: the daemon on the simulated device, its clients, each a process.
namespace test {

inline constexpr int NO_ANSWER = 124;

// The arguments have no blanks inside.
inline std::vector<std::string> wordsOf(const std::string& program, const std::string& arguments) {
    std::istringstream words(program + " " + arguments);
    return {std::istream_iterator<std::string>(words), {}};
}

class Client : public Process {
public:
    explicit Client(const std::string& arguments) : Process(wordsOf(SUBSYSCTL, arguments)) {}
};

// A client that runs to its end: its exit code, and what its output holds.
struct Command {
    std::string arguments;
    int code;
    std::vector<std::string> patterns;
};

inline void expectPatterns(const Process& process, const std::vector<std::string>& patterns) {
    for (const std::string& pattern : patterns) EXPECT_THAT(process.output(), testing::ContainsRegex(pattern));
}

inline void expectRun(const Command& command) {
    Client client(command.arguments);
    EXPECT_EQ(client.wait(), command.code) << command.arguments << '\n' << client.output();
    expectPatterns(client, command.patterns);
}

// The device is a copy of the built one, which a test may change before it starts the daemon.
class System : public testing::Test {
protected:
    System() { std::filesystem::copy(DEVICE, mDevice.path(), std::filesystem::copy_options::recursive); }

    void start() {
        mDaemon.emplace(wordsOf(SUBSYSD, "--log-level debug --load " SIMVS " --load " SIMIMS));
        ASSERT_TRUE(mDaemon->awaitOutput("subsysd: serving ")) << mDaemon->output();
    }
    // Adds a line to the simulator's scenario.
    void script(const std::string& line) const {
        std::ofstream(mDevice.place("/simulator/scenario"), std::ios::app) << "\n" << line << "\n";
    }
    void expectLog(const std::string& text) { EXPECT_TRUE(mDaemon->awaitOutput(text)) << mDaemon->output(); }
    void TearDown() override {
        mDaemon->signal(SIGTERM);
        EXPECT_EQ(mDaemon->wait(), 0) << mDaemon->output();
    }

    const NamesFolder mNames;
    const DeviceFolder mDevice;
    std::optional<Process> mDaemon;
};

}  // namespace test
