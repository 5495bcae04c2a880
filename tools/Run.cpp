#include "tools/Run.h"

#include "tools/Parser.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace subsysctl {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds BETWEEN_PROGRESS(100);

int registerFor(const std::vector<Step>& steps, Session& session) {
    for (const Step& step : steps) {
        session.begin(step.verb);
        int code = step.rf ? session.registerRf() : static_cast<int>(OK);
        if (code == OK && step.ims) code = session.registerIms();
        if (code != OK) return code;
    }
    return OK;
}

int runStep(const Step& step, Session& session) {
    session.begin(step.verb);
    if (step.look) return step.look(session.output());
    return step.request ? session.request(*step.request) : step.run(session);
}

int runSteps(const std::vector<Step>& steps, Session& session) {
    int result = registerFor(steps, session);
    if (result != OK) return result;
    for (const Step& step : steps) {
        const int code = runStep(step, session);
        if (result == OK) result = code;
        if (code == NO_SERVICE) break;
    }
    return result;
}

class Lines {
public:
    explicit Lines(Session& session) : mSession(session) { mParser.emplace(mLine, Parser::INPUT_LINE); }

    int run(const std::string& line) {
        mSession.output().setInputLine(++mCount);
        showProgress();
        if (line.find_first_not_of(" \t\r") == std::string::npos || line.starts_with('#')) return OK;
        mLine.steps.clear();
        if (const auto code = mParser->parseLine(line, mSession.output())) {
            mParser.emplace(mLine, Parser::INPUT_LINE);
            return *code;
        }
        return runSteps(mLine.steps, mSession);
    }

private:
    void showProgress() {
        const auto now = Clock::now();
        if (now - mShown < BETWEEN_PROGRESS) return;
        mShown = now;
        mSession.output().progress("batch: line " + std::to_string(mCount));
    }

    Session& mSession;
    CommandLine mLine;
    std::optional<Parser> mParser;
    size_t mCount = 0;
    Clock::time_point mShown = Clock::now();
};

}  // namespace

int run(const CommandLine& commandLine, Output& output) {
    Session session(output, commandLine.timeout, commandLine.serial, commandLine.takeOver);
    const auto& steps = commandLine.steps;
    const bool needsService = std::any_of(steps.begin(), steps.end(), [](const Step& step) { return !step.look; });
    session.begin(steps.empty() ? "" : steps.front().verb);
    const int connected = needsService ? session.connect() : static_cast<int>(OK);
    return connected == OK ? runSteps(steps, session) : connected;
}

int runLines(std::istream& input, Session& session) {
    Lines lines(session);
    int result = OK;
    for (std::string line; std::getline(input, line);) {
        const int code = lines.run(line);
        if (result == OK) result = code;
        if (code == NO_SERVICE) break;
    }
    session.output().setInputLine(0);
    return result;
}

}  // namespace subsysctl
