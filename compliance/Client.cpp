#include "compliance/Client.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace compliance {

// ---- What the callbacks were told

void Inbox::put(Call call) {
    const std::lock_guard lock(mMutex);
    mCalls.push_back(std::move(call));
    mChanged.notify_all();
}

std::vector<Call> Inbox::find(const Matches& matches) const {
    const std::lock_guard lock(mMutex);
    std::vector<Call> found;
    std::copy_if(mCalls.begin(), mCalls.end(), std::back_inserter(found), matches);
    return found;
}

bool Inbox::await(const Matches& matches, std::chrono::milliseconds limit) const {
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, limit, [&] { return std::any_of(mCalls.begin(), mCalls.end(), matches); });
}

bool isAnswer(const Call& call) {
    return call.method.ends_with("Response");
}

// ---- The connection

std::shared_ptr<interface::ISubsys> connect(const std::string& name, std::chrono::milliseconds limit) {
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    const auto end = std::chrono::steady_clock::now() + limit;
    ndk::SpAIBinder binder;
    do {
        binder.set(AServiceManager_checkService(name.c_str()));
    } while (!binder.get() && AServiceManager_isDeclared(name.c_str()) && std::chrono::steady_clock::now() < end);
    return interface::ISubsys::fromBinder(binder);
}

// ---- A client in a process of its own

ClientProcess::ClientProcess(const std::string& kind, const std::string& service) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    std::string program = "/proc/self/exe";
    std::string verb = "client";
    std::string words[] = {kind, service};
    char* const argv[] = {program.data(), verb.data(), words[0].data(), words[1].data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const int error = posix_spawn(&mPid, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    mSigns = ends[0];
    char sign = 0;
    mIsRegistered = error == 0 && read(mSigns, &sign, 1) == 1;
}

ClientProcess::~ClientProcess() {
    kill();
    close(mSigns);
}

bool ClientProcess::awaitAnswer(std::chrono::milliseconds limit) {
    pollfd signs{mSigns, POLLIN, 0};
    char sign = 0;
    return poll(&signs, 1, static_cast<int>(limit.count())) > 0 && read(mSigns, &sign, 1) == 1;
}

void ClientProcess::kill() {
    if (mPid <= 0) return;
    ::kill(mPid, SIGKILL);
    waitpid(std::exchange(mPid, -1), nullptr, 0);
}

int runClient(const std::string& kind, const std::string& service) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const auto server = connect(service, std::chrono::seconds(5));
    if (server == nullptr) return EXIT_FAILURE;
    const Client client;
    const auto status = kind == "ims" ? server->setImsOrtcCallback(client.imsResponse, client.imsIndication)
                                      : server->setCallback(client.response, client.indication);
    if (!status.isOk() || write(STDOUT_FILENO, "r", 1) != 1) return EXIT_FAILURE;
    while (!client.inbox->await(isAnswer, std::chrono::hours(1))) {
    }
    if (write(STDOUT_FILENO, "a", 1) != 1) return EXIT_FAILURE;
    for (;;) pause();
}

}  // namespace compliance
