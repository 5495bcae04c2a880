#pragma once

#include <android/binder_ibinder.h>

namespace binder {

// Dumps across processes: the arguments travel as strings, and what the object wrote comes back as text, cut at what a
// reply may hold. Thread: any.
[[nodiscard]] binder_status_t requestDump(AIBinder* remote, int fd, const char** args, uint32_t count);
[[nodiscard]] binder_status_t answerDump(AIBinder* local, const AParcel& in, AParcel& out);

}  // namespace binder
