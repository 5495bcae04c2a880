#pragma once

#include <sys/socket.h>

#include "Frame.h"
#include "UniqueFd.h"

namespace binder {

// A key that nobody guesses. Thread: any.
[[nodiscard]] Key randomKey();
// This process's own, the same as long as it lives. Thread: any.
[[nodiscard]] const Key& processKey();
// The process at the other end of a connection; pid -1 when there is none. Thread: any.
[[nodiscard]] ucred peerOf(const UniqueFd& connection);

}  // namespace binder
