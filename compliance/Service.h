#pragma once

#include "compliance/Checks.h"

#include <chrono>
#include <string>

namespace compliance {

struct ServiceOptions {
    std::string name;
    // Whether checks may take the place of clients and send requests that change something.
    bool isIntrusive = false;
    // How long an answer is waited for.
    std::chrono::milliseconds limit{5000};
};

// The checks of any served ISubsys.
void checkService(Checks& checks, const ServiceOptions& options);

}  // namespace compliance
