#pragma once

#include <string>

namespace compliance {

// What a check found.
struct Verdict {
    enum Kind { OK, FAILED, NOT_CHECKED };

    Kind kind = OK;
    std::string expected;  // of a failed check
    std::string seen;      // what was seen, or why it could not be checked
};

[[nodiscard]] inline Verdict ok(std::string seen = {}) {
    return {Verdict::OK, {}, std::move(seen)};
}
[[nodiscard]] inline Verdict failed(std::string expected, std::string seen) {
    return {Verdict::FAILED, std::move(expected), std::move(seen)};
}
[[nodiscard]] inline Verdict notChecked(std::string reason) {
    return {Verdict::NOT_CHECKED, {}, std::move(reason)};
}

}  // namespace compliance
