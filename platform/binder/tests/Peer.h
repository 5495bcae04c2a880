#pragma once

#include "binder/tests/Echo.h"
#include "tests/support/NamesFolder.h"
#include "tests/support/Process.h"

#include <android/binder_process.h>
#include <device/LoopThread.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace test {

/** A folder of names that only this test sees. */
class NamesFixture : public testing::Test {
protected:
    const NamesFolder mNames;
    const std::filesystem::path& mFolder = mNames.path();
};

/** While it lives, this process gets no new descriptor. */
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &mLimit);
        const rlimit none{0, mLimit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &mLimit); }

private:
    rlimit mLimit{};
};

/** The thread of a message loop that always has more to run. */
struct BusyLoop : device::LoopThread {
    BusyLoop() { hasMore = true; }
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

/** With a server in another process, and threads of this one. */
class ServerFixture : public NamesFixture {
protected:
    explicit ServerFixture(const char* verb = "serve", bool hasPool = true) : mServer(verb, NAME) {
        ABinderProcess_setThreadPoolMaxThreadCount(4);
        if (hasPool) ABinderProcess_startThreadPool();
        EXPECT_TRUE(mServer.isReady());
        mService = service(NAME);
    }

    static constexpr const char* NAME = "test.IEcho/default";
    Peer mServer;
    ndk::SpAIBinder mService;
};

}  // namespace test
