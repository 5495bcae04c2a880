#pragma once

#include "binder/tests/Echo.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace test {

/** A folder of names that only this test sees. */
class NamesFixture : public testing::Test {
protected:
    const NamesFolder mNames;
    const std::filesystem::path& mFolder = mNames.path();
};

/** The program of PeerMain.cpp in a process of its own, ended with this object. */
class Peer : public Process {
public:
    Peer(const char* verb, const char* name) : Process({BINDER_PEER, verb, name}), mIsReady(awaitOutput("ready")) {}

    [[nodiscard]] bool isReady() const { return mIsReady; }
    /** Returns when none of its threads runs any more. */
    void stop() const {
        signal(SIGSTOP);
        waitpid(pid(), nullptr, WUNTRACED);
    }
    void resume() const { signal(SIGCONT); }

private:
    const bool mIsReady;
};

}  // namespace test
