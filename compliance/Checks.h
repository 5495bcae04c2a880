#pragma once

#include "compliance/Report.h"
#include "compliance/Verdict.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <set>
#include <string>

namespace compliance {

// The checks of one run, made in a child process one after the other: what is tested may hang or crash. A check that
// ends the process, or takes too long, has failed; the run goes on behind it in a new process.
class Checks {
public:
    using Body = std::function<Verdict()>;

    // Makes the check, unless an earlier process of the run did.
    void check(const std::string& name, const char* page, const Body& body);
    // The same for a check that those behind it stand on: each process makes it. False when it did not hold.
    [[nodiscard]] bool prepare(const std::string& name, const char* page, const Body& body);
    // The last check, which is the orderly end of the process.
    void checkEnd(const std::string& name, const char* page);

private:
    friend class ChildProcess;
    Checks(int out, size_t done, std::set<size_t> fatal);

    void begin(size_t index, const std::string& name, const char* page, bool isEnd = false);
    void end(const Verdict& verdict);

    const int mOut;                 // to the parent
    const size_t mDone;             // so many were reported by earlier processes
    const std::set<size_t> mFatal;  // those that ended one
    size_t mNext = 0;
};

// A run of checks. It ends its process, by exit or by returning.
using Program = std::function<void(Checks&)>;

// Makes the checks of the program and reports them. The calling process has no other thread.
void runChecks(Report& report, std::chrono::milliseconds limit, const Program& program);

}  // namespace compliance
