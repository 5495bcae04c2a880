#include "compliance/Checks.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

namespace compliance {

namespace {

using Json = nlohmann::json;

// A check that has begun, as the parent knows it.
struct OpenCheck {
    size_t index = 0;
    std::string name;
    std::string page;
    bool isEnd = false;
};

void sendLine(int out, const Json& message) {
    const std::string line = message.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n';
    for (size_t sent = 0; sent < line.size();) {
        const ssize_t count = write(out, line.data() + sent, line.size() - sent);
        if (count <= 0) _exit(EXIT_FAILURE);  // nobody reads
        sent += static_cast<size_t>(count);
    }
}

}  // namespace

// ---- The child's side

Checks::Checks(int out, size_t done, std::set<size_t> fatal) : mOut(out), mDone(done), mFatal(std::move(fatal)) {}

void Checks::check(const std::string& name, const char* page, const Body& body) {
    if (mNext++ < mDone) return;
    begin(mNext - 1, name, page);
    end(body());
}

bool Checks::prepare(const std::string& name, const char* page, const Body& body) {
    const size_t index = mNext++;
    if (mFatal.contains(index)) return false;
    begin(index, name, page);
    const Verdict verdict = body();
    end(verdict);
    return verdict.kind == Verdict::OK;
}

void Checks::checkEnd(const std::string& name, const char* page) {
    if (mNext++ >= mDone) begin(mNext - 1, name, page, true);
}

void Checks::begin(size_t index, const std::string& name, const char* page, bool isEnd) {
    sendLine(mOut, {{"index", index}, {"name", name}, {"page", page}, {"isEnd", isEnd}});
}

void Checks::end(const Verdict& verdict) {
    sendLine(mOut, {{"kind", verdict.kind}, {"expected", verdict.expected}, {"seen", verdict.seen}});
}

// ---- The parent's side

class ChildProcess {
public:
    ChildProcess(const Program& program, size_t done, const std::set<size_t>& fatal);
    ~ChildProcess() { close(mIn); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next line that it sent; nothing when it has ended or is silent for too long.
    std::optional<Json> receive(std::chrono::milliseconds limit);
    // Waits for its end, which it brings about where the process was silent. What is wrong with that end, or "".
    std::string awaitEnd();

private:
    [[noreturn]] static void run(const Program& program, int out, size_t done, const std::set<size_t>& fatal);

    int mIn = -1;
    pid_t mPid = -1;
    std::string mReceived;
    bool mIsSilent = false;
};

ChildProcess::ChildProcess(const Program& program, size_t done, const std::set<size_t>& fatal) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    mIn = ends[0];
    mPid = fork();
    if (mPid < 0) throw std::runtime_error("no process");
    if (mPid == 0) run(program, ends[1], done, fatal);
    close(ends[1]);
}

void ChildProcess::run(const Program& program, int out, size_t done, const std::set<size_t>& fatal) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(STDERR_FILENO, STDOUT_FILENO);  // the report alone stands on stdout
    Checks checks(out, done, fatal);
    program(checks);
    _exit(EXIT_SUCCESS);
}

std::optional<Json> ChildProcess::receive(std::chrono::milliseconds limit) {
    size_t length = 0;
    while ((length = mReceived.find('\n')) == std::string::npos) {
        pollfd in{mIn, POLLIN, 0};
        mIsSilent = poll(&in, 1, static_cast<int>(limit.count())) == 0;
        char part[4096];
        const ssize_t count = mIsSilent ? 0 : read(mIn, part, sizeof(part));
        if (count <= 0) return std::nullopt;
        mReceived.append(part, static_cast<size_t>(count));
    }
    Json line = Json::parse(mReceived.substr(0, length));
    mReceived.erase(0, length + 1);
    return line;
}

std::string ChildProcess::awaitEnd() {
    if (mIsSilent) kill(mPid, SIGKILL);
    int status = 0;
    waitpid(mPid, &status, 0);
    if (mIsSilent) return "it took too long";
    if (WIFSIGNALED(status)) return std::string("the process was ended by ") + strsignal(WTERMSIG(status));
    if (WEXITSTATUS(status) != 0) return "the process ended with exit code " + std::to_string(WEXITSTATUS(status));
    return "";
}

// ---- A run

namespace {

class Run {
public:
    Run(Report& report, std::chrono::milliseconds limit, const Program& program)
        : mReport(report), mLimit(limit), mProgram(program) {}

    // Makes the checks that are left, as far as one process comes. False when nothing is left.
    bool runProcess();

private:
    void take(const Json& line);
    bool takeFault(const std::string& fault, bool hasProgress);
    void report(const Verdict& verdict);

    Report& mReport;
    const std::chrono::milliseconds mLimit;
    const Program& mProgram;
    size_t mDone = 0;
    std::set<size_t> mFatal;
    OpenCheck mCheck;
    bool mIsOpen = false;
};

bool Run::runProcess() {
    const size_t before = mDone;
    ChildProcess child(mProgram, mDone, mFatal);
    while (const auto line = child.receive(mLimit)) take(*line);
    const std::string fault = child.awaitEnd();
    if (fault.empty() && !mIsOpen) return false;
    if (fault.empty() && mCheck.isEnd) {
        report(ok());
        return false;
    }
    return takeFault(fault, mDone > before);
}

void Run::take(const Json& line) {
    mIsOpen = line.contains("index");
    if (mIsOpen) {
        mCheck = {line.at("index"), line.at("name"), line.at("page"), line.at("isEnd")};
    } else if (mCheck.index >= mDone) {
        report({line.at("kind"), line.at("expected"), line.at("seen")});
    }
}

bool Run::takeFault(const std::string& fault, bool hasProgress) {
    if (!mIsOpen) mCheck.name = "after " + mCheck.name;
    report(failed("neither a crash nor more than " + std::to_string(mLimit.count()) + " ms",
                  fault.empty() ? "the process ended" : fault));
    if (!std::exchange(mIsOpen, false)) return hasProgress;
    mFatal.insert(mCheck.index);
    return !mCheck.isEnd;
}

void Run::report(const Verdict& verdict) {
    mReport.add(mCheck.name, mCheck.page, verdict);
    mDone = std::max(mDone, mCheck.index + 1);
}

}  // namespace

void runChecks(Report& report, std::chrono::milliseconds limit, const Program& program) {
    Run run(report, limit, program);
    while (run.runProcess()) {
    }
}

}  // namespace compliance
