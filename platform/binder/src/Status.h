#pragma once

#include <android/binder_status.h>

#include <string>

struct AStatus {
    binder_exception_t exception = EX_NONE;
    int32_t serviceSpecific = 0;
    binder_status_t transport = STATUS_OK;
    std::string message;
};

namespace binder {

// The status itself when it is one of the STATUS_ values, else STATUS_UNKNOWN_ERROR.
[[nodiscard]] binder_status_t knownStatus(binder_status_t status);

}  // namespace binder
