#pragma once

#include "compliance/Verdict.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <string>

namespace compliance {

// What the user sees: a line for each check, written out at once, and the totals. As JSON each is an object.
class Report {
public:
    Report(std::ostream& out, bool json) : mOut(out), mJson(json) {}

    // `page` is where the rule stands: a file, or a section of it ("docs/page.md#section").
    void add(const std::string& check, const std::string& page, const Verdict& verdict);
    // Writes the totals. True when no check failed and one held.
    [[nodiscard]] bool finish();

private:
    void printLine(const std::string& check, const std::string& page, const Verdict& verdict);
    void printJson(const std::string& check, const std::string& page, const Verdict& verdict);
    [[nodiscard]] size_t count(Verdict::Kind kind) const { return mCounts[kind]; }

    std::ostream& mOut;
    const bool mJson;
    std::array<size_t, 3> mCounts{};
};

}  // namespace compliance
