#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace test {

// A child process that runs the body and then waits to be killed; it does not outlive the test. A body that starts
// threads wants a test that has none yet.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<void()>& body = [] {}) : mPid(fork()) {
        if (mPid != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        body();
        for (;;) pause();
    }
    ~ChildProcess() { end(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Kills it and returns when it is gone.
    void end() {
        if (!mReaped) kill(mPid, SIGKILL);
        (void)awaitSignal();
    }
    [[nodiscard]] pid_t pid() const { return mPid; }
    [[nodiscard]] bool isAlive() const { return waitpid(mPid, nullptr, WNOHANG) == 0; }
    // Waits for the end of the process; the signal that ended it, or 0.
    int awaitSignal() {
        if (!mReaped) waitpid(mPid, &mStatus, 0);
        mReaped = true;
        return WIFSIGNALED(mStatus) ? WTERMSIG(mStatus) : 0;
    }

private:
    const pid_t mPid;
    int mStatus = 0;
    bool mReaped = false;
};

}  // namespace test
