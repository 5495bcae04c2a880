#include "tests/support/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace test {

Process::Process(const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
    mOut = ends[0];
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    const int error = posix_spawn(&mPid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error != 0) throw std::runtime_error("posix_spawn " + arguments[0]);
}

Process::~Process() {
    end();
    close(mOut);
}

bool Process::readMore() {
    char buffer[4096];
    const ssize_t count = read(mOut, buffer, sizeof(buffer));
    if (count > 0) mOutput.append(buffer, static_cast<size_t>(count));
    return count > 0;
}

bool Process::awaitOutput(const std::string& text) {
    while (mOutput.find(text) == std::string::npos) {
        if (!readMore()) return false;
    }
    return true;
}

int Process::wait() {
    while (readMore()) {
    }
    if (mPid <= 0) return -1;
    int status = 0;
    waitpid(mPid, &status, 0);
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace test
