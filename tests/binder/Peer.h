#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/binder/Echo.h"

namespace test {

/** A folder of names that only this test sees. */
class NamesFixture : public testing::Test {
protected:
    NamesFixture() {
        std::string pattern = std::filesystem::temp_directory_path() / "binder-XXXXXX";
        mFolder = mkdtemp(pattern.data());
        setenv("SUBSYS_BINDER_DIR", mFolder.c_str(), 1);
    }
    ~NamesFixture() override { std::filesystem::remove_all(mFolder); }

    std::filesystem::path mFolder;
};

/** The program of PeerMain.cpp in a process of its own, ended with this object. */
class Peer {
public:
    Peer(const char* verb, const char* name) {
        int pipes[2];
        if (pipe(pipes) != 0) abort();
        mPid = fork();
        if (mPid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(pipes[1], STDOUT_FILENO);
            close(pipes[0]);
            close(pipes[1]);
            execl(BINDER_PEER, BINDER_PEER, verb, name, nullptr);
            _exit(127);
        }
        close(pipes[1]);
        char ready = 0;
        mIsReady = read(pipes[0], &ready, 1) == 1;
        close(pipes[0]);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() { end(); }

    [[nodiscard]] bool isReady() const { return mIsReady; }
    [[nodiscard]] pid_t pid() const { return mPid; }
    /** Returns when none of its threads runs any more. */
    void stop() const {
        kill(mPid, SIGSTOP);
        waitpid(mPid, nullptr, WUNTRACED);
    }
    void resume() const { kill(mPid, SIGCONT); }
    /** Its exit code, or minus the signal that ended it. */
    int end() {
        if (mPid == 0) return 0;
        kill(mPid, SIGKILL);
        return await();
    }
    int await() {
        int status = 0;
        waitpid(mPid, &status, 0);
        mPid = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t mPid = 0;
    bool mIsReady = false;
};

}  // namespace test
