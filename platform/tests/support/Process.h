#pragma once

#include <signal.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace test {

// A program that runs, with its output kept. Killed with the object at the latest.
class Process {
public:
    // The first argument is the program's path.
    explicit Process(const std::vector<std::string>& arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // True once the program's output (stdout and stderr together) holds the text; false when it ends without.
    [[nodiscard]] bool awaitOutput(const std::string& text);
    void signal(int number) const {
        if (mPid > 0) kill(mPid, number);
    }
    // Kills it and returns when it is gone.
    void end() {
        signal(SIGKILL);
        wait();
    }
    // Waits for the end. The exit code, or 128 and the number of the signal that ended it.
    int wait();
    [[nodiscard]] pid_t pid() const { return mPid; }
    [[nodiscard]] const std::string& output() const { return mOutput; }

private:
    [[nodiscard]] bool readMore();

    pid_t mPid = -1;
    int mOut = -1;
    std::string mOutput;
};

}  // namespace test
