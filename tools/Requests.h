#pragma once

#include "tools/Request.h"

#include <functional>
#include <string>
#include <vector>

namespace subsysctl {

// An option of a verb: a field or an argument of its method.
struct RequestOption {
    std::string name;  // `--freq-clk`
    const char* type;  // N, TEXT or HEX
    std::string help;  // with the value's range
    bool required;
    // Keeps the value for the next take(). What is wrong with the text, or nothing.
    std::function<std::string(const std::string& text)> store;
};

// Whether the command line has the option.
using IsGiven = std::function<bool(const char* option)>;

// A request of the interface as the command line knows it: its name and its options are the method's, in kebab case.
struct RequestVerb {
    std::string name;
    const char* group;
    std::string help;
    std::string example;
    std::vector<RequestOption> options;
    // The request with the stored values, which are then forgotten.
    std::function<Request(const IsGiven&)> take;
};

// A verb for each method of the interface but those that only register callbacks.
[[nodiscard]] std::vector<RequestVerb> requestVerbs();

}  // namespace subsysctl
