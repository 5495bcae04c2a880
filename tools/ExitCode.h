#pragma once

namespace subsysctl {

// Of several verbs the first that fails decides.
enum ExitCode : int {
    OK = 0,
    ANSWERED_WITH_ERROR = 1,
    USAGE = 2,
    NO_SERVICE = 69,
    EXHAUSTED = 71,
    OTHER_CLIENT = 75,
    NO_ANSWER = 124,
};

}  // namespace subsysctl
